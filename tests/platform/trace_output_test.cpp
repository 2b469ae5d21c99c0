// How messages, events and dumps are laid out, and where they go.
#include "platform/trace_file.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <random>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using testing::ElementsAre;

namespace {

// The time that the clock shows, when it is not the true one.
timespec shownTime = {};

// What was done about a full file, in order.
std::vector<std::string> *fileSteps = nullptr;

std::atomic<int> writes{0};
std::atomic<ssize_t> writtenInstead{-1}; // what write returns without writing, unless negative

void noteStep(const std::string &step)
{
    if (fileSteps != nullptr) {
        fileSteps->push_back(step);
    }
}

} // namespace

// The library reads the clock through the dynamic symbol table, and so this one.
extern "C" int clock_gettime(clockid_t clock, timespec *now) noexcept
{
    if (shownTime.tv_sec != 0) {
        *now = shownTime;
        return 0;
    }
    return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
}

extern "C" ssize_t write(int descriptor, const void *bytes, size_t count)
{
    pthread_testcancel(); // as the system's own does
    ++writes;
    return writtenInstead >= 0 ? writtenInstead.load() : syscall(SYS_write, descriptor, bytes, count);
}

extern "C" int flock(int descriptor, int operation) noexcept
{
    noteStep(operation == LOCK_EX ? "lock" : operation == LOCK_UN ? "unlock" : "other");
    return static_cast<int>(syscall(SYS_flock, descriptor, operation));
}

extern "C" int rename(const char *from, const char *to) noexcept
{
    noteStep("rename");
    return renameat(AT_FDCWD, from, AT_FDCWD, to);
}

namespace {

// A host function with a file to trace to.
struct TraceOutput : testing::Test {
    TraceFile file;
    HostFunction host{"hostfile", "HOST_Function"};

    void SetUp() override { ASSERT_EQ(TRC1_Configure("all", file.name().c_str()), 0); }

    void printed(const char *text) { TRC1_Printf(&host.block, 7, "%s", text); }

    std::vector<std::string> texts()
    {
        std::vector<std::string> found;
        for (const TraceLine &line : file.lines()) {
            found.push_back(line.text);
        }
        return found;
    }
};

} // namespace

TEST_F(TraceOutput, NamesTimeProcessThreadFileLineAndFunction)
{
    timespec before = {}; // time() may lag behind this clock
    clock_gettime(CLOCK_REALTIME, &before);
    int thread = 0;
    std::thread([&] {
        thread = gettid();
        TRC1_Printf(&host.block, 4711, "text %d of <%s>\n", 1, "many");
    }).join();
    timespec after = {};
    clock_gettime(CLOCK_REALTIME, &after);

    const std::vector<TraceLine> lines = file.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].process, getpid());
    EXPECT_EQ(lines[0].thread, thread);
    EXPECT_EQ(lines[0].file, "hostfile");
    EXPECT_EQ(lines[0].line, 4711);
    EXPECT_EQ(lines[0].function, "HOST_Function");
    EXPECT_EQ(lines[0].text, "text 1 of <many>");
    tm utc = {};
    ASSERT_NE(strptime(lines[0].time.c_str(), "%Y-%m-%dT%H:%M:%S", &utc), nullptr);
    const time_t stamped = timegm(&utc);
    EXPECT_GE(stamped, before.tv_sec);
    EXPECT_LE(stamped, after.tv_sec);
}

TEST_F(TraceOutput, StampsTheCalendarDateInUniversalTime)
{
    std::mt19937 random(1);
    std::vector<time_t> times = {1,         68169599,  68169600,   951782399, 951782400,
                                 951868799, 951868800, 1735689599, 2147483647};
    if (sizeof(time_t) > 4) {
        times.push_back(static_cast<time_t>(4107542399LL)); // the last second of February 2100
        times.push_back(static_cast<time_t>(4107542400LL));
    }
    for (int i = 0; i < 500; ++i) {
        times.push_back(static_cast<time_t>(random() & 0x7FFFFFFF));
    }
    for (const time_t seconds : times) {
        shownTime = {seconds, 123456789};
        printed("x");
        shownTime = {};
        tm utc = {};
        gmtime_r(&seconds, &utc);
        char expected[64];
        std::snprintf(expected, sizeof expected, "%04d-%02d-%02dT%02d:%02d:%02d.123456Z", utc.tm_year + 1900,
                      utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec);
        ASSERT_EQ(file.lines().back().time, expected);
    }
}

TEST_F(TraceOutput, ShowsEachControlCharacter)
{
    std::string bytes;
    std::string visible;
    for (int byte = 1; byte < 0x20; ++byte) {
        bytes += static_cast<char>(byte);
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
        visible += byte == '\t' ? "\t" : byte == '\n' ? "\\n" : byte == '\r' ? "\\r" : escaped;
    }
    printed((bytes + "end").c_str());
    EXPECT_THAT(texts(), ElementsAre(visible + "end"));
}

TEST_F(TraceOutput, EndsEachMessageWithOneLineEnd)
{
    printed("with\n");
    printed("without");
    printed("");
    printed("\n");
    printed("two\n\n");
    EXPECT_THAT(texts(), ElementsAre("with", "without", "", "", "two\\n"));
    EXPECT_EQ(file.contents().back(), '\n');
}

TEST_F(TraceOutput, KeepsAMessageWithControlCharactersOnOneLine)
{
    printed("a\r\nb\tc\x01\x1B[0m\x7F\xC3\xA4\n");
    EXPECT_THAT(texts(), ElementsAre("a\\r\\nb\tc\\x01\\x1B[0m\\x7F\xC3\xA4"));
}

TEST_F(TraceOutput, WritesMessagesOfAnyLength)
{
    for (const size_t length :
         {400UL, 511UL, 512UL, 513UL, 900UL, 1000UL, 1023UL, 1024UL, 5000UL, 1000000UL}) {
        const std::string text(length, 'x');
        printed(text.c_str());
        EXPECT_EQ(texts().back(), text);
    }
    printed(std::string(100000, '\x01').c_str());
    EXPECT_EQ(texts().back().size(), 400000U);
}

TEST_F(TraceOutput, WritesEvents)
{
    TRC1_Event(&host.block, 1, TRC1_EVENT_ENTRY);
    TRC1_Event(&host.block, 2, TRC1_EVENT_EXIT);
    TRC1_Event(&host.block, 3, TRC1_EVENT_EXIT_VALUE, intptr_t{0});
    TRC1_Event(&host.block, 4, TRC1_EVENT_EXIT_VALUE, intptr_t{-1});
    TRC1_Event(&host.block, 5, TRC1_EVENT_EXIT_VALUE, intptr_t{INT32_MAX});
    TRC1_Event(&host.block, 6, TRC1_EVENT_EXIT_VALUE, intptr_t{INT32_MIN});
    EXPECT_THAT(texts(),
                ElementsAre("entry", "exit", "exit 0", "exit -1", "exit 2147483647", "exit -2147483648"));
    std::vector<int> numbers;
    for (const TraceLine &line : file.lines()) {
        numbers.push_back(line.line);
    }
    EXPECT_THAT(numbers, ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(TraceOutput, WritesReturnedPointersInHexadecimal)
{
    if (sizeof(void *) < 8) {
        TRC1_Event(&host.block, 1, TRC1_EVENT_EXIT_VALUE, intptr_t{INT32_MAX});
        EXPECT_THAT(texts(), ElementsAre("exit 2147483647"));
        return;
    }
    TRC1_Event(&host.block, 1, TRC1_EVENT_EXIT_VALUE, static_cast<intptr_t>(0x7F1234567890LL));
    EXPECT_THAT(texts(), ElementsAre("exit 0x7f1234567890"));
}

TEST_F(TraceOutput, DumpsSixteenBytesALine)
{
    unsigned char bytes[35];
    for (size_t i = 0; i < sizeof bytes; ++i) {
        bytes[i] = static_cast<unsigned char>(0xF0 + i);
    }
    TRC1_Dump(&host.block, 9, bytes, 35, "%02.2X");
    EXPECT_THAT(texts(),
                ElementsAre("0000: F0 F1 F2 F3 F4 F5 F6 F7 F8 F9 FA FB FC FD FE FF",
                            "0010: 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F", "0020: 10 11 12"));
}

TEST_F(TraceOutput, DumpsWholeLinesOnlyOnce)
{
    TRC1_Dump(&host.block, 9, "0123456789abcdef", 16, "%02.2X");
    EXPECT_THAT(texts(), ElementsAre("0000: 30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66"));
}

TEST_F(TraceOutput, DumpsWithTheItemFormatAndNoControlCharacters)
{
    TRC1_Dump(&host.block, 9, "a\nb\0", 4, "%c");
    TRC1_Dump(&host.block, 9, " \x1F\x7F~", 4, "%c"); // a blank is none
    EXPECT_THAT(texts(), ElementsAre("0000: a . b ", "0000:   . . ~"));
}

TEST_F(TraceOutput, DumpsNothingInOneLine)
{
    TRC1_Dump(&host.block, 9, "a", 0, "%02.2X");
    TRC1_Dump(&host.block, 9, "a", -1, "%02.2X");
    TRC1_Dump(&host.block, 9, nullptr, 5, "%02.2X");
    EXPECT_THAT(texts(), ElementsAre("nothing to dump", "nothing to dump", "nothing to dump"));
}

TEST_F(TraceOutput, DumpsLargeAreasWhole)
{
    const std::vector<unsigned char> bytes(200003, 0xAB);
    TRC1_Dump(&host.block, 9, bytes.data(), 200003, "%02.2X");
    const std::vector<std::string> found = texts();
    ASSERT_EQ(found.size(), 12501U);
    EXPECT_EQ(found[12500], "30D40: AB AB AB");
}

TEST_F(TraceOutput, DumpsAnyAreaInOneWrite)
{
    const std::string area(600000, 'd');
    writes = 0;
    TRC1_Dump(&host.block, 7, area.data(), static_cast<int32_t>(area.size()), "%02.2X");
    EXPECT_EQ(writes, 1);
    EXPECT_EQ(file.lines().size(), area.size() / 16);
}

TEST_F(TraceOutput, PutsOffACancellationUntilItIsDone)
{
    std::atomic<bool> isTracing{false};
    std::thread tracing([&] {
        for (;;) {
            isTracing = true;
            TRC1_Printf(&host.block, 7, "on and on\n");
            pthread_testcancel();
        }
    });
    while (!isTracing) {
        std::this_thread::yield();
    }
    pthread_cancel(tracing.native_handle());
    tracing.join();
    printed("after it");
    const std::vector<std::string> lines = texts();
    EXPECT_EQ(lines.back(), "after it");
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "on and on"), static_cast<long>(lines.size()) - 1);
}

TEST_F(TraceOutput, GivesUpOnAFullDevice)
{
    writtenInstead = 0;
    printed("nobody takes it");
    writtenInstead = -1;
    printed("next");
    EXPECT_EQ(texts(), std::vector<std::string>{"next"});
}

TEST_F(TraceOutput, KeepsTheLinesOfADumpTogether)
{
    const std::vector<unsigned char> bytes(160, 1);
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 50; ++i) {
                if (t % 2 == 0) {
                    TRC1_Dump(&host.block, 9, bytes.data(), 160, "%02.2X");
                } else {
                    TRC1_Printf(&host.block, 8, "between\n");
                }
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    const std::vector<TraceLine> lines = file.lines();
    ASSERT_EQ(lines.size(), 4U * 50 * 10 + 4U * 50);
    for (size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].text != "between") {
            for (size_t part = 0; part < 10; ++part, ++i) {
                ASSERT_EQ(lines[i].text.substr(0, 4), "00" + std::to_string(part) + "0") << "line " << i;
                ASSERT_EQ(lines[i].thread, lines[i - part].thread);
            }
            --i;
        }
    }
}

TEST_F(TraceOutput, LeavesErrnoAlone)
{
    expectErrnoKept(host.block);
    TRC1_Sync(&host.block);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(TRC1_Configure("error", "/nonexistent/folder/file"), -1);
    EXPECT_EQ(errno, EPERM);
}

TEST_F(TraceOutput, LeavesErrnoAloneWhenTheDeviceIsFull)
{
    ASSERT_EQ(TRC1_Configure("all", "/dev/full"), 0);
    expectErrnoKept(host.block);
}

// A descriptor that may not block is what a host's terminal or pipe can be.
TEST_F(TraceOutput, WaitsForAReaderThatIsSlow)
{
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    const int standardError = dup(STDERR_FILENO);
    ASSERT_EQ(TRC1_Configure("all", nullptr), 0);
    ASSERT_EQ(dup2(ends[1], STDERR_FILENO), STDERR_FILENO);
    const std::string text(1U << 20, 'w'); // more than a pipe holds
    std::string read;
    std::thread reader([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        fcntl(ends[0], F_SETFL, 0);
        char piece[65536];
        for (ssize_t count = 1; count > 0 && (read.empty() || read.back() != '\n');) {
            count = ::read(ends[0], piece, sizeof piece);
            read.append(piece, static_cast<size_t>(std::max<ssize_t>(count, 0)));
        }
    });
    printed(text.c_str());
    dup2(standardError, STDERR_FILENO);
    close(standardError);
    close(ends[1]); // lets a reader go that waits for what was given up
    reader.join();
    close(ends[0]);
    const std::vector<TraceLine> lines = TraceFile::linesOf(read);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].text, text);
}

TEST_F(TraceOutput, LetsWritesWaitWhateverTheDescriptor)
{
    close(STDIN_FILENO); // which the file then gets
    ASSERT_EQ(TRC1_Configure("all", file.name().c_str()), 0);
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFL) & (O_NONBLOCK | O_APPEND), O_APPEND);
    printed("x");
    EXPECT_THAT(texts(), ElementsAre("x"));
}

TEST_F(TraceOutput, AppendsAndDoesNotReachAnotherProgram)
{
    printed("first");
    ASSERT_EQ(TRC1_Configure("all", file.name().c_str()), 0);
    printed("second");
    EXPECT_THAT(texts(), ElementsAre("first", "second"));
    for (int descriptor = 3; descriptor < 64; ++descriptor) {
        struct stat open = {};
        struct stat named = {};
        if (fstat(descriptor, &open) == 0 && stat(file.name().c_str(), &named) == 0 &&
            open.st_ino == named.st_ino) {
            EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
            EXPECT_NE(fcntl(descriptor, F_GETFL) & O_APPEND, 0);
        }
    }
}

TEST_F(TraceOutput, ChangesNothingWhenRefused)
{
    EXPECT_EQ(TRC1_Configure("flaw", "/tmp/never-opened"), -1);
    EXPECT_EQ(TRC1_Configure("flow", "/nonexistent/folder/file"), -1);
    EXPECT_EQ(TRC1_Configure("flow", file.directory().c_str()), -1) << "a folder";
    EXPECT_EQ(TRC1_Sync(&host.block), 0x1DFU);
    printed("still here");
    EXPECT_THAT(
        texts(),
        ElementsAre(
            "*****Error: malformed trace levels <flaw>. Nothing is changed",
            "*****Error: trace file </nonexistent/folder/file> cannot be opened, errno 2. Nothing is changed",
            "*****Error: trace file <" + file.directory().string() +
                "> cannot be opened, errno 21. Nothing is changed",
            "still here"));
    EXPECT_NE(access("/tmp/never-opened", F_OK), 0);
}

TEST_F(TraceOutput, GoesToStandardErrorWithoutAFile)
{
    ASSERT_EQ(TRC1_Configure("all", nullptr), 0);
    testing::internal::CaptureStderr();
    printed("to the terminal");
    ASSERT_EQ(TRC1_Configure("all", ""), 0);
    printed("still");
    const std::vector<TraceLine> lines = TraceFile::linesOf(testing::internal::GetCapturedStderr());
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].text, "to the terminal");
    EXPECT_EQ(lines[1].text, "still");
    EXPECT_EQ(file.contents(), "");
}

TEST_F(TraceOutput, SurvivesAForkInTheMiddleOfTracing)
{
    std::atomic<bool> stop = false;
    std::thread tracer([&] {
        while (!stop) {
            printed("parent");
        }
    });
    for (int i = 0; i < 50; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            printed("child");
            _exit(0);
        }
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0);
    }
    stop = true;
    tracer.join();
    int children = 0;
    for (const TraceLine &line : file.lines()) {
        children += line.text == "child" ? 1 : 0;
        EXPECT_EQ(line.process == getpid(), line.text == "parent");
    }
    EXPECT_EQ(children, 50);
}

TEST(TraceEnvironment, NamesTheFile)
{
    const TraceFile file;
    file.nameInEnvironment();
    setenv("DOV_TRACE", "DOV0_IsValidPointer=state", 1);
    int object = 0;
    EXPECT_EQ(DOV0_IsValidPointer(&object), 1);
    EXPECT_EQ(DOV0_IsValidBlockPointer(&object), 1);
    const std::vector<TraceLine> lines = file.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].file, "dov0ivpt");
    EXPECT_EQ(lines[0].function, "DOV0_IsValidPointer");
    EXPECT_THAT(lines[0].text, testing::MatchesRegex("Input pointer @0x[0-9a-f]+ is valid"));
}

TEST(TraceEnvironment, LeavesNoFileAndSaysNothingWhereNothingIsTraced)
{
    const TraceFile file;
    file.nameInEnvironment();
    setenv("DOV_TRACE_LIMIT", "many", 1);
    HostFunction host("hostfile", "HOST_Function");
    testing::internal::CaptureStderr();
    EXPECT_EQ(TRC1_Sync(&host.block), 0U);
    DOV0_FreeStorage(nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(std::filesystem::exists(file.name()));
    TRC1_Printf(&host.block, 1, "a message all the same\n");
    EXPECT_EQ(file.texts(),
              (std::vector<std::string>{
                  "TRC1_Configure *****Error: DOV_TRACE_LIMIT <many> is not a number of megabytes. Ignored",
                  "HOST_Function a message all the same"}));
}

TEST(TraceEnvironment, OpensTheFileAtOnceWhereSomethingMayBeTraced)
{
    const TraceFile file;
    file.nameInEnvironment();
    setenv("DOV_TRACE", "2", 1);
    DOV0_FreeStorage(nullptr);
    EXPECT_TRUE(std::filesystem::exists(file.name()));
    EXPECT_EQ(file.contents(), "");
}

TEST(TraceEnvironment, KeepsTheBoundWhenTheHostNamesTheFile)
{
    const TraceFile file;
    const TraceFile unused;
    unused.nameInEnvironment();
    setenv("DOV_TRACE_LIMIT", "1", 1);
    HostFunction host("hostfile", "HOST_Function");
    ASSERT_EQ(TRC1_Configure("all", file.name().c_str()), 0);
    TRC1_Printf(&host.block, 1, "first\n");
    ASSERT_EQ(truncate(file.name().c_str(), 1024 * 1024), 0);
    TRC1_Printf(&host.block, 2, "second\n");
    EXPECT_EQ(file.lines().at(0).text, "second");
    EXPECT_FALSE(std::filesystem::exists(unused.name()));
}

TEST(TraceEnvironment, FallsBackToStandardErrorWhenTheFileCannotBeOpened)
{
    setenv("DOV_TRACE_FILE", "/nonexistent/folder/file", 1);
    setenv("DOV_TRACE", "error", 1);
    testing::internal::CaptureStderr();
    DOV0_GetStorage(0);
    const std::vector<TraceLine> lines = TraceFile::linesOf(testing::internal::GetCapturedStderr());
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].text, "*****Error: DOV_TRACE_FILE </nonexistent/folder/file> cannot be opened, errno "
                             "2. Standard error is used");
    EXPECT_EQ(lines[1].text, "*****Invalid get storage size 0");
}

TEST(TraceEnvironment, DoesNotWaitForTheReaderOfAPipe)
{
    const TraceFile file;
    ASSERT_EQ(mkfifo(file.name().c_str(), 0600), 0);
    EXPECT_EQ(TRC1_Configure("error", file.name().c_str()), -1);
}

TEST(TraceEnvironment, BoundsTheFile)
{
    const TraceFile file;
    file.nameInEnvironment();
    setenv("DOV_TRACE_LIMIT", "1", 1);
    HostFunction host("hostfile", "HOST_Function");
    const std::string text(1000, 'y');
    for (int i = 0; i < 2500; ++i) {
        TRC1_Printf(&host.block, i, "%s", text.c_str());
    }
    const std::string older = TraceFile::contents(file.name() + ".1");
    const std::string newer = file.contents();
    EXPECT_LE(older.size(), 1024U * 1024);
    EXPECT_GT(older.size(), 1024U * 1024 - 2 * 1100)
        << "renamed only when the next message would pass the bound";
    EXPECT_LE(newer.size(), 1024U * 1024);
    const std::vector<TraceLine> olderLines = TraceFile::linesOf(older);
    const std::vector<TraceLine> newerLines = TraceFile::linesOf(newer);
    EXPECT_EQ(newerLines.back().line, 2499);
    EXPECT_EQ(newerLines.front().line, olderLines.back().line + 1) << "no message is lost at the change";
}

TEST(TraceEnvironment, RenamesAFileOfTheLongestNameThatHasRoomForTheSuffix)
{
    const TraceFile file;
    std::string name = file.directory().string() + "/";
    while (name.size() < PATH_MAX - 1 - std::strlen("trace.log.1")) {
        name += (PATH_MAX - 1 - std::strlen("trace.log.1") - name.size()) % 2 != 0 ? "/" : "./";
    }
    name += "trace.log";
    ASSERT_EQ(name.size() + 2, PATH_MAX - 1U);
    setenv("DOV_TRACE_FILE", name.c_str(), 1);
    setenv("DOV_TRACE_LIMIT", "1", 1);
    HostFunction host("hostfile", "HOST_Function");
    TRC1_Printf(&host.block, 1, "first\n");
    ASSERT_EQ(truncate(file.name().c_str(), 1024 * 1024), 0);
    TRC1_Printf(&host.block, 2, "second\n");
    EXPECT_EQ(file.texts(), std::vector<std::string>{"HOST_Function second"});
    EXPECT_TRUE(std::filesystem::exists(file.name() + ".1"));
}

TEST(TraceEnvironment, AppendsToAFileBeyondTwoGigabytes)
{
    constexpr off_t Size = off_t{3} << 30;
    const TraceFile file;
    file.nameInEnvironment();
    ASSERT_EQ(close(open(file.name().c_str(), O_CREAT | O_WRONLY, 0600)), 0);
    ASSERT_EQ(truncate(file.name().c_str(), Size), 0);
    HostFunction host("hostfile", "HOST_Function");
    TRC1_Printf(&host.block, 1, "behind\n");
    std::ifstream stream(file.name(), std::ios::binary);
    stream.seekg(Size);
    std::string line;
    std::getline(stream, line);
    EXPECT_EQ(TraceFile::linesOf(line).at(0).text, "behind");
}

TEST(TraceEnvironment, BoundsAFileThatIsBeyondTwoGigabytes)
{
    constexpr off_t Size = off_t{3} << 30;
    const TraceFile file;
    file.nameInEnvironment();
    setenv("DOV_TRACE_LIMIT", "1", 1);
    ASSERT_EQ(close(open(file.name().c_str(), O_CREAT | O_WRONLY, 0600)), 0);
    ASSERT_EQ(truncate(file.name().c_str(), Size), 0);
    HostFunction host("hostfile", "HOST_Function");
    TRC1_Printf(&host.block, 1, "anew\n");
    EXPECT_EQ(file.lines().at(0).text, "anew");
    struct stat renamed = {};
    EXPECT_EQ(stat((file.name() + ".1").c_str(), &renamed), 0);
    EXPECT_EQ(renamed.st_size, Size);
}

TEST(TraceEnvironment, RenamesAFullFileUnderItsLock)
{
    const TraceFile file;
    file.nameInEnvironment();
    setenv("DOV_TRACE_LIMIT", "1", 1);
    HostFunction host("hostfile", "HOST_Function");
    TRC1_Printf(&host.block, 1, "first\n");
    ASSERT_EQ(truncate(file.name().c_str(), 1024 * 1024), 0);
    std::vector<std::string> steps;
    fileSteps = &steps;
    TRC1_Printf(&host.block, 2, "second\n");
    TRC1_Printf(&host.block, 3, "third\n");
    fileSteps = nullptr;
    EXPECT_THAT(steps, ElementsAre("lock", "rename", "unlock"));
}

TEST(TraceEnvironment, KeepsAMessageThatIsLongerThanTheBound)
{
    const TraceFile file;
    file.nameInEnvironment();
    setenv("DOV_TRACE_LIMIT", "1", 1);
    HostFunction host("hostfile", "HOST_Function");
    const std::string text(1500000, 'z');
    TRC1_Printf(&host.block, 1, "small\n");
    TRC1_Printf(&host.block, 2, "%s", text.c_str());
    TRC1_Printf(&host.block, 3, "small again\n");
    EXPECT_EQ(TraceFile::linesOf(TraceFile::contents(file.name() + ".1")).at(0).text, text);
    EXPECT_EQ(file.lines().at(0).text, "small again");
}

TEST(TraceEnvironment, LetsSeveralProcessesShareABoundedFile)
{
    const TraceFile file;
    file.nameInEnvironment();
    setenv("DOV_TRACE_LIMIT", "1", 1);
    std::vector<pid_t> children;
    for (int c = 0; c < 4; ++c) {
        const pid_t child = fork();
        if (child == 0) {
            HostFunction host("hostfile", "HOST_Function");
            const std::string text(1000, static_cast<char>('a' + c));
            for (int i = 0; i < 450; ++i) {
                TRC1_Printf(&host.block, i, "%s", text.c_str());
            }
            _exit(0);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0);
    }
    // 1,800 messages of about 1,060 bytes: one change of file, nothing lost, nothing torn.
    const size_t older = TraceFile::linesOf(TraceFile::contents(file.name() + ".1")).size();
    EXPECT_EQ(older + file.lines().size(), 1800U);
}

TEST(TraceEnvironment, TakesTheLargestBoundThatCountsInBytes)
{
    const TraceFile file;
    file.nameInEnvironment();
    setenv("DOV_TRACE_LIMIT", "17592186044415", 1);
    setenv("DOV_TRACE", "error", 1);
    DOV0_GetStorage(0);
    DOV0_GetStorage(0);
    EXPECT_EQ(file.lines().size(), 2U);
    EXPECT_FALSE(std::filesystem::exists(file.name() + ".1"));
}

TEST(TraceEnvironment, ReportsABoundThatIsNoNumber)
{
    for (const char *limit :
         {"0", "-1", "1.5", "1M", "17592186044416", "175921860444150", "99999999999999999999"}) {
        const pid_t child = fork(); // the environment is read once in a process
        if (child == 0) {
            const TraceFile file;
            file.nameInEnvironment();
            setenv("DOV_TRACE_LIMIT", limit, 1);
            setenv("DOV_TRACE", "none", 1);
            HostFunction host("hostfile", "HOST_Function");
            TRC1_Sync(&host.block);
            const bool reported =
                file.texts() ==
                std::vector<std::string>{std::string("TRC1_Configure *****Error: DOV_TRACE_LIMIT <") + limit +
                                         "> is not a number of megabytes. Ignored"};
            std::filesystem::remove_all(file.directory());
            _exit(reported ? 0 : 1);
        }
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << limit;
    }
}
