#include "nls/language_stand_in.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <thread>

namespace {

constexpr char Function[] = "DOV0_ZTconsoleMessage";

template <typename... Arguments> std::string says(const char *format, Arguments... arguments)
{
    return message(Function, format, arguments...);
}

// A stand-in for the console's tool, found first in PATH: it keeps its arguments and ends with the status wanted.
class Console {
public:
    explicit Console(int status = 0)
    {
        char name[] = "/tmp/dov0_console_XXXXXX";
        folder = mkdtemp(name);
        const std::filesystem::path tool = folder / "AGFMESG";
        std::ofstream(tool) << "#!/bin/sh\nprintf '%s\\0' \"$@\" >> " << (folder / "arguments").string()
                            << "\nexit " << status << "\n";
        std::filesystem::permissions(tool, std::filesystem::perms::owner_all);
        setenv("PATH", path().c_str(), 1);
    }
    ~Console() { std::filesystem::remove_all(folder); }
    Console(const Console &) = delete;
    Console &operator=(const Console &) = delete;

    std::string path() const { return folder.string() + ":/usr/bin:/bin"; }

    // What the tool was given since the last call.
    std::vector<std::string> arguments() const
    {
        std::ifstream file(folder / "arguments", std::ios::binary);
        std::vector<std::string> given;
        for (std::string argument; std::getline(file, argument, '\0');) {
            given.push_back(argument);
        }
        std::filesystem::remove(folder / "arguments");
        return given;
    }

private:
    std::filesystem::path folder;
};

using Arguments = std::vector<std::string>;

// For a process of its own: the switch is read once.
bool isSwitchedOffBy(const char *value)
{
    setenv("DOV_OMC", value, 1);
    TraceLog log = traceOf(Function, Trace::All, [] { DOV0_ZTconsoleMessage(nullptr, nullptr, "m"); });
    const bool isDisabled = log == TraceLog{entry(Function), says("Omnia Message Console feature disabled\n"),
                                            leave(Function, -1)};
    DOV0_SetDPstartMode(1);
    setenv("DOV_OMC", "Y", 1); // not read again
    log = traceAt(Trace::All, [] { DOV0_ZTconsoleMessage(nullptr, nullptr, nullptr); });
    DOV0_SetDPstartMode(0);
    return isDisabled && log == TraceLog{entry(Function), leave(Function, -1)};
}

std::string issuing(const std::string &command)
{
    return says("Issuing system command (%s)\n", command.c_str());
}

std::string ended(const std::string &command, int status)
{
    return says("Length %d Status %d Console command (%s)\n", static_cast<int>(command.size()), status,
                command.c_str());
}

} // namespace

TEST(ZTconsoleMessage, GoesThroughTheFrameworkUnlessIndependent)
{
    int calls = 0;
    const char *const cText = "ALERT extra";
    const char *const sText = "source";
    const char *const text = "a \"message\"";
    languageStandIn().createMessage = [&](const char *s, const char *c, const char *m, int32_t reserved) {
        ++calls;
        EXPECT_EQ(s, sText);
        EXPECT_EQ(c, cText);
        EXPECT_EQ(m, text);
        EXPECT_EQ(reserved, 0);
    };
    EXPECT_EQ(DOV0_ZTconsoleMessage(cText, sText, text), 0);
    EXPECT_EQ(calls, 1);
    const std::string calling =
        says("Calling AGF_CreateMessage <%s> <%s> <%s>\n", "source", "ALERT extra", "a \"message\"");
    const auto call = [=] { EXPECT_EQ(DOV0_ZTconsoleMessage(cText, sText, text), 0); };
    EXPECT_EQ(traceAt(Trace::All, call), (TraceLog{entry(Function), calling, leave(Function, intptr_t{0})}));
    EXPECT_EQ(bitsThatShow(calling, call), Trace::Flow);
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, call), TraceLog{});
}

TEST(ZTconsoleMessage, GivesTheFrameworkTextsThatAreMissing)
{
    int calls = 0;
    languageStandIn().createMessage = [&](const char *s, const char *c, const char *m, int32_t) {
        ++calls;
        EXPECT_EQ(s, nullptr);
        EXPECT_EQ(c, nullptr);
        EXPECT_STREQ(m, "");
    };
    EXPECT_EQ(DOV0_ZTconsoleMessage(nullptr, nullptr, ""), 0);
    EXPECT_EQ(
        from(Function, traceAt(Trace::Flow, [] { DOV0_ZTconsoleMessage(nullptr, nullptr, ""); })),
        (TraceLog{entry(Function), says("Calling AGF_CreateMessage <%s> <%s> <%s>\n", "(null)", "(null)", ""),
                  leave(Function, intptr_t{0})}));
    EXPECT_EQ(calls, 2);
}

TEST(ZTconsoleMessage, DoesNothingByItselfInTheFrameworksPlace)
{
    EXPECT_EQ(DOV0_ZTconsoleMessage("c", "s", "the operation that ships"), 0);
}

TEST(ZTconsoleMessage, StartsTheToolWhenIndependent)
{
    const Console console;
    DOV0_SetDPstartMode(1);
    EXPECT_EQ(DOV0_ZTconsoleMessage("ALERT extra", "source", "hello  there"), 0);
    EXPECT_EQ(console.arguments(), (Arguments{"-s", "source", "-c", "ALERT", "hello  there"}));
    EXPECT_EQ(DOV0_ZTconsoleMessage(nullptr, "source", "m"), 0);
    EXPECT_EQ(console.arguments(), (Arguments{"-s", "source", "m"}));
    EXPECT_EQ(DOV0_ZTconsoleMessage("c", nullptr, "m"), 0);
    EXPECT_EQ(console.arguments(), (Arguments{"-c", "c", "m"}));
    EXPECT_EQ(DOV0_ZTconsoleMessage("", "", ""), 0); // as if not given
    EXPECT_EQ(console.arguments(), (Arguments{""}));
    EXPECT_EQ(DOV0_ZTconsoleMessage(" leading", nullptr, "m"), 0);
    EXPECT_EQ(console.arguments(), (Arguments{"-c", "m"}));
    EXPECT_EQ(DOV0_ZTconsoleMessage(nullptr, nullptr, "$((1 + 1)) it's"), 0); // the shell acts on it
    EXPECT_EQ(console.arguments(), (Arguments{"2 it's"}));
    const std::string longMessage(100000, 'm');
    EXPECT_EQ(DOV0_ZTconsoleMessage(nullptr, nullptr, longMessage.c_str()), 0);
    EXPECT_EQ(console.arguments(), (Arguments{longMessage}));
}

TEST(ZTconsoleMessage, ReadsTheModeOnEveryCall)
{
    const Console console;
    int calls = 0;
    languageStandIn().createMessage = [&](const char *, const char *, const char *, int32_t) { ++calls; };
    EXPECT_EQ(DOV0_ZTconsoleMessage(nullptr, nullptr, "framework"), 0);
    DOV0_SetDPstartMode(-1);
    EXPECT_EQ(DOV0_ZTconsoleMessage(nullptr, nullptr, "tool"), 0);
    DOV0_SetDPstartMode(0);
    EXPECT_EQ(DOV0_ZTconsoleMessage(nullptr, nullptr, "framework"), 0);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(console.arguments(), (Arguments{"tool"}));
}

TEST(ZTconsoleMessage, PassesTheToolsStatusOn)
{
    const Console console(7);
    DOV0_SetDPstartMode(1);
    EXPECT_EQ(DOV0_ZTconsoleMessage(nullptr, nullptr, "m"), 7 << 8); // as wait() has it
    EXPECT_EQ(console.arguments(), (Arguments{"m"}));
    setenv("PATH", "/nowhere", 1);
    EXPECT_EQ(DOV0_ZTconsoleMessage(nullptr, nullptr, "m"), 127 << 8);
}

TEST(ZTconsoleMessage, TracesTheCommand)
{
    const Console console(3);
    DOV0_SetDPstartMode(1);
    DOV0_ZTconsoleMessage(nullptr, nullptr, "first");
    const auto call = [] { EXPECT_EQ(DOV0_ZTconsoleMessage("ALERT extra", "source", "hello"), 3 << 8); };
    const std::string command = "AGFMESG -s source -c ALERT \"hello\"";
    EXPECT_EQ(traceOf(Function, Trace::All, call),
              (TraceLog{entry(Function), issuing(command), ended(command, 3 << 8), leave(Function, 3 << 8)}));
    EXPECT_EQ(traceOf(Function, Trace::Detail, call), (TraceLog{issuing(command), ended(command, 3 << 8)}));
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Detail, call),
              (TraceLog{entry(Function), leave(Function, 3 << 8)}));
    // The buffer holds the command's name and 256 bytes beside the three texts.
    const TraceLog storage = from("DOV0_GetStorage", traceAt(Trace::Detail, call));
    ASSERT_EQ(storage.size(), 1U);
    EXPECT_NE(storage[0].find(" size " + std::to_string(7 + 5 + 256 + 11 + 6) + "\n"), std::string::npos)
        << storage[0];
    EXPECT_EQ(from("DOV0_FreeStorage", traceAt(Trace::Flow, call)).size(), 2U);
    // Nothing but this is asked of the environment after the first call.
    EXPECT_EQ(from("DOV0_GetEnv", traceAt(Trace::All, call)), TraceLog{});
}

TEST(ZTconsoleMessage, IsSwitchedOffByALetterN)
{
    for (const char *value : {"no", "N", "Never", "n"}) {
        EXPECT_EXIT(std::_Exit(isSwitchedOffBy(value) ? 0 : 1), testing::ExitedWithCode(0), "") << value;
    }
}

TEST(ZTconsoleMessage, TracesTheDecisionUnderItsBit)
{
    setenv("DOV_OMC", "N", 1);
    const auto messages = [](uint32_t level) {
        return traceOf(Function, level, [] { DOV0_ZTconsoleMessage(nullptr, nullptr, "m"); }).size();
    };
    EXPECT_EXIT(std::_Exit(messages(Trace::State) == 1 ? 0 : 1), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(std::_Exit(messages(Trace::All & ~(Trace::State | Trace::Flow)) == 0 ? 0 : 1),
                testing::ExitedWithCode(0), "");
}

TEST(ZTconsoleMessage, StaysOnByAnythingElse)
{
    for (const char *value : {"Yes", "0", "", "true", "on"}) {
        EXPECT_EXIT(std::_Exit(isSwitchedOffBy(value) ? 1 : DOV0_ZTconsoleMessage(nullptr, nullptr, "m")),
                    testing::ExitedWithCode(0), "")
            << value;
    }
}

TEST(ZTconsoleMessage, QuietensItsToolsWhenItDecidesIndependently)
{
    const Console console;
    DOV0_SetDPstartMode(1);
    EXPECT_EQ(DOV0_GetEnv("QPL_TRC1", nullptr), nullptr);
    const TraceLog log =
        traceOf(Function, Trace::Detail, [] { DOV0_ZTconsoleMessage(nullptr, nullptr, "m"); });
    EXPECT_EQ(log, (TraceLog{says("OMC module path %s in effect\n", console.path().c_str()),
                             issuing("AGFMESG \"m\""), ended("AGFMESG \"m\"", 0)}));
    EXPECT_STREQ(DOV0_GetEnv("QPL_TRC1", nullptr), " ");
    EXPECT_EQ(std::getenv("QPL_TRC1"), nullptr);
    EXPECT_EQ(traceOf(Function, Trace::Detail, [] { DOV0_ZTconsoleMessage(nullptr, nullptr, "m"); }).size(),
              2U);
}

TEST(ZTconsoleMessage, TellsThePathUnderTheDetailBit)
{
    const Console console;
    DOV0_SetDPstartMode(1);
    EXPECT_EQ(
        traceOf(Function, Trace::All & ~Trace::Detail, [] { DOV0_ZTconsoleMessage(nullptr, nullptr, "m"); }),
        (TraceLog{entry(Function), leave(Function, intptr_t{0})}));
}

TEST(ZTconsoleMessage, LeavesTheEnvironmentAloneWhenItDecidesForTheFramework)
{
    EXPECT_EQ(traceOf(Function, Trace::Detail, [] { DOV0_ZTconsoleMessage(nullptr, nullptr, "m"); }),
              TraceLog{});
    const Console console;
    DOV0_SetDPstartMode(1); // too late
    DOV0_ZTconsoleMessage(nullptr, nullptr, "m");
    EXPECT_EQ(DOV0_GetEnv("QPL_TRC1", nullptr), nullptr);
}

TEST(ZTconsoleMessage, RefusesAMissingMessage)
{
    const std::string complaint = says("***** No message input. ZT console message bypassed\n");
    for (const int32_t mode : {0, 1}) {
        DOV0_SetDPstartMode(mode);
        DOV0_ZTconsoleMessage("c", "s", nullptr);
        const auto call = [] { EXPECT_EQ(DOV0_ZTconsoleMessage("c", "s", nullptr), -1); };
        EXPECT_EQ(traceAt(Trace::All, call), (TraceLog{entry(Function), complaint, leave(Function, -1)}));
        EXPECT_EQ(bitsThatShow(complaint, call), Trace::Error);
    }
}

TEST(ZTconsoleMessage, ReportsMissingStorage)
{
    const Console console;
    DOV0_SetDPstartMode(1);
    DOV0_ZTconsoleMessage(nullptr, nullptr, "m");
    console.arguments();
    const std::string complaint =
        says("***** Unable to allocate console message buffer. ZT console message bypassed\n");
    setTraceLevel(Function, Trace::Error);
    int32_t status = 0;
    withoutHeap([&] { status = DOV0_ZTconsoleMessage(nullptr, nullptr, "m"); });
    EXPECT_EQ(takeTrace(), TraceLog{complaint});
    setTraceLevel(0);
    EXPECT_EQ(status, -1);
    EXPECT_EQ(console.arguments(), Arguments{});
    const auto call = [] { withoutHeap([] { DOV0_ZTconsoleMessage(nullptr, nullptr, "m"); }); };
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Error, call),
              (TraceLog{entry(Function), leave(Function, -1)}));
}

TEST(ZTconsoleMessage, EscapesWhatTheShellWouldActOn)
{
    const Console console;
    DOV0_SetDPstartMode(1);
    setenv("DOV_OMC_ESCAPE", "Y", 1);
    const std::string marker = console.path().substr(0, console.path().find(':')) + "/executed";
    std::string every;
    for (int byte = 1; byte < 256; ++byte) {
        every += static_cast<char>(byte);
    }
    for (const std::string &text :
         {every, "\"; touch " + marker + "; \"", "$(touch " + marker + ")", "`touch " + marker + "`",
          "\\\"; touch " + marker + " #", std::string("$HOME ${HOME} $$ \\$HOME \\"), std::string("\\\n\\"),
          std::string("\"\"\""), std::string(50000, '"'), std::string("!! ~ * ? [a] {a,b} <x >y |z &")}) {
        EXPECT_EQ(DOV0_ZTconsoleMessage("c", "s", text.c_str()), 0);
        EXPECT_EQ(console.arguments(), (Arguments{"-s", "s", "-c", "c", text}));
        EXPECT_FALSE(std::filesystem::exists(marker)) << text;
    }
    const std::string command = R"(AGFMESG "\"\$\`\\'")";
    EXPECT_EQ(traceOf(Function, Trace::Detail, [] { DOV0_ZTconsoleMessage(nullptr, nullptr, "\"$`\\'"); }),
              (TraceLog{issuing(command), ended(command, 0)}));
}

TEST(ZTconsoleMessage, EscapesOnlyWhenAskedTo)
{
    const Console console;
    DOV0_SetDPstartMode(1);
    const auto arguments = [&] {
        DOV0_ZTconsoleMessage(nullptr, nullptr, "$((2 + 3))");
        return console.arguments();
    };
    EXPECT_EQ(arguments(), (Arguments{"5"}));
    for (const char *value : {"", "N", "no", "1", " Y"}) {
        setenv("DOV_OMC_ESCAPE", value, 1);
        EXPECT_EQ(arguments(), (Arguments{"5"})) << value;
    }
    for (const char *value : {"Y", "y", "Yes"}) {
        setenv("DOV_OMC_ESCAPE", value, 1);
        EXPECT_EQ(arguments(), (Arguments{"$((2 + 3))"})) << value;
    }
    unsetenv("DOV_OMC_ESCAPE");
    DOV0_PutEnv("DOV_OMC_ESCAPE=Y");
    EXPECT_EQ(arguments(), (Arguments{"$((2 + 3))"}));
    setenv("DOV_OMC_ESCAPE", "N", 1); // wins, as everywhere
    EXPECT_EQ(arguments(), (Arguments{"5"}));
}

TEST(ZTconsoleMessage, DecidesOnceForAllThreads)
{
    setenv("DOV_OMC", "N", 1);
    setTraceLevel(Function, Trace::State);
    std::atomic<int> sent{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&sent] {
            for (int i = 0; i < 100; ++i) {
                sent += DOV0_ZTconsoleMessage(nullptr, nullptr, "m") != -1 ? 1 : 0;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(sent, 0);
    EXPECT_EQ(takeTrace(), TraceLog{says("Omnia Message Console feature disabled\n")});
}
