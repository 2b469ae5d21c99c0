#include "nls/language_stand_in.h"
#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <atomic>
#include <gtest/gtest.h>
#include <random>
#include <thread>
#include <unicode/ucnv.h>

namespace {

constexpr char Function[] = "DOV0_ConvertUnicodeToUTF8";

class UnitBuffer {
public:
    explicit UnitBuffer(const std::u16string &text) : bytes(text.size() * 2)
    {
        std::memcpy(bytes.bytes(), text.data(), text.size() * 2);
    }
    const char16_t *units()
    {
        return static_cast<const char16_t *>(static_cast<const void *>(bytes.bytes()));
    }

private:
    GuardedBuffer bytes;
};

// UTF-8 by the rules of the encoding, unpaired surrogates as U+FFFD.
std::string model(const std::u16string &text)
{
    std::string utf8;
    for (size_t i = 0; i < text.size(); ++i) {
        uint32_t c = text[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00U);
        } else if (c >= 0xD800 && c < 0xE000) {
            c = 0xFFFD;
        }
        if (c < 0x80) {
            utf8 += static_cast<char>(c);
        } else if (c < 0x800) {
            utf8 += static_cast<char>(0xC0 | c >> 6);
            utf8 += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            if (c < 0x10000) {
                utf8 += static_cast<char>(0xE0 | c >> 12);
            } else {
                utf8 += static_cast<char>(0xF0 | c >> 18);
                utf8 += static_cast<char>(0x80 | (c >> 12 & 0x3F));
            }
            utf8 += static_cast<char>(0x80 | (c >> 6 & 0x3F));
            utf8 += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return utf8;
}

std::string success(int needed, int supplied)
{
    return message(Function,
                   "Successfully converted Unicode to UTF8, length needed <%d> length supplied <%d>\n",
                   needed, supplied);
}

std::string truncation(int needed, int supplied)
{
    return message(
        Function,
        "Warning: Data truncated in Unicode to UTF8 conversion, length needed <%d> length supplied <%d>\n",
        needed, supplied);
}

void openConverter()
{
    EXPECT_EQ(DOV0_GetUTF8CharacterCount("x", 1, nullptr), 1);
}

} // namespace

TEST(ConvertUnicodeToUTF8, NeedsRoomForTheTerminator)
{
    openConverter();
    for (int32_t size = 1; size <= 8; ++size) {
        GuardedBuffer output(static_cast<size_t>(size));
        int32_t length = -1;
        const TraceLog log =
            traceAt(Trace::All, [&] { length = DOV0_ConvertUnicodeToUTF8(u"abcd", 4, output.text(), size); });
        const bool fits = size >= 5;
        EXPECT_EQ(length, fits ? 4 : 0);
        EXPECT_STREQ(output.text(), std::string("abcd").substr(0, static_cast<size_t>(size - 1)).c_str());
        EXPECT_EQ(log, (TraceLog{entry(Function), fits ? success(4, size - 1) : truncation(4, size - 1),
                                 leave(Function, intptr_t{length})}));
    }
}

TEST(ConvertUnicodeToUTF8, TracesUnderTheDetailAndTheErrorBit)
{
    openConverter();
    char output[8];
    EXPECT_EQ(bitsThatShow(success(3, 7), [&] { DOV0_ConvertUnicodeToUTF8(u"abc", 3, output, 8); }),
              Trace::Detail);
    EXPECT_EQ(bitsThatShow(truncation(4, 3), [&] { DOV0_ConvertUnicodeToUTF8(u"abcd", 4, output, 4); }),
              Trace::Error);
}

TEST(ConvertUnicodeToUTF8, LeavesTheBufferAloneWhenThereIsNothingToConvert)
{
    char output[] = "as it was";
    const auto expectNothing = [&](const char16_t *text, int32_t units, int32_t size) {
        int32_t length = -1;
        const TraceLog log = traceAt(Trace::All & ~Trace::Detail,
                                     [&] { length = DOV0_ConvertUnicodeToUTF8(text, units, output, size); });
        EXPECT_EQ(length, 0);
        EXPECT_EQ(from(Function, log), (TraceLog{entry(Function), leave(Function, intptr_t{0})}));
        EXPECT_STREQ(output, "as it was");
    };
    expectNothing(nullptr, 3, 10);
    expectNothing(u"abc", 0, 10);
    expectNothing(u"abc", -1, 10);
    expectNothing(u"abc", 3, 0);
    expectNothing(u"abc", 3, -7);
}

TEST(ConvertUnicodeToUTF8, ReportsOtherFailures)
{
    openConverter();
    const std::string complaint =
        message(Function, "*ERROR: Unicode to UTF8 conversion failed. Status %d <%s>\n", 1,
                "U_ILLEGAL_ARGUMENT_ERROR");
    int32_t length = -1;
    EXPECT_EQ(traceAt(Trace::All, [&] { length = DOV0_ConvertUnicodeToUTF8(u"abc", 3, nullptr, 10); }),
              (TraceLog{entry(Function), complaint, leave(Function, intptr_t{0})}));
    EXPECT_EQ(length, 0);
    EXPECT_EQ(bitsThatShow(complaint, [&] { DOV0_ConvertUnicodeToUTF8(u"abc", 3, nullptr, 10); }),
              Trace::Error);
    EXPECT_EQ(DOV0_ConvertUnicodeToUTF8(u"abc", 3, nullptr, 1), 0);

    languageStandIn().fromUChars = U_INVALID_STATE_ERROR;
    char output[10];
    EXPECT_EQ(traceAt(Trace::Error, [&] { length = DOV0_ConvertUnicodeToUTF8(u"abc", 3, output, 10); }),
              (TraceLog{message(Function, "*ERROR: Unicode to UTF8 conversion failed. Status %d <%s>\n", 27,
                                "U_INVALID_STATE_ERROR")}));
    EXPECT_EQ(length, 0);
}

TEST(ConvertUnicodeToUTF8, MeasuresTheResultByItsTerminator)
{
    char output[8];
    EXPECT_EQ(DOV0_ConvertUnicodeToUTF8(std::u16string(u"ab\0cd", 5).data(), 5, output, 8), 2);
    EXPECT_EQ(std::string(output, 6), std::string("ab\0cd\0", 6));
}

TEST(ConvertUnicodeToUTF8, AgreesWithTheRulesOnRandomText)
{
    std::mt19937 random(62);
    for (int round = 0; round < 3000; ++round) {
        std::u16string text(random() % 30 + 1, u'\0');
        for (char16_t &unit : text) {
            const auto kind = random() % 4;
            const auto value = kind == 0   ? random() % 0x7F + 1
                               : kind == 1 ? 0xD800 + random() % 0x800
                               : kind == 2 ? random() % 0x700 + 0x80
                                           : random() % 0xFFFF + 1;
            unit = static_cast<char16_t>(value);
        }
        UnitBuffer input(text);
        const std::string expected = model(text);
        const auto size = static_cast<int32_t>(expected.size() + 1 + random() % 3);
        GuardedBuffer output(static_cast<size_t>(size));
        ASSERT_EQ(
            DOV0_ConvertUnicodeToUTF8(input.units(), static_cast<int32_t>(text.size()), output.text(), size),
            static_cast<int32_t>(expected.size()));
        ASSERT_EQ(output.text(), expected);
        GuardedBuffer shorter(expected.size());
        EXPECT_EQ(DOV0_ConvertUnicodeToUTF8(input.units(), static_cast<int32_t>(text.size()), shorter.text(),
                                            static_cast<int32_t>(expected.size())),
                  0);
    }
}

TEST(ConvertUnicodeToUTF8, ServesThreadsAtOnce)
{
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&wrong, t] {
            const std::u16string text(static_cast<size_t>(t + 1), u'\u20AC');
            const std::string expected = model(text);
            for (int i = 0; i < 500; ++i) {
                char output[64];
                char16_t *units = nullptr;
                wrong += DOV0_ConvertUnicodeToUTF8(text.data(), t + 1, output, 64) != 3 * (t + 1) ||
                         output != expected;
                wrong += DOV0_GetUTF8CharacterCount(output, 3 * (t + 1), &units) != t + 1;
                wrong += std::u16string(units, static_cast<size_t>(t + 1)) != text;
                DOV0_FreeStorage(&units);
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(convertersOpen(), 1);
}
