#include "nls/language_stand_in.h"
#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <unicode/ucnv.h>

namespace {

constexpr char Function[] = "DOV0_ConvertDataToUnicode";

std::u16string converted(const char *codeset, const std::string &data)
{
    GuardedBuffer input(data.size());
    std::memcpy(input.bytes(), data.data(), data.size());
    char16_t *buffer = nullptr;
    int32_t count = -1;
    const int32_t result =
        DOV0_ConvertDataToUnicode(codeset, input.text(), static_cast<int32_t>(data.size()), &buffer, &count);
    if (buffer == nullptr) {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(count, -1);
        return u"(nothing)";
    }
    EXPECT_EQ(result, count);
    std::u16string text(buffer, static_cast<size_t>(count));
    DOV0_FreeStorage(&buffer);
    return text;
}

struct Arguments {
    const char *codeset = "ISO-8859-1";
    const char *data = "abc";
    int32_t length = 3;
    char16_t *buffer = nullptr;
    int32_t count = -1;
    char16_t **outBuffer = &buffer;
    int32_t *outCount = &count;

    int32_t call() { return DOV0_ConvertDataToUnicode(codeset, data, length, outBuffer, outCount); }
};

void expectIncomplete(Arguments &arguments)
{
    int32_t result = -1;
    const TraceLog log = traceAt(Trace::All, [&] { result = arguments.call(); });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(arguments.buffer, nullptr);
    EXPECT_EQ(arguments.count, -1);
    const std::string complaint = message(
        Function, "*ERROR: input parameter incomplete, @%p @%p %d @%p @%p\n",
        static_cast<const void *>(arguments.codeset), static_cast<const void *>(arguments.data),
        arguments.length, static_cast<void *>(arguments.outBuffer), static_cast<void *>(arguments.outCount));
    EXPECT_EQ(log, (TraceLog{entry(Function), complaint, leave(Function, intptr_t{0})}));
    EXPECT_EQ(bitsThatShow(complaint, [&] { arguments.call(); }), Trace::Error);
}

} // namespace

TEST(ConvertDataToUnicode, ConvertsNamedCodeSets)
{
    EXPECT_EQ(converted("ISO-8859-1", "caf\xE9!"), u"caf\u00E9!");
    EXPECT_EQ(converted("windows-1252", "\x80"), u"\u20AC");
    EXPECT_EQ(converted("IBM037", "\xC1\xC2\xC3"), u"ABC");
    EXPECT_EQ(converted("Shift_JIS", "\x93\xFA\x96\x7B"), u"\u65E5\u672C");
    EXPECT_EQ(converted("UTF-8", "\xF0\x9F\x98\x80"), u"\U0001F600");
    EXPECT_EQ(converted("UTF-16LE", std::string("A\0B\0", 4)), u"AB");
    EXPECT_EQ(converted("UTF-32BE", std::string("\0\1\xF6\0", 4)), u"\U0001F600");
    EXPECT_EQ(converted("US-ASCII", std::string("a\0b", 3)), std::u16string(u"a\0b", 3));
}

TEST(ConvertDataToUnicode, ReplacesMalformedSequences)
{
    EXPECT_EQ(converted("UTF-8", "a\xC3(\xFFz"), u"a\uFFFD(\uFFFDz");
    EXPECT_EQ(converted("UTF-16BE", std::string("\xD8\x3D\0A", 4)), u"\uFFFDA"); // half a pair
    EXPECT_EQ(converted("UTF-16BE", std::string("\0A\0", 3)), u"A\uFFFD");       // half a unit
}

TEST(ConvertDataToUnicode, TracesItsBufferUnderTheStorageBit)
{
    Arguments arguments;
    int32_t result = -1;
    const TraceLog log = traceAt(Trace::Flow | Trace::Storage, [&] { result = arguments.call(); });
    EXPECT_EQ(result, 3);
    const std::string allocated =
        message(Function, "Allocated Ubuffer @%p for length %d\n", static_cast<void *>(arguments.buffer), 6);
    EXPECT_EQ(log,
              (TraceLog{entry(Function), entry("DOV0_GetStorage"), leave("DOV0_GetStorage", arguments.buffer),
                        allocated, leave(Function, intptr_t{3})}));
    DOV0_FreeStorage(&arguments.buffer);
    EXPECT_EQ(
        from(Function, traceAt(Trace::All & ~(Trace::Flow | Trace::Storage), [&] { arguments.call(); })),
        TraceLog{});
    DOV0_FreeStorage(&arguments.buffer);
}

TEST(ConvertDataToUnicode, RefusesIncompleteArguments)
{
    Arguments without[6];
    without[0].codeset = nullptr;
    without[1].data = nullptr;
    without[2].length = 0;
    without[3].length = -1;
    without[4].outBuffer = nullptr;
    without[5].outCount = nullptr;
    for (Arguments &arguments : without) {
        expectIncomplete(arguments);
    }
}

TEST(ConvertDataToUnicode, ReportsAnUnknownCodeSet)
{
    Arguments arguments;
    arguments.codeset = "no such code set";
    int32_t result = -1;
    const TraceLog log = traceAt(Trace::All, [&] { result = arguments.call(); });
    const std::string complaint =
        message(Function, "*ERROR: unable to create Unicode converter for codeset <%s> Status %d <%s>\n",
                "no such code set", 4, "U_FILE_ACCESS_ERROR");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(arguments.buffer, nullptr);
    EXPECT_EQ(arguments.count, -1);
    EXPECT_EQ(log, (TraceLog{entry(Function), complaint, leave(Function, intptr_t{0})}));
    EXPECT_EQ(bitsThatShow(complaint, [&] { arguments.call(); }), Trace::Error);
}

TEST(ConvertDataToUnicode, ReportsAFailedConversion)
{
    languageStandIn().toUnicode = U_BUFFER_OVERFLOW_ERROR;
    Arguments arguments;
    int32_t result = -1;
    const TraceLog log = traceOf(Function, Trace::All & ~Trace::Storage, [&] { result = arguments.call(); });
    const std::string complaint =
        message(Function, "*ERROR: data conversion to Unicode failed, Status %d <%s>\n", 15,
                "U_BUFFER_OVERFLOW_ERROR");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(arguments.buffer, nullptr);
    EXPECT_EQ(arguments.count, -1);
    EXPECT_EQ(log, (TraceLog{entry(Function), complaint, leave(Function, intptr_t{0})}));
    EXPECT_EQ(bitsThatShow(complaint, [&] { arguments.call(); }), Trace::Error);
    EXPECT_EQ(convertersOpen(), 0);
}

TEST(ConvertDataToUnicode, FailsWhenTheTextHasMoreUnitsThanTheDataHasBytes)
{
    // After this window is defined, each byte stands for a pair of surrogates.
    Arguments arguments;
    arguments.codeset = "SCSU";
    arguments.data = "\x0B\x00\x00\x80\x81\x82\x83\x84\x85";
    arguments.length = 5;
    EXPECT_EQ(arguments.call(), 4);
    DOV0_FreeStorage(&arguments.buffer);
    arguments.buffer = nullptr;
    arguments.count = -1;
    arguments.length = 9;
    EXPECT_EQ(traceOf(Function, Trace::Error, [&] { EXPECT_EQ(arguments.call(), 0); }),
              (TraceLog{message(Function, "*ERROR: data conversion to Unicode failed, Status %d <%s>\n", 15,
                                "U_BUFFER_OVERFLOW_ERROR")}));
    EXPECT_EQ(arguments.buffer, nullptr);
    EXPECT_EQ(arguments.count, -1);
}

TEST(ConvertDataToUnicode, ReportsExhaustedStorage)
{
    Arguments arguments;
    EXPECT_EQ(arguments.call(), 3); // what ICU keeps from its first use
    DOV0_FreeStorage(&arguments.buffer);
    arguments.buffer = nullptr;
    arguments.count = -1;
    const std::string complaint =
        message(Function, "*ERROR: data conversion to Unicode failed, Status %d <%s>\n", 7,
                "U_MEMORY_ALLOCATION_ERROR");
    const int needed = heapRequestsOf([&] { arguments.call(); });
    DOV0_FreeStorage(&arguments.buffer);
    arguments.count = -1;
    bool seen = false;
    for (int n = 1; n <= needed; ++n) {
        int32_t result = -1;
        const TraceLog log =
            traceOf(Function, Trace::Error, [&] { withHeapFailure(n, [&] { result = arguments.call(); }); });
        EXPECT_EQ(result, 0) << n;
        EXPECT_EQ(arguments.buffer, nullptr);
        EXPECT_EQ(arguments.count, -1);
        EXPECT_EQ(log.size(), 1U);
        seen = seen || log == TraceLog{complaint};
    }
    EXPECT_TRUE(seen);
    EXPECT_EQ(convertersOpen(), 0);
}

TEST(ConvertDataToUnicode, RefusesSizesThatStorageCannotHave)
{
    Arguments arguments;
    arguments.length = INT32_MAX; // nothing is read before the buffer is there
    EXPECT_EQ(traceOf(Function, Trace::Error, [&] { EXPECT_EQ(arguments.call(), 0); }),
              (TraceLog{message(Function, "*ERROR: data conversion to Unicode failed, Status %d <%s>\n", 7,
                                "U_MEMORY_ALLOCATION_ERROR")}));
}

TEST(ConvertDataToUnicode, GivesTheBufferOfDataWithoutText)
{
    Arguments arguments;
    arguments.codeset = "UTF-16";
    arguments.data = "\xFE\xFF";
    arguments.length = 2;
    EXPECT_EQ(arguments.call(), 0);
    EXPECT_NE(arguments.buffer, nullptr);
    EXPECT_EQ(arguments.count, 0);
    DOV0_FreeStorage(&arguments.buffer);
}

TEST(ConvertDataToUnicode, ServesThreadsAtOnce)
{
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&wrong, t] {
            for (int i = 0; i < 200; ++i) {
                wrong += converted(t % 2 == 0 ? "ISO-8859-1" : "UTF-8", "a\xC3\xA9") !=
                                 (t % 2 == 0 ? u"a\u00C3\u00A9" : u"a\u00E9")
                             ? 1
                             : 0;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}
