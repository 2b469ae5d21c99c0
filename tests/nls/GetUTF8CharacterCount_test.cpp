#include "nls/language_stand_in.h"
#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <gtest/gtest.h>
#include <random>
#include <unicode/ustring.h>

namespace {

constexpr char Function[] = "DOV0_GetUTF8CharacterCount";

int32_t counted(const std::string &text)
{
    GuardedBuffer input(text.size());
    std::memcpy(input.bytes(), text.data(), text.size());
    return DOV0_GetUTF8CharacterCount(input.text(), static_cast<int32_t>(text.size()), nullptr);
}

} // namespace

TEST(GetUTF8CharacterCount, CountsUnits)
{
    EXPECT_EQ(counted("abc"), 3);
    EXPECT_EQ(counted("\xE2\x82\xAC"), 1);
    EXPECT_EQ(counted("\xF0\x9F\x98\x80"), 2);
    EXPECT_EQ(counted("a\xC3\xA9 b"), 4);
    EXPECT_EQ(counted(std::string("a\0b", 3)), 3);
    EXPECT_EQ(counted("a\xFF"
                      "b"),
              3);
    EXPECT_EQ(counted("a\xE2\x82"), 2); // cut short
}

TEST(GetUTF8CharacterCount, UsesStorageForLongTextsAndForTheCaller)
{
    EXPECT_EQ(counted("x"), 1); // opens the converter
    const std::string longest(1024, 'x');
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(counted(longest), 1024); }),
              (TraceLog{entry(Function), leave(Function, intptr_t{1024})}));
    const std::string longer(1025, 'x');
    const TraceLog log = traceAt(Trace::Flow, [&] { EXPECT_EQ(counted(longer), 1025); });
    ASSERT_EQ(log.size(), 6U);
    EXPECT_EQ(log[1], entry("DOV0_GetStorage"));
    EXPECT_EQ(log[3], entry("DOV0_FreeStorage"));
    EXPECT_EQ(log[5], leave(Function, intptr_t{1025}));

    char16_t *units = nullptr;
    int32_t count = 0;
    const TraceLog given =
        traceAt(Trace::Flow, [&] { count = DOV0_GetUTF8CharacterCount("a\xC3\xA9", 3, &units); });
    EXPECT_EQ(given, (TraceLog{entry(Function), entry("DOV0_GetStorage"), leave("DOV0_GetStorage", units),
                               leave(Function, intptr_t{2})}));
    EXPECT_EQ(count, 2);
    EXPECT_EQ(std::u16string(units, 2), u"a\u00E9");
    DOV0_FreeStorage(&units);
}

TEST(GetUTF8CharacterCount, GivesNothingForNoText)
{
    EXPECT_EQ(counted("x"), 1);
    char16_t other = u'x';
    char16_t *units = &other;
    const auto expectNothing = [&](const char *text, int32_t length) {
        EXPECT_EQ(
            traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_GetUTF8CharacterCount(text, length, &units), 0); }),
            (TraceLog{entry(Function), leave(Function, intptr_t{0})}));
        EXPECT_EQ(units, &other);
    };
    expectNothing(nullptr, 3);
    expectNothing("abc", 0);
    expectNothing("abc", -3);
}

TEST(GetUTF8CharacterCount, ReportsAFailedConversionAndStillGivesTheBuffer)
{
    EXPECT_EQ(counted("x"), 1);
    languageStandIn().toUnicode = U_INVALID_STATE_ERROR;
    const std::string complaint = message(
        Function, "*ERROR: ucnv_toUnicode conversion failed. Status %d <%s>\n", 27, "U_INVALID_STATE_ERROR");
    char16_t *units = nullptr;
    EXPECT_EQ(
        traceOf(Function, Trace::All, [&] { EXPECT_EQ(DOV0_GetUTF8CharacterCount("abc", 3, &units), 0); }),
        (TraceLog{entry(Function), complaint, leave(Function, intptr_t{0})}));
    EXPECT_NE(units, nullptr);
    DOV0_FreeStorage(&units);
    EXPECT_EQ(bitsThatShow(complaint, [&] { DOV0_GetUTF8CharacterCount("abc", 3, nullptr); }), Trace::Error);
}

TEST(GetUTF8CharacterCount, ReportsExhaustedStorage)
{
    EXPECT_EQ(counted("x"), 1);
    char16_t other = u'x';
    char16_t *units = &other;
    const TraceLog expected = {message(Function, "*ERROR: ucnv_toUnicode conversion failed. Status %d <%s>\n",
                                       7, "U_MEMORY_ALLOCATION_ERROR")};
    EXPECT_EQ(
        traceOf(Function, Trace::Error,
                [&] { withoutHeap([&] { EXPECT_EQ(DOV0_GetUTF8CharacterCount("abc", 3, &units), 0); }); }),
        expected);
    EXPECT_EQ(units, nullptr);
    EXPECT_EQ(traceOf(Function, Trace::Error,
                      [&] { EXPECT_EQ(DOV0_GetUTF8CharacterCount("abc", INT32_MAX, nullptr), 0); }),
              expected);
}

// ICU's own string function is the judge.
TEST(GetUTF8CharacterCount, AgreesWithIcuOnRandomBytes)
{
    std::mt19937 random(63);
    for (int round = 0; round < 3000; ++round) {
        std::string text(random() % (round % 50 == 0 ? 3000 : 40) + 1, '\0');
        for (char &byte : text) {
            byte = static_cast<char>(random() % 3 == 0 ? 0x80 + random() % 0x80 : random() % 0x80);
        }
        std::u16string expected(text.size(), u'\0');
        int32_t length = 0;
        UErrorCode error = U_ZERO_ERROR;
        u_strFromUTF8WithSub(expected.data(), static_cast<int32_t>(expected.size()), &length, text.data(),
                             static_cast<int32_t>(text.size()), 0xFFFD, nullptr, &error);
        ASSERT_LE(error, U_ZERO_ERROR);
        expected.resize(static_cast<size_t>(length));
        ASSERT_EQ(counted(text), length);
        char16_t *units = nullptr;
        ASSERT_EQ(DOV0_GetUTF8CharacterCount(text.data(), static_cast<int32_t>(text.size()), &units), length);
        EXPECT_EQ(std::u16string(units, static_cast<size_t>(length)), expected);
        DOV0_FreeStorage(&units);
    }
}

TEST(GetUTF8CharacterCount, ForgetsWhatAnEarlierTextLeftUnfinished)
{
    languageStandIn().toUnicode = U_INVALID_STATE_ERROR;
    EXPECT_EQ(counted("a\xE2\x82"), 0);
    languageStandIn().toUnicode = U_ZERO_ERROR;
    EXPECT_EQ(counted("\xAC"), 1);
}
