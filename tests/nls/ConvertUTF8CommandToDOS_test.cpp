#include "nls/language_stand_in.h"
#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <unicode/uloc.h>

namespace {

constexpr char Function[] = "DOV0_ConvertUTF8CommandToDOS";

template <typename... Arguments> std::string says(const char *format, Arguments... arguments)
{
    return message(Function, format, arguments...);
}

void useLocale(int32_t languageId, int32_t codepage, const char *name)
{
    languageStandIn().getThreadLocale = [=](int32_t *status) {
        *status = 0;
        return madeLocale(languageId, codepage, name);
    };
}

// The result, in a buffer that the command's length and a blank and a terminator, or more, have room in.
std::string converted(const std::string &command, int32_t size)
{
    GuardedBuffer input(command.size());
    std::memcpy(input.bytes(), command.data(), command.size()); // not terminated
    GuardedBuffer output(std::max<size_t>(static_cast<size_t>(size), command.size() + 2));
    const int32_t length =
        DOV0_ConvertUTF8CommandToDOS(input.text(), static_cast<int32_t>(command.size()), output.text(), size);
    EXPECT_EQ(std::string(input.text(), command.size()), command) << "the command was written to";
    EXPECT_EQ(localesOut(), 0);
    return std::string(output.text(), static_cast<size_t>(length));
}

} // namespace

TEST(ConvertUTF8CommandToDOS, CopiesAsciiAndAppendsABlank)
{
    EXPECT_EQ(converted("dir", 10), "dir ");
    EXPECT_EQ(converted("dir ", 10), "dir  "); // whatever it ends in
    EXPECT_EQ(converted(std::string("a\0b\x7F", 4), 10), std::string("a\0b\x7F ", 5));
    for (size_t length = 1; length <= 300; ++length) {
        const std::string command(length, 'x');
        EXPECT_EQ(converted(command, static_cast<int32_t>(length)),
                  command + " "); // the size need not hold all
        EXPECT_EQ(converted(command, static_cast<int32_t>(length) + 1), command + " ");
        EXPECT_EQ(converted(command, static_cast<int32_t>(length) + 2), command + " ");
    }
    GuardedBuffer output(5);
    EXPECT_EQ(DOV0_ConvertUTF8CommandToDOS("dir and more", 3, output.text(), 3), 4);
    EXPECT_STREQ(output.text(), "dir ");
}

TEST(ConvertUTF8CommandToDOS, ConvertsToTheDosCodePageOfTheLocale)
{
    const struct {
        int32_t languageId;
        int32_t codepage;
        const char *command;
        const char *bytes; // from the tables of the DOS code pages
    } samples[] = {
        {0x0407, 1252, "caf\u00E9", "caf\x82 "},
        {0x0407, 1252, "caf\u00E9 ", "caf\x82 "}, // a blank that is there is enough
        {0x0415, 1250, "\u0142", "\x88 "},
        {0x0419, 1251, "dir \u044F", "dir \xEF "},
        {0x0408, 1253, "\u03B1", "\xD6 "},
        {0x040D, 1255, "\u05D0x", "\x80x "},
        {0x0425, 1257, "\u00F8", "\x9B "},
        {19660825, 1252, "\u03B1", "\x98 "},
        {51904551, 1252, "\u03B2", "\x99 "},
        {0x0407, 437, "\u00FC", "\x81 "},
        {0x0407, 1208, "\u00FC", "\u00FC "},
    };
    for (const auto &sample : samples) {
        useLocale(sample.languageId, sample.codepage, "xx");
        EXPECT_EQ(converted(sample.command, 100), sample.bytes) << sample.command;
    }
}

TEST(ConvertUTF8CommandToDOS, UsesTheThreadsLocale)
{
    UErrorCode error = U_ZERO_ERROR;
    uloc_setDefault("ru_RU", &error);
    EXPECT_EQ(converted("\u044F", 10), "\xEF ");
    uloc_setDefault("de_DE", &error);
    EXPECT_EQ(converted("\u00FC", 10), "\x81 ");
}

TEST(ConvertUTF8CommandToDOS, TracesAnAsciiCommand)
{
    const auto call = [] { converted("dir", 10); };
    const TraceLog log = traceAt(Trace::All, call);
    EXPECT_EQ(log, (TraceLog{entry(Function), says("inUTF8command length %d <%s>\n", 3, "dir"),
                             says("No conversion required for inUTF8command\n"), leave(Function, 4)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Detail, call), (TraceLog{entry(Function), leave(Function, 4)}));
    EXPECT_EQ(traceAt(Trace::Detail, call), (TraceLog{log[1], log[2]}));
}

TEST(ConvertUTF8CommandToDOS, TracesAConversion)
{
    useLocale(19660825, 1252, "el_GR");
    char output[20];
    const char *buffer = nullptr;
    int32_t sourceCodepage = 0;
    int32_t targetCodepage = 0;
    int32_t capacity = 0;
    languageStandIn().translateString = [&](int32_t target, char *to, int32_t room, int32_t source,
                                            const char *input, int32_t length, int32_t *status) {
        buffer = input;
        sourceCodepage = source;
        targetCodepage = target;
        capacity = room;
        EXPECT_EQ(std::string(input, static_cast<size_t>(length)), "\u03B1 ");
        to[0] = 'r';
        *status = 0;
        return 2;
    };
    const auto call = [&] { EXPECT_EQ(DOV0_ConvertUTF8CommandToDOS("\u03B1", 2, output, 20), 2); };
    TraceLog log = traceOf(Function, Trace::All, call);
    const std::string first = says("inUTF8command length %d <%s>\n", 2, "\u03B1");
    const std::string locale = says("Locale languageId <%d> codepage <%d> codepageToUse <%d> Name <%s>",
                                    19660825, 1252, 737, "el_GR");
    const auto allocated = [&] {
        return says("Allocated inCmd buffer @%p for length %d\n", static_cast<const void *>(buffer), 3);
    };
    const auto freeing = [&] {
        return says("Freeing inCmd buffer @%p\n", static_cast<const void *>(buffer));
    };
    EXPECT_EQ(log, (TraceLog{entry(Function), first, locale, allocated(), freeing(), leave(Function, 2)}));
    EXPECT_EQ(sourceCodepage, 1208);
    EXPECT_EQ(targetCodepage, 737);
    EXPECT_EQ(capacity, 20);
    log = traceOf(Function, Trace::Storage, call);
    EXPECT_EQ(log, (TraceLog{allocated(), freeing()}));
    log = traceOf(Function, Trace::Detail, call);
    EXPECT_EQ(log, (TraceLog{first, locale}));
    EXPECT_EQ(traceOf(Function, Trace::All & ~(Trace::Storage | Trace::Detail), call),
              (TraceLog{entry(Function), leave(Function, 2)}));
    // The code page is asked of the exported function, and the copy is working storage, given back.
    EXPECT_EQ(
        from("DOV0_CheckSystemCommandCodepage", traceAt(Trace::Flow, call)),
        (TraceLog{entry("DOV0_CheckSystemCommandCodepage"), leave("DOV0_CheckSystemCommandCodepage", 737)}));
    EXPECT_EQ(from("DOV0_FreeStorage", traceAt(Trace::Flow, call)).size(), 2U);
    log = from("DOV0_GetStorage", traceAt(Trace::Detail, call));
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log[0], message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n",
                              static_cast<const void *>(buffer), 3));
}

TEST(ConvertUTF8CommandToDOS, UsesACommandThatEndsInABlankAsItIs)
{
    useLocale(0x0407, 1252, "de_DE");
    const char command[] = "\u00FC ";
    languageStandIn().translateString = [&](int32_t, char *, int32_t, int32_t, const char *input,
                                            int32_t length, int32_t *status) {
        EXPECT_EQ(input, command);
        EXPECT_EQ(length, 3);
        *status = 0;
        return 2;
    };
    char output[20];
    EXPECT_EQ(traceAt(Trace::Storage, [&] { DOV0_ConvertUTF8CommandToDOS(command, 3, output, 20); }),
              TraceLog{});
}

TEST(ConvertUTF8CommandToDOS, BypassesWhatItCannotWorkOn)
{
    char output[] = "as it was";
    const struct {
        const char *command;
        int32_t length;
        char *output;
        int32_t size;
    } calls[] = {
        {nullptr, 3, output, 9},       {"dir", 3, nullptr, 9},        {"dir", 0, output, 9},
        {"dir", -1, output, 9},        {"dir", 3, output, 0},         {"dir", 3, output, -5},
        {"dir", 3, output, 2},         {"dir", 0, output, 0},         {"d\u00FC", 3, output, 2},
        {"dir", INT32_MAX, output, 9}, {"dir", INT32_MIN, output, 9}, {"dir", INT32_MAX, output, INT32_MAX}};
    for (const auto &c : calls) {
        const std::string bypassed =
            says("Conversion bypassed inCmd <@%p,%d> outCmd <@%p,%d>\n", static_cast<const void *>(c.command),
                 c.length, static_cast<void *>(c.output), c.size);
        const auto call = [&] {
            EXPECT_EQ(DOV0_ConvertUTF8CommandToDOS(c.command, c.length, c.output, c.size), 0);
        };
        EXPECT_EQ(traceAt(Trace::All, call),
                  (TraceLog{entry(Function), bypassed, leave(Function, intptr_t{0})}));
        EXPECT_EQ(bitsThatShow(bypassed, call), Trace::Detail);
        EXPECT_STREQ(output, "as it was");
    }
}

TEST(ConvertUTF8CommandToDOS, ReportsAFailedTranslation)
{
    useLocale(0x041F, 1254, "tr_TR"); // there is no converter for 853
    std::string complaint = says("*ERROR: Command data conversion failed, codepage %d status %d\n", 853, 4);
    const auto call = [] { EXPECT_EQ(converted("\u0131", 10), ""); };
    EXPECT_EQ(traceAt(Trace::Error, call), TraceLog{complaint});
    EXPECT_EQ(bitsThatShow(complaint, call), Trace::Error);
    EXPECT_EQ(traceOf(Function, Trace::All, call).size(), 7U); // the copy is freed too

    useLocale(0x0407, 1208, "de_DE"); // overflow
    complaint = says("*ERROR: Command data conversion failed, codepage %d status %d\n", 1208, 15);
    EXPECT_EQ(traceAt(Trace::Error, [] { EXPECT_EQ(converted("\u00FC", 2), ""); }), TraceLog{complaint});
    EXPECT_EQ(converted("\u00FC", 3), "\u00FC "); // fits, without a terminator

    languageStandIn().translateString = [](int32_t, char *, int32_t, int32_t, const char *, int32_t,
                                           int32_t *status) {
        *status = -124; // even a warning
        return 2;
    };
    complaint = says("*ERROR: Command data conversion failed, codepage %d status %d\n", 1208, -124);
    EXPECT_EQ(traceAt(Trace::Error, [] { EXPECT_EQ(converted("\u00FC", 9), ""); }), TraceLog{complaint});
}

TEST(ConvertUTF8CommandToDOS, ReportsAMissingLocale)
{
    languageStandIn().getThreadLocale = [](int32_t *status) {
        *status = 7;
        return static_cast<LNG2_Locale *>(nullptr);
    };
    const std::string complaint = says("*ERROR: No locale for command data conversion, status %d\n", 7);
    const auto call = [] { EXPECT_EQ(converted("\u00FC", 10), ""); };
    EXPECT_EQ(traceAt(Trace::All, call),
              (TraceLog{entry(Function), says("inUTF8command length %d <%s>\n", 2, "\u00FC"), complaint,
                        leave(Function, intptr_t{0})}));
    EXPECT_EQ(bitsThatShow(complaint, call), Trace::Error);
}

TEST(ConvertUTF8CommandToDOS, ReportsMissingStorage)
{
    useLocale(0x0407, 1252, "de_DE");
    EXPECT_EQ(converted("\u00FC", 10), "\x81 "); // opens the converters
    char output[10];
    int32_t length = -1;
    const auto call = [&] { length = DOV0_ConvertUTF8CommandToDOS("\u00FC", 2, output, 10); };
    setTraceLevel(Function, Trace::Error);
    EXPECT_TRUE(withHeapFailure(2, call)); // the first is the stand-in's locale object
    EXPECT_EQ(from(Function, takeTrace()),
              TraceLog{says("*ERROR: Unable to allocate inCmd buffer for length %d\n", 3)});
    setTraceLevel(0);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(localesOut(), 0);
    call();
    EXPECT_EQ(length, 2);
}

TEST(ConvertUTF8CommandToDOS, TakesMalformedCommands)
{
    useLocale(0x0407, 1252, "de_DE");
    EXPECT_EQ(converted("a\xFFz", 20), "a\x7Fz "); // ICU's substitute in a DOS code page
    EXPECT_EQ(converted("\xC3", 20), "\x7F ");
}

TEST(ConvertUTF8CommandToDOS, ServesThreadsAtOnce)
{
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&wrong] {
            for (int i = 0; i < 200; ++i) {
                char output[20];
                wrong += DOV0_ConvertUTF8CommandToDOS("r\u00E9", 3, output, 20) != 3 ? 1 : 0;
                wrong += std::memcmp(output, "r\x82 ", 3) != 0 ? 1 : 0;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(localesOut(), 0);
}
