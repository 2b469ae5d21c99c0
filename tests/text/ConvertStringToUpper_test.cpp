#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <cctype>

namespace {

constexpr char Function[] = "DOV0_ConvertStringToUpper";

// Every byte value but the terminator.
std::string allCharacters()
{
    std::string text;
    for (int value = 1; value < 256; ++value) {
        text.push_back(static_cast<char>(value));
    }
    return text;
}

std::string upper(std::string text)
{
    for (char &character : text) {
        character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    }
    return text;
}

} // namespace

TEST(ConvertStringToUpper, ChangesTheTextItself)
{
    GuardedBuffer buffer("Agent_7 älter");
    EXPECT_EQ(DOV0_ConvertStringToUpper(buffer.text(), 0), buffer.text());
    EXPECT_STREQ(buffer.text(), "AGENT_7 äLTER");
}

TEST(ConvertStringToUpper, LeavesTheTextAloneAndGivesACopy)
{
    for (const int32_t copy : {1, 2, -1, INT32_MIN, INT32_MAX}) {
        GuardedBuffer buffer("Agent_7");
        char *upperCase = DOV0_ConvertStringToUpper(buffer.text(), copy);
        ASSERT_NE(upperCase, buffer.text());
        EXPECT_STREQ(upperCase, "AGENT_7");
        EXPECT_STREQ(buffer.text(), "Agent_7");
        DOV0_FreeStorage(&upperCase);
    }
}

TEST(ConvertStringToUpper, TreatsEachByteValueLikeToupper)
{
    const std::string text = allCharacters();
    GuardedBuffer buffer(text);
    char *copy = DOV0_ConvertStringToUpper(buffer.text(), 1);
    EXPECT_EQ(copy, upper(text));
    DOV0_FreeStorage(&copy);
    EXPECT_EQ(DOV0_ConvertStringToUpper(buffer.text(), 0), upper(text));
}

TEST(ConvertStringToUpper, TakesTextsOfAnyLength)
{
    for (const size_t length : {1U, 2U, 15U, 16U, 4095U, 4096U, 100000U}) {
        GuardedBuffer buffer(std::string(length, 'q'));
        char *copy = DOV0_ConvertStringToUpper(buffer.text(), 1);
        EXPECT_EQ(copy, std::string(length, 'Q'));
        DOV0_FreeStorage(&copy);
        EXPECT_EQ(DOV0_ConvertStringToUpper(buffer.text(), 0), std::string(length, 'Q'));
    }
}

TEST(ConvertStringToUpper, TracesInputAndOutputInPlace)
{
    GuardedBuffer buffer("a%s-b");
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_ConvertStringToUpper(buffer.text(), 0); }),
              (TraceLog{entry(Function), message(Function, "InString <%s>\n", "a%s-b"),
                        message(Function, "OutString <%s>\n", "A%S-B"),
                        leave(Function, static_cast<const void *>(buffer.text()))}));
}

TEST(ConvertStringToUpper, TakesStorageForACopyBeforeItTracesTheInput)
{
    GuardedBuffer buffer("abc");
    char *copy = nullptr;
    const TraceLog log =
        traceAt(Trace::Flow | Trace::Detail, [&] { copy = DOV0_ConvertStringToUpper(buffer.text(), 1); });
    const void *address = copy;
    EXPECT_EQ(log,
              (TraceLog{entry(Function), entry("DOV0_GetStorage"),
                        message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n", address, 4),
                        leave("DOV0_GetStorage", address), message(Function, "InString <%s>\n", "abc"),
                        message(Function, "OutString <%s>\n", "ABC"), leave(Function, address)}));
    DOV0_FreeStorage(&copy);
}

TEST(ConvertStringToUpper, TracesTextsUnderTheDetailBitOnly)
{
    GuardedBuffer buffer("ABC");
    const auto call = [&] { DOV0_ConvertStringToUpper(buffer.text(), 0); };
    EXPECT_EQ(bitsThatShow(message(Function, "InString <ABC>\n"), call), Trace::Detail);
    EXPECT_EQ(bitsThatShow(message(Function, "OutString <ABC>\n"), call), Trace::Detail);
}

TEST(ConvertStringToUpper, RefusesNullAndEmptyTextsAlikeAndTakesNoStorage)
{
    GuardedBuffer empty("");
    for (char *text : {static_cast<char *>(nullptr), empty.text()}) {
        for (const int32_t copy : {0, 1}) {
            char *result = empty.text();
            EXPECT_EQ(traceAt(Trace::All, [&] { result = DOV0_ConvertStringToUpper(text, copy); }),
                      (TraceLog{entry(Function), message(Function, "***** Input string is NULL\n"),
                                leave(Function, nullptr)}));
            EXPECT_EQ(result, nullptr);
            EXPECT_EQ(heapRequestsOf([&] { DOV0_ConvertStringToUpper(text, copy); }), 0);
        }
    }
    EXPECT_EQ(bitsThatShow(message(Function, "***** Input string is NULL\n"),
                           [] { DOV0_ConvertStringToUpper(nullptr, 0); }),
              Trace::Error);
}

TEST(ConvertStringToUpper, GivesNullWhenThereIsNoStorageForTheCopy)
{
    GuardedBuffer buffer("abc");
    char *result = buffer.text();
    const TraceLog log = traceAt(Trace::Flow | Trace::Detail | Trace::Error, [&] {
        withoutHeap([&] { result = DOV0_ConvertStringToUpper(buffer.text(), 1); });
    });
    EXPECT_EQ(result, nullptr);
    EXPECT_STREQ(buffer.text(), "abc");
    EXPECT_EQ(log, (TraceLog{entry(Function), entry("DOV0_GetStorage"),
                             message("DOV0_GetStorage", "*****Unable to obtain storage, size %d\n", 4),
                             leave("DOV0_GetStorage", nullptr), leave(Function, nullptr)}));
}

TEST(ConvertStringToUpper, NeedsNoStorageInPlace)
{
    GuardedBuffer buffer("abc");
    withoutHeap([&] { DOV0_ConvertStringToUpper(buffer.text(), 0); });
    EXPECT_STREQ(buffer.text(), "ABC");
}
