#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <cctype>

namespace {

constexpr char Function[] = "DOV0_SubValidNameCharacter";

std::string valid(const std::string &name)
{
    GuardedBuffer buffer(name);
    DOV0_SubValidNameCharacter(buffer.text());
    return {buffer.text(), name.size()};
}

} // namespace

TEST(SubValidNameCharacter, ReplacesWhatNamesMayNotHave)
{
    EXPECT_EQ(valid("my host.name"), "my_host_name");
    EXPECT_EQ(valid("A-Z_*9"), "A-Z_*9");
    EXPECT_EQ(valid(""), "");
    EXPECT_EQ(valid("   "), "___");
}

TEST(SubValidNameCharacter, TreatsEachByteValueLikeIsalnum)
{
    for (int value = 1; value < 256; ++value) {
        const auto character = static_cast<char>(value);
        const bool kept = std::isalnum(value) != 0 || value == '_' || value == '*' || value == '-';
        EXPECT_EQ(valid(std::string("a") + character + "z"),
                  std::string("a") + (kept ? character : '_') + "z")
            << value;
    }
}

TEST(SubValidNameCharacter, KeepsTheLengthOfALongName)
{
    EXPECT_EQ(valid(std::string(100000, '%')), std::string(100000, '_'));
}

TEST(SubValidNameCharacter, TracesEachReplacement)
{
    GuardedBuffer buffer("a.b%\xE9_c");
    EXPECT_EQ(
        traceAt(Trace::All, [&] { DOV0_SubValidNameCharacter(buffer.text()); }),
        (TraceLog{entry(Function), message(Function, "Invalid name character %c replaced by _\n", '.'),
                  message(Function, "Invalid name character %c replaced by _\n", '%'),
                  message(Function, "Invalid name character %c replaced by _\n", '\xE9'), leave(Function)}));
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_SubValidNameCharacter(buffer.text()); }),
              (TraceLog{entry(Function), leave(Function)}));
}

TEST(SubValidNameCharacter, TracesReplacementsUnderTheDetailBitOnly)
{
    EXPECT_EQ(bitsThatShow(message(Function, "Invalid name character . replaced by _\n"),
                           [] {
                               GuardedBuffer buffer("a.b");
                               DOV0_SubValidNameCharacter(buffer.text());
                           }),
              Trace::Detail);
}

TEST(SubValidNameCharacter, RefusesNull)
{
    EXPECT_EQ(
        traceAt(Trace::All, [] { DOV0_SubValidNameCharacter(nullptr); }),
        (TraceLog{entry(Function), message(Function, "***** Input string is NULL\n"), leave(Function)}));
    EXPECT_EQ(bitsThatShow(message(Function, "***** Input string is NULL\n"),
                           [] { DOV0_SubValidNameCharacter(nullptr); }),
              Trace::Error);
}
