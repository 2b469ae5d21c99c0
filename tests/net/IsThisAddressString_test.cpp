#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_IsThisAddressString";

bool beginsWithDigit(const std::string &text)
{
    return text.find_first_of("0123456789") == 0;
}

// An independent reading of the shape: the text split at its first three dots, each part beginning with a digit.
int32_t shapeOf(std::string text)
{
    int32_t dots = 0;
    while (beginsWithDigit(text)) {
        const size_t dot = text.find('.');
        if (dots == 3 || dot == std::string::npos) {
            return dots;
        }
        text.erase(0, dot + 1);
        ++dots;
    }
    return 0;
}

} // namespace

TEST(IsThisAddressString, CountsTheDotsBeforeDigits)
{
    const struct {
        const char *text;
        int32_t dots;
    } cases[] = {{"10.1.2.3", 3},   {"10.1.2", 2},   {"1.2.3", 2},      {"10.1", 1},      {"10", 0},
                 {"10.", 0},        {"host", 0},     {"1.2.3.4.5", 3},  {"256.1.1.1", 3}, {"010.0.0.1", 3},
                 {"", 0},           {".1.2.3", 0},   {"1..2.3", 0},     {"1.2..3", 0},    {"1.2.3.", 0},
                 {"1.2.3.x", 0},    {"1.2.3.4x", 3}, {"1.2.3.4 ", 3},   {" 1.2.3.4", 0},  {"1a.2b.3c.4d", 3},
                 {"1host", 0},      {"1host.x", 0},  {"1host.2x", 1},   {"-1.2.3.4", 0},  {"1.-2.3.4", 0},
                 {"1.2.3.4...", 3}, {"1.2.3", 2},    {"1.2.3.4.x", 3},  {"::1", 0},       {"0.0.0.0", 3},
                 {"1.2.\xB2", 0},   {"\xB2.1", 0},   {"9.9.9.9/24", 3}, {"1:2.3.4.5", 3}};
    for (const auto &one : cases) {
        GuardedBuffer text(std::string(one.text));
        EXPECT_EQ(DOV0_IsThisAddressString(text.text()), one.dots) << one.text;
    }
}

TEST(IsThisAddressString, AgreesWithTheModelOnRandomTexts)
{
    std::mt19937 random(20260101);
    constexpr char Characters[] = "0123.....9a/:";
    for (int round = 0; round < 2000; ++round) {
        std::string text(random() % 14, ' ');
        for (char &c : text) {
            c = Characters[random() % (sizeof Characters - 1)];
        }
        ASSERT_EQ(DOV0_IsThisAddressString(text.c_str()), shapeOf(text)) << text;
    }
}

TEST(IsThisAddressString, TakesTextsOfAnyLength)
{
    std::string text(10000, '1');
    EXPECT_EQ(DOV0_IsThisAddressString(text.c_str()), 0);
    text.append(".2");
    EXPECT_EQ(DOV0_IsThisAddressString(text.c_str()), 1);
}

TEST(IsThisAddressString, TracesTheTextUnderTheDetailBit)
{
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_IsThisAddressString("10.1"); }),
              (TraceLog{entry(Function), message(Function, "Examining input address <10.1>\n"),
                        leave(Function, 1)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Detail, [] { DOV0_IsThisAddressString("10.1.2.3"); }),
              (TraceLog{entry(Function), leave(Function, 3)}));
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_IsThisAddressString(""); }),
              (TraceLog{entry(Function), message(Function, "Examining input address <>\n"),
                        leave(Function, intptr_t{0})}));
}

TEST(IsThisAddressString, AnswersZeroForNull)
{
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_IsThisAddressString(nullptr); }),
              (TraceLog{entry(Function), message(Function, "Examining input address <(null)>\n"),
                        leave(Function, intptr_t{0})}));
}
