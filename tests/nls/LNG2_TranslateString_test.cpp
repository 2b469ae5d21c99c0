#include "nls/language_stand_in.h"
#include "support/guarded_buffer.h"
#include "support/heap_faults.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <iconv.h>
#include <random>
#include <string>
#include <thread>
#include <unicode/ucnv.h>
#include <utility>
#include <vector>

namespace {

struct Translation {
    std::string text;
    int32_t consumed = -1;
    int32_t status = -1;
};

// Translates between guard pages, so that a byte read or written too far ends the test.
Translation translated(int32_t target, int32_t source, const std::string &input, int32_t capacity = 4096)
{
    GuardedBuffer from(input.size());
    std::memcpy(from.bytes(), input.data(), input.size());
    GuardedBuffer to(static_cast<size_t>(capacity));
    Translation result;
    const int32_t length =
        LNG2_TranslateString(target, to.text(), capacity, source, from.text(),
                             static_cast<int32_t>(input.size()), &result.consumed, 0, &result.status);
    result.text.assign(to.text(), static_cast<size_t>(length));
    if (result.status == 0 && length < capacity) {
        EXPECT_EQ(to.bytes()[length], 0) << "the result is terminated where there is room";
    }
    return result;
}

std::string byIconv(const char *target, const char *source, std::string input)
{
    const iconv_t handle = iconv_open(target, source);
    if (handle == reinterpret_cast<iconv_t>(-1)) { // NOLINT: what iconv_open gives
        return "iconv does not know it";
    }
    std::string output(input.size() * 4 + 16, '\0');
    char *from = input.data();
    char *to = output.data();
    size_t left = input.size();
    size_t room = output.size();
    const size_t failed = iconv(handle, &from, &left, &to, &room);
    iconv_close(handle);
    output.resize(output.size() - room);
    return failed == static_cast<size_t>(-1) ? "iconv refuses it" : output;
}

const std::string Sample = "Gr\xC3\xBC\xC3\x9F"
                           "e \xE2\x82\xAC 12";

} // namespace

TEST(LNG2_TranslateString, TranslatesBetweenUnicodeForms)
{
    const struct {
        int32_t codepage;
        const char *iconvName;
    } forms[] = {
        {1208, "UTF-8"}, {1200, "UTF-16BE"}, {1202, "UTF-16LE"}, {1232, "UTF-32BE"}, {1234, "UTF-32LE"}};
    const std::string text = Sample + " \xF0\x9F\x98\x80 \xE6\x97\xA5\xE6\x9C\xAC";
    for (const auto &from : forms) {
        for (const auto &to : forms) {
            const std::string input = byIconv(from.iconvName, "UTF-8", text);
            const Translation result = translated(to.codepage, from.codepage, input);
            EXPECT_EQ(result.text, byIconv(to.iconvName, "UTF-8", text));
            EXPECT_EQ(result.status, 0);
            EXPECT_EQ(result.consumed, static_cast<int32_t>(input.size()));
        }
    }
}

// Every byte of single-byte code pages, as the system's iconv sees it. Bytes that one of the two leaves undefined are
// not compared.
TEST(LNG2_TranslateString, AgreesWithIconvOnSingleBytes)
{
    const struct {
        int32_t codepage;
        const char *iconvName;
    } tables[] = {{819, "ISO-8859-1"}, {912, "ISO-8859-2"}, {920, "ISO-8859-9"}, {923, "ISO-8859-15"},
                  {1250, "CP1250"},    {1251, "CP1251"},    {1252, "CP1252"},    {1253, "CP1253"},
                  {1254, "CP1254"},    {850, "IBM850"},     {852, "IBM852"},     {866, "IBM866"},
                  {878, "KOI8-R"}};
    for (const auto &table : tables) {
        int compared = 0;
        for (int byte = 0; byte < 256; ++byte) {
            const std::string input(1, static_cast<char>(byte));
            const std::string expected = byIconv("UTF-8", table.iconvName, input);
            const Translation result = translated(1208, table.codepage, input);
            ASSERT_EQ(result.status, 0);
            if (expected == "iconv refuses it" || result.text == "\xEF\xBF\xBD" ||
                (byte >= 0x80 && byte < 0xA0 && result.text == byIconv("UTF-8", "ISO-8859-1", input))) {
                continue; // undefined, or a control character in its place
            }
            // The IBM tables exchange three control characters.
            if (table.codepage >= 850 && table.codepage <= 866 &&
                (byte == 0x1A || byte == 0x1C || byte == 0x7F)) {
                continue;
            }
            ++compared;
            EXPECT_EQ(result.text, expected) << table.iconvName << " " << byte;
            EXPECT_EQ(translated(table.codepage, 1208, expected).text, input)
                << table.iconvName << " " << byte;
        }
        EXPECT_GT(compared, 210) << table.iconvName;
    }
}

TEST(LNG2_TranslateString, AgreesWithIconvOnSeveralBytes)
{
    const std::string japanese = "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E abc \xE3\x82\xA2";
    EXPECT_EQ(translated(943, 1208, japanese).text, byIconv("SHIFT_JIS", "UTF-8", japanese));
    EXPECT_EQ(translated(1392, 1208, japanese).text, byIconv("GB18030", "UTF-8", japanese));
    const std::string korean = "\xED\x95\x9C\xEA\xB5\xAD\xEC\x96\xB4";
    EXPECT_EQ(translated(949, 1208, korean).text, byIconv("CP949", "UTF-8", korean));
    EXPECT_EQ(translated(1208, 943, byIconv("SHIFT_JIS", "UTF-8", japanese)).text, japanese);
}

TEST(LNG2_TranslateString, TreatsAnExactFitAsSuccess)
{
    for (int32_t capacity = 1; capacity <= 20; ++capacity) {
        const Translation result = translated(1208, 1208, Sample, capacity);
        const auto size = static_cast<int32_t>(Sample.size());
        EXPECT_EQ(result.status, capacity >= size ? 0 : LNG2_STATUS_BUFFER_OVERFLOW) << capacity;
        EXPECT_EQ(result.text, Sample.substr(0, static_cast<size_t>(capacity))) << capacity;
    }
}

TEST(LNG2_TranslateString, ReplacesWhatIsMalformedOrCannotBeExpressed)
{
    EXPECT_EQ(translated(1208, 1208, "a\xFFz").text, "a\xEF\xBF\xBDz");
    EXPECT_EQ(translated(1208, 1200, std::string("\xD8\x00\x00\x41", 4)).text, "\xEF\xBF\xBD"
                                                                               "A"); // half a pair
    EXPECT_EQ(translated(1208, 1202, std::string("A\0B", 3)).text, "A\xEF\xBF\xBD"); // half a unit
    const Translation unexpressible = translated(819, 1208, "\xE2\x82\xAC");
    EXPECT_EQ(unexpressible.text, "\x1A");
    EXPECT_EQ(unexpressible.status, 0);
}

TEST(LNG2_TranslateString, TranslatesNothingToNothing)
{
    char output[4] = {'x', 'x', 'x', 'x'};
    int32_t consumed = -1;
    int32_t status = -1;
    EXPECT_EQ(LNG2_TranslateString(819, output, 4, 1208, nullptr, 0, &consumed, 0, &status), 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(consumed, 0);
    EXPECT_STREQ(output, "");
}

TEST(LNG2_TranslateString, RefusesWhatItCannotDo)
{
    char output[8] = "abc";
    int32_t status = -1;
    EXPECT_EQ(LNG2_TranslateString(853, output, 8, 1208, "x", 1, nullptr, 0, &status), 0);
    EXPECT_EQ(status, U_FILE_ACCESS_ERROR);
    EXPECT_EQ(LNG2_TranslateString(1208, output, 8, 0, "x", 1, nullptr, 0, &status), 0);
    EXPECT_EQ(status, U_FILE_ACCESS_ERROR);
    EXPECT_EQ(LNG2_TranslateString(1208, nullptr, 8, 1208, "x", 1, nullptr, 0, &status), 0);
    EXPECT_EQ(status, U_ILLEGAL_ARGUMENT_ERROR);
    EXPECT_EQ(LNG2_TranslateString(1208, output, 0, 1208, "x", 1, nullptr, 0, &status), 0);
    EXPECT_EQ(status, U_ILLEGAL_ARGUMENT_ERROR);
    EXPECT_EQ(LNG2_TranslateString(1208, output, 8, 1208, nullptr, 1, nullptr, 0, &status), 0);
    EXPECT_EQ(status, U_ILLEGAL_ARGUMENT_ERROR);
    EXPECT_EQ(LNG2_TranslateString(1208, output, 8, 1208, "x", -1, nullptr, 0, &status), 0);
    EXPECT_EQ(status, U_ILLEGAL_ARGUMENT_ERROR);
    EXPECT_EQ(LNG2_TranslateString(853, output, 8, 1208, "x", 1, nullptr, 0, nullptr), 0);
    EXPECT_STREQ(output, "abc");
}

TEST(LNG2_TranslateString, TranslatesLongTextThroughItsSmallPivot)
{
    std::string text;
    for (int i = 0; i < 20000; ++i) {
        text += "x\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    }
    const auto size = static_cast<int32_t>(text.size());
    EXPECT_EQ(translated(1208, 1208, text, size).text, text);
    EXPECT_EQ(translated(1208, 1200, translated(1200, 1208, text, size * 2).text, size).text, text);
}

TEST(LNG2_TranslateString, OpensAConverterOnlyOnce)
{
    EXPECT_EQ(translated(850, 1208, "x").status, 0);
    const int open = convertersOpen();
    bool opened = false;
    languageStandIn().openConverter = [&](const std::string &) {
        opened = true;
        return U_ZERO_ERROR;
    };
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(translated(850, 1208, "x").text, "x");
    }
    EXPECT_FALSE(opened);
    EXPECT_EQ(convertersOpen(), open);
}

TEST(LNG2_TranslateString, KeepsABoundedNumberOfConverters)
{
    constexpr int LargestPool = 64;
    std::vector<int32_t> codepages;
    for (int32_t codepage = 1; codepage < 65536 && codepages.size() < LargestPool + 6; ++codepage) {
        if (codepage != 1208 && translated(1208, codepage, "x").status == 0) {
            codepages.push_back(codepage);
            const int kept = static_cast<int>(codepages.size()) + 1; // and that of UTF-8
            EXPECT_EQ(convertersOpen(), std::min(kept, LargestPool)) << codepage;
        }
    }
    ASSERT_EQ(codepages.size(), LargestPool + 6U);
    // One that found no room is closed, and nothing of it is kept; one that found room is used again.
    for (const auto &[codepage, opened] : {std::pair{codepages.back(), 1}, std::pair{codepages.front(), 0}}) {
        int openings = 0;
        languageStandIn().openConverter = [&](const std::string &) {
            ++openings;
            return U_ZERO_ERROR;
        };
        char output[8] = "";
        int32_t status = -1;
        EXPECT_EQ(heapBlocksKeptBy([&, from = codepage] {
                      LNG2_TranslateString(1208, output, 8, from, "xx", 2, nullptr, 0, &status);
                  }),
                  0);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(openings, opened);
        EXPECT_EQ(convertersOpen(), LargestPool);
    }
}

TEST(LNG2_TranslateString, FailsCleanlyWithoutStorage)
{
    EXPECT_EQ(translated(1250, 1257, "x").status, 0); // what ICU keeps from its first use
    int failures = 0;
    for (int n = 1; n < 50; ++n) {
        Translation result;
        char output[8] = "";
        const bool reached = withHeapFailure(n, [&] {
            LNG2_TranslateString(1251, output, 8, 1253, "x", 1, &result.consumed, 0, &result.status);
        });
        if (!reached) {
            EXPECT_EQ(result.status, 0);
            EXPECT_STREQ(output, "x");
            EXPECT_GT(failures, 2);
            return;
        }
        // A request of ICU's for a mere convenience may fail without harm.
        EXPECT_TRUE(result.status == 0 || result.status == U_MEMORY_ALLOCATION_ERROR) << result.status;
        failures += result.status != 0 ? 1 : 0;
    }
    FAIL() << "no round without a failure";
}

TEST(LNG2_TranslateString, ServesThreadsAtOnce)
{
    const std::string text = "Gr\xC3\xBC\xC3\x9F"
                             "e";
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            const int32_t codepage = t % 2 == 0 ? 850 : 1252;
            const std::string expected = t % 2 == 0 ? "Gr\x81\xE1"
                                                      "e"
                                                    : "Gr\xFC\xDF"
                                                      "e";
            for (int i = 0; i < 500; ++i) {
                char output[32];
                int32_t status = -1;
                const int32_t length =
                    LNG2_TranslateString(codepage, output, 32, 1208, text.data(),
                                         static_cast<int32_t>(text.size()), nullptr, 0, &status);
                wrong += status != 0 || std::string(output, static_cast<size_t>(length)) != expected ? 1 : 0;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

TEST(LNG2_TranslateString, SurvivesRandomInput)
{
    std::mt19937 random(610);
    const int32_t codepages[] = {1208, 1200, 1202, 1232, 1234, 850, 943, 1392, 37, 0, 853};
    for (int round = 0; round < 2000; ++round) {
        std::string input(random() % 40, '\0');
        for (char &byte : input) {
            byte = static_cast<char>(random());
        }
        const int32_t source = codepages[random() % std::size(codepages)];
        const int32_t target = codepages[random() % std::size(codepages)];
        const auto capacity = static_cast<int32_t>(random() % 60 + 1);
        const Translation result = translated(target, source, input, capacity);
        EXPECT_LE(result.text.size(), static_cast<size_t>(capacity));
    }
}

// A byte order mark and a zero-width blank have no place in Latin-1, and nobody misses them there.
TEST(LNG2_TranslateString, FitsExactlyWhenWhatIsLeftComesToNothing)
{
    const std::string input = "abc\xEF\xBB\xBF\xE2\x80\x8B";
    for (const int32_t capacity : {3, 4, 64}) {
        const Translation result = translated(819, 1208, input, capacity);
        EXPECT_EQ(result.text, "abc");
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.consumed, static_cast<int32_t>(input.size()));
    }
    EXPECT_EQ(translated(819, 1208, input, 2).status, LNG2_STATUS_BUFFER_OVERFLOW);
    const Translation cut = translated(819, 1208, input + "d", 3);
    EXPECT_EQ(cut.text, "abc");
    EXPECT_EQ(cut.status, LNG2_STATUS_BUFFER_OVERFLOW);
}

// The shift back to single bytes is part of the result, although no character stands for it.
TEST(LNG2_TranslateString, OverflowsWhenTheShiftBackDoesNotFit)
{
    const std::string input = "\xE3\x83\x86";
    const Translation whole = translated(930, 1208, input);
    ASSERT_EQ(whole.text.size(), 4U); // shift out, two bytes, shift in
    EXPECT_EQ(translated(930, 1208, input, 4).status, 0);
    const Translation cut = translated(930, 1208, input, 3);
    EXPECT_EQ(cut.text, whole.text.substr(0, 3));
    EXPECT_EQ(cut.status, LNG2_STATUS_BUFFER_OVERFLOW);
}
