#include "nls/language_stand_in.h"
#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <unicode/ucnv.h>

namespace {

constexpr char Function[] = "DOV0_ConvertUTF8ToNative";
const std::string Street = "Stra\xC3\x9F"
                           "e";

void useCodepage(int32_t codepage)
{
    languageStandIn().getLocale = [codepage](int32_t *status) {
        *status = U_ZERO_ERROR;
        return madeLocale(0x0407, codepage, "de_DE");
    };
}

std::string calling(int codepage, int length, int size)
{
    return message(
        Function,
        "Calling LNG2_TranslateString with codepage ID %d inUTF8BufferLength %d outNativeBufferLength %d\n",
        codepage, length, size);
}

std::string converted(int codepage, int length)
{
    return message(Function,
                   "Successfully converted string from UTF-8 to native codepage #%d, nativeOutSize %d\n",
                   codepage, length);
}

std::string freeing()
{
    return message(Function, "Freeing LNG2_Locale object @%p\n", static_cast<void *>(lastLocale()));
}

int32_t convert(char *output, int32_t size)
{
    return DOV0_ConvertUTF8ToNative(Street.data(), static_cast<int32_t>(Street.size()), output, size);
}

} // namespace

TEST(ConvertUTF8ToNative, ConvertsToTheCodePageOfTheLocale)
{
    useCodepage(819);
    GuardedBuffer output(10);
    int32_t length = -1;
    const TraceLog log = traceAt(Trace::All, [&] { length = convert(output.text(), 10); });
    EXPECT_EQ(length, 6);
    EXPECT_EQ(std::string(output.text(), 6), "Stra\xDF"
                                             "e");
    EXPECT_EQ(log, (TraceLog{entry(Function), dump(Function, Street.data(), 7), calling(819, 7, 10),
                             converted(819, 6), freeing(), leave(Function, intptr_t{6})}));
    EXPECT_EQ(localesOut(), 0);
}

TEST(ConvertUTF8ToNative, LooksUpTheDefaultCodePageWhenTheLocaleHasNone)
{
    GuardedBuffer output(7);
    int32_t length = -1;
    const TraceLog log = traceAt(Trace::All, [&] { length = convert(output.text(), 7); });
    UErrorCode error = U_ZERO_ERROR;
    const char *standard = ucnv_getStandardName(ucnv_getDefaultName(), "IBM", &error);
    ASSERT_STREQ(standard, "ibm-1208") << "these expectations are for a process whose default is UTF-8";
    EXPECT_EQ(length, 7);
    EXPECT_EQ(std::string(output.text(), 7), Street);
    EXPECT_EQ(log,
              (TraceLog{entry(Function),
                        message(Function, "Obtained codepage ID %d for <%s>\n", 1208, ucnv_getDefaultName()),
                        dump(Function, Street.data(), 7), calling(1208, 7, 7), converted(1208, 7), freeing(),
                        leave(Function, intptr_t{7})}));
    EXPECT_EQ(bitsThatShow(log[1], [&] { convert(output.text(), 7); }), Trace::Detail);
}

TEST(ConvertUTF8ToNative, GoesOnWithWhatTheFailedLookUpStored)
{
    languageStandIn().getCodepageId = [](const char *, int32_t *status) {
        *status = U_FILE_ACCESS_ERROR;
        return 819;
    };
    char output[10];
    int32_t length = -1;
    const std::string complaint = message(Function, "Error: Unable to get codepage ID for <%s>, error <%s>\n",
                                          ucnv_getDefaultName(), "U_FILE_ACCESS_ERROR");
    EXPECT_EQ(traceAt(Trace::Error | Trace::Detail, [&] { length = convert(output, 10); }),
              (TraceLog{complaint, calling(819, 7, 10), converted(819, 6)}));
    EXPECT_EQ(length, 6);
    EXPECT_EQ(bitsThatShow(complaint, [&] { convert(output, 10); }), Trace::Error);
}

TEST(ConvertUTF8ToNative, TracesEachMessageUnderItsBit)
{
    useCodepage(819);
    char output[10];
    const auto call = [&] { convert(output, 10); };
    EXPECT_EQ(bitsThatShow(dump(Function, Street.data(), 7), call), Trace::Dump);
    EXPECT_EQ(bitsThatShow(calling(819, 7, 10), call), Trace::Detail);
    EXPECT_EQ(bitsThatShow(converted(819, 6), call), Trace::Detail);
    const TraceLog storage = traceAt(Trace::Storage, call);
    EXPECT_EQ(storage, TraceLog{freeing()});
}

TEST(ConvertUTF8ToNative, GivesNothingForNoText)
{
    char output[] = "as it was";
    for (const int32_t length : {0, -1}) {
        EXPECT_EQ(
            traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_ConvertUTF8ToNative("x", length, output, 9), 0); }),
            (TraceLog{entry(Function), leave(Function, intptr_t{0})}));
    }
    EXPECT_EQ(DOV0_ConvertUTF8ToNative(nullptr, 3, output, 9), 0);
    EXPECT_STREQ(output, "as it was");
}

TEST(ConvertUTF8ToNative, ReportsAMissingLocale)
{
    languageStandIn().getLocale = [](int32_t *status) {
        *status = U_MEMORY_ALLOCATION_ERROR;
        return static_cast<LNG2_Locale *>(nullptr);
    };
    char output[10];
    const std::string complaint =
        message(Function, "Error: Unable to get locale object, error <%s>\n", "U_MEMORY_ALLOCATION_ERROR");
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(convert(output, 10), 0); }),
              (TraceLog{entry(Function), complaint, leave(Function, intptr_t{0})}));
    EXPECT_EQ(bitsThatShow(complaint, [&] { convert(output, 10); }), Trace::Error);
}

TEST(ConvertUTF8ToNative, ReportsAResultThatDoesNotFit)
{
    useCodepage(819);
    const std::string complaint =
        message(Function, "Error: Unable to convert supplied string from UTF8 to %s\n", "ISO-8859-1");
    for (int32_t size = 1; size <= 6; ++size) {
        GuardedBuffer output(static_cast<size_t>(size));
        int32_t length = -1;
        const TraceLog log = traceAt(Trace::All, [&] { length = convert(output.text(), size); });
        EXPECT_EQ(length, size < 6 ? 0 : 6);
        EXPECT_EQ(log, (TraceLog{entry(Function), dump(Function, Street.data(), 7), calling(819, 7, size),
                                 size < 6 ? complaint : converted(819, 6), freeing(),
                                 leave(Function, intptr_t{length})}));
    }
    char output[3];
    EXPECT_EQ(bitsThatShow(complaint, [&] { convert(output, 3); }), Trace::Error);
    EXPECT_EQ(convert(output, 0), 0);
    EXPECT_EQ(convert(output, -1), 0);
    EXPECT_EQ(convert(nullptr, 10), 0);
    EXPECT_EQ(localesOut(), 0);
}

TEST(ConvertUTF8ToNative, NamesACodePageWithoutANameByItsNumber)
{
    useCodepage(853);
    char output[10];
    const std::string complaint =
        message(Function, "Error: Unable to convert supplied string from UTF8 to codepage #%d\n", 853);
    EXPECT_EQ(traceAt(Trace::Error, [&] { EXPECT_EQ(convert(output, 10), 0); }), TraceLog{complaint});
    EXPECT_EQ(bitsThatShow(complaint, [&] { convert(output, 10); }), Trace::Error);
}

TEST(ConvertUTF8ToNative, ServesThreadsAtOnce)
{
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&wrong] {
            for (int i = 0; i < 300; ++i) {
                char output[16];
                wrong += convert(output, 16) != 7 || std::string(output, 7) != Street ? 1 : 0;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(localesOut(), 0);
}
