#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_terminateString";

} // namespace

TEST(terminateString, CutsAtTheTerminator)
{
    EXPECT_STREQ(DOV0_terminateString("host;port", ';', 9), "host");
    EXPECT_STREQ(DOV0_terminateString("a;b;c", ';', 5), "a");
    EXPECT_STREQ(DOV0_terminateString(";b", ';', 2), "");
    EXPECT_STREQ(DOV0_terminateString("ab;", ';', 3), "ab");
}

TEST(terminateString, TakesTheWholeFieldWithoutATerminator)
{
    EXPECT_STREQ(DOV0_terminateString("hostport;", ';', 8), "hostport");
    EXPECT_STREQ(DOV0_terminateString("abc", ';', 1), "a");
}

TEST(terminateString, GivesAnEmptyTextForAnEmptyField)
{
    for (const int32_t length : {0, -1, INT32_MIN}) {
        DOV0_terminateString("left over", ';', 9);
        EXPECT_STREQ(DOV0_terminateString("abc", ';', length), "");
    }
    DOV0_terminateString("left over", ';', 9);
    EXPECT_STREQ(DOV0_terminateString(nullptr, ';', 10), "");
}

TEST(terminateString, ReturnsTheSameAreaEachTime)
{
    char *first = DOV0_terminateString("first text", ';', 10);
    char *second = DOV0_terminateString("2", ';', 1);
    EXPECT_EQ(first, second);
    EXPECT_STREQ(first, "2");
}

TEST(terminateString, TakesAnEarlierResult)
{
    char *area = DOV0_terminateString("one two,three", ',', 13);
    EXPECT_STREQ(DOV0_terminateString(area + 4, ' ', 3), "two");
    EXPECT_STREQ(DOV0_terminateString(area, 'o', 3), "tw");
}

TEST(terminateString, AgreesWithTheModelOnRandomFields)
{
    std::mt19937 random(4711);
    for (int round = 0; round < 3000; ++round) {
        const size_t length = random() % 1024;
        GuardedBuffer field(length); // no terminator behind it
        for (size_t i = 0; i < length; ++i) {
            field.bytes()[i] = static_cast<unsigned char>(random());
        }
        const auto terminator = static_cast<char>(random());
        const std::string bytes(field.text(), length);
        const std::string kept = bytes.substr(0, bytes.find(terminator));
        const char *result = DOV0_terminateString(field.text(), terminator, static_cast<int32_t>(length));
        ASSERT_EQ(std::string(result, kept.size() + 1), kept + '\0');
        ASSERT_EQ(std::string(field.text(), length), bytes);
    }
}

TEST(terminateString, ReadsNothingBehindTheTerminator)
{
    GuardedBuffer field(5, 'x');
    field.bytes()[4] = ';';
    for (const int32_t length : {5, 6, 1000, 1023, 5000, INT32_MAX}) {
        EXPECT_STREQ(DOV0_terminateString(field.text(), ';', length), "xxxx");
    }
}

TEST(terminateString, TakesNoMoreThanItsAreaHolds)
{
    const std::string longest(DOV0_TERMINATED_STRING_SIZE - 1, 'x');
    for (const size_t length : {1022U, 1023U, 1024U, 1025U, 100000U}) {
        GuardedBuffer field(length, 'x');
        EXPECT_EQ(DOV0_terminateString(field.text(), ';', static_cast<int32_t>(length)),
                  longest.substr(0, std::min<size_t>(length, longest.size())));
        field.bytes()[length - 1] = ';';
        EXPECT_EQ(DOV0_terminateString(field.text(), ';', static_cast<int32_t>(length)),
                  longest.substr(0, std::min<size_t>(length - 1, longest.size())));
    }
}

TEST(terminateString, TracesEventsOnly)
{
    const char *area = DOV0_terminateString("", ';', 0);
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_terminateString("a;b", ';', 3); }),
              (TraceLog{entry(Function), leave(Function, static_cast<const void *>(area))}));
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_terminateString(nullptr, ';', 3); }),
              (TraceLog{entry(Function), leave(Function, static_cast<const void *>(area))}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [] { DOV0_terminateString("a;b", ';', 3); }), TraceLog{});
}
