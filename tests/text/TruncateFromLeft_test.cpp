#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

namespace {

constexpr char Function[] = "DOV0_TruncateFromLeft";

std::string truncated(const std::string &text, int32_t currentLength, int32_t maxLength)
{
    GuardedBuffer buffer(text);
    DOV0_TruncateFromLeft(buffer.text(), currentLength, maxLength);
    return buffer.text();
}

std::string noTruncation(int32_t currentLength, int32_t maxLength)
{
    return message(Function,
                   "Input string length <%d> less than or equal to maxlen <%d>. No truncation required.\n",
                   currentLength, maxLength);
}

std::string invalid(int32_t maxLength, const std::string &text)
{
    return message(Function,
                   "***Invalid maximum length <%d> specified, no truncation performed on input string <%s>\n",
                   maxLength, text.c_str());
}

std::string invalid(int32_t maxLength)
{
    return message(Function, "***Invalid maximum length <%d> specified, no truncation performed\n",
                   maxLength);
}

} // namespace

TEST(TruncateFromLeft, KeepsTheRightEnd)
{
    EXPECT_EQ(truncated("abcdef", 6, 4), "cdef");
    EXPECT_EQ(truncated("abcdef", 6, 1), "f");
    EXPECT_EQ(truncated("abcdef", 6, 5), "bcdef");
}

TEST(TruncateFromLeft, MovesBetweenOverlappingPlacesOfEachSize)
{
    for (size_t length = 1; length <= 70; ++length) {
        std::string text;
        for (size_t i = 0; i < length; ++i) {
            text.push_back(static_cast<char>('0' + i));
        }
        for (size_t kept = 1; kept <= length + 2; ++kept) {
            EXPECT_EQ(truncated(text, static_cast<int32_t>(length), static_cast<int32_t>(kept)),
                      kept < length ? text.substr(length - kept) : text);
        }
    }
    const std::string longText = std::string(60000, 'a') + std::string(40000, 'b');
    EXPECT_EQ(truncated(longText, 100000, 99999), longText.substr(1));
}

TEST(TruncateFromLeft, TakesTheLengthFromTheCaller)
{
    EXPECT_EQ(truncated("abcdef", 4, 3), "bcd");
    EXPECT_EQ(truncated("abcdef", 2, 3), "abcdef");
}

TEST(TruncateFromLeft, KeepsBytesThatAreNoCharacters)
{
    GuardedBuffer buffer(6);
    std::memcpy(buffer.bytes(), "a\0b\xFF\x01z", 6);
    DOV0_TruncateFromLeft(buffer.text(), 6, 5);
    EXPECT_EQ(std::memcmp(buffer.bytes(), "\0b\xFF\x01z\0", 6), 0);
}

TEST(TruncateFromLeft, TracesInputAndOutput)
{
    GuardedBuffer buffer("abcdef");
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_TruncateFromLeft(buffer.text(), 6, 4); }),
              (TraceLog{entry(Function),
                        message(Function, "Input string <%s> curLen: %d maxLen: %d deltaLen: %d\n", "abcdef",
                                6, 4, 2),
                        message(Function, "Output string <%s>\n", "cdef"), leave(Function)}));
}

TEST(TruncateFromLeft, TracesInputAndOutputUnderTheDetailBitOnly)
{
    const auto call = [] {
        GuardedBuffer buffer("abcdef");
        DOV0_TruncateFromLeft(buffer.text(), 6, 4);
    };
    EXPECT_EQ(
        bitsThatShow(message(Function, "Input string <abcdef> curLen: 6 maxLen: 4 deltaLen: 2\n"), call),
        Trace::Detail);
    EXPECT_EQ(bitsThatShow(message(Function, "Output string <cdef>\n"), call), Trace::Detail);
}

TEST(TruncateFromLeft, LeavesATextThatIsShortEnough)
{
    const std::vector<std::pair<int32_t, int32_t>> lengths = {{4, 6},         {6, 6},
                                                              {0, 1},         {INT32_MIN, 1},
                                                              {-1, 1},        {INT32_MIN, INT32_MAX},
                                                              {6, INT32_MAX}, {INT32_MAX, INT32_MAX}};
    for (const auto &[currentLength, maxLength] : lengths) {
        GuardedBuffer buffer("abcdef");
        EXPECT_EQ(traceAt(Trace::All,
                          [&, currentLength = currentLength, maxLength = maxLength] {
                              DOV0_TruncateFromLeft(buffer.text(), currentLength, maxLength);
                          }),
                  (TraceLog{entry(Function), noTruncation(currentLength, maxLength), leave(Function)}));
        EXPECT_STREQ(buffer.text(), "abcdef");
    }
    EXPECT_EQ(bitsThatShow(noTruncation(4, 6),
                           [] {
                               GuardedBuffer buffer("abcd");
                               DOV0_TruncateFromLeft(buffer.text(), 4, 6);
                           }),
              Trace::Detail);
}

TEST(TruncateFromLeft, RefusesMaximumLengthsBelowOne)
{
    for (const int32_t maxLength : {0, -1, INT32_MIN}) {
        for (const int32_t currentLength : {6, 0, INT32_MIN, INT32_MAX}) {
            GuardedBuffer buffer("abcdef");
            EXPECT_EQ(
                traceAt(Trace::All, [&] { DOV0_TruncateFromLeft(buffer.text(), currentLength, maxLength); }),
                (TraceLog{entry(Function), invalid(maxLength, "abcdef"), leave(Function)}));
            EXPECT_STREQ(buffer.text(), "abcdef");

            GuardedBuffer empty("");
            for (char *text : {static_cast<char *>(nullptr), empty.text()}) {
                EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_TruncateFromLeft(text, currentLength, maxLength); }),
                          (TraceLog{entry(Function), invalid(maxLength), leave(Function)}));
            }
        }
    }
    EXPECT_EQ(bitsThatShow(invalid(0, "a"),
                           [] {
                               GuardedBuffer buffer("a");
                               DOV0_TruncateFromLeft(buffer.text(), 1, 0);
                           }),
              Trace::Error);
    EXPECT_EQ(bitsThatShow(invalid(0), [] { DOV0_TruncateFromLeft(nullptr, 1, 0); }), Trace::Error);
}

TEST(TruncateFromLeft, RefusesNull)
{
    EXPECT_EQ(
        traceAt(Trace::All, [] { DOV0_TruncateFromLeft(nullptr, INT32_MAX, 1); }),
        (TraceLog{entry(Function), message(Function, "***** Input string is NULL\n"), leave(Function)}));
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_TruncateFromLeft(nullptr, 3, 4); }),
              (TraceLog{entry(Function), noTruncation(3, 4), leave(Function)}));
    EXPECT_EQ(bitsThatShow(message(Function, "***** Input string is NULL\n"),
                           [] { DOV0_TruncateFromLeft(nullptr, 2, 1); }),
              Trace::Error);
}
