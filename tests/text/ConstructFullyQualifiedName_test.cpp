#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <cstdlib>
#include <thread>

namespace {

constexpr char Function[] = "DOV0_ConstructFullyQualifiedName";
constexpr char Variable[] = "DOV_WORK_PATH";

std::string pathName(const char *pathSpec, const std::string &nameSpec)
{
    GuardedBuffer name(nameSpec);
    char *result = DOV0_ConstructFullyQualifiedName(pathSpec, name.text());
    if (result == nullptr) {
        return "(null)";
    }
    std::string text = result;
    DOV0_FreeStorage(&result);
    return text;
}

// The messages and events of the function alone, and the result.
struct Outcome {
    std::string result;
    TraceLog log;
};

Outcome outcomeOf(uint32_t level, const char *pathSpec, const std::string &nameSpec)
{
    Outcome outcome;
    outcome.log = traceOf(Function, level, [&] { outcome.result = pathName(pathSpec, nameSpec); });
    return outcome;
}

std::string warning(size_t copied, const std::string &name, const std::string &path)
{
    return message(Function, "Warning: only copied %d bytes of <%s> to pathname <%s>\n",
                   static_cast<int>(copied), name.c_str(), path.c_str());
}

} // namespace

TEST(ConstructFullyQualifiedName, UsesTheDefaultDirectory)
{
    unsetenv(Variable);
    EXPECT_EQ(pathName(nullptr, "x.dat"), "./work/x.dat");
    EXPECT_EQ(pathName(nullptr, ""), "./work/");
}

TEST(ConstructFullyQualifiedName, UsesTheWorkDirectoryOfTheEnvironment)
{
    setenv(Variable, "/var/agent", 1);
    EXPECT_EQ(pathName(nullptr, "x.dat"), "/var/agent/x.dat");
}

TEST(ConstructFullyQualifiedName, DoublesTheSeparatorOfTheEnvironment)
{
    setenv(Variable, "/var/agent/", 1);
    EXPECT_EQ(pathName(nullptr, "x.dat"), "/var/agent//x.dat");
}

TEST(ConstructFullyQualifiedName, TakesAnEmptyVariableForAnUnsetOne)
{
    setenv(Variable, "", 1);
    EXPECT_EQ(pathName(nullptr, "x.dat"), "./work/x.dat");
}

TEST(ConstructFullyQualifiedName, UsesTheLocalEnvironment)
{
    unsetenv(Variable);
    DOV0_PutEnv("DOV_WORK_PATH=/local");
    EXPECT_EQ(pathName(nullptr, "x.dat"), "/local/x.dat");
}

TEST(ConstructFullyQualifiedName, SettlesTheWorkDirectoryOnce)
{
    setenv(Variable, "/first", 1);
    EXPECT_EQ(pathName(nullptr, "x"), "/first/x");
    setenv(Variable, "/second", 1);
    EXPECT_EQ(pathName(nullptr, "x"), "/first/x");
    unsetenv(Variable);
    EXPECT_EQ(pathName(nullptr, "x"), "/first/x");
    EXPECT_EQ(traceAt(Trace::Flow, [] { pathName(nullptr, "x"); }).size(),
              6U); // no look-up: itself, storage twice
}

TEST(ConstructFullyQualifiedName, SettlesTheDefaultDirectoryOnceToo)
{
    unsetenv(Variable);
    EXPECT_EQ(pathName(nullptr, "x"), "./work/x");
    setenv(Variable, "/late", 1);
    EXPECT_EQ(pathName(nullptr, "x"), "./work/x");
}

TEST(ConstructFullyQualifiedName, SettlesTheWorkDirectoryAlsoInACallWithADirectory)
{
    setenv(Variable, "/first", 1);
    EXPECT_EQ(pathName("/tmp/", "x"), "/tmp/x");
    setenv(Variable, "/second", 1);
    EXPECT_EQ(pathName(nullptr, "x"), "/first/x");
}

TEST(ConstructFullyQualifiedName, PutsNoSeparatorBehindTheCallersDirectory)
{
    EXPECT_EQ(pathName("/tmp", "x.dat"), "/tmpx.dat");
    EXPECT_EQ(pathName("/tmp/", "x.dat"), "/tmp/x.dat");
    EXPECT_EQ(pathName("", "x.dat"), "x.dat");
    EXPECT_EQ(pathName("/tmp/", ""), "/tmp/");
    EXPECT_EQ(pathName("", ""), "");
}

TEST(ConstructFullyQualifiedName, GivesABlockOf512Bytes)
{
    char *name = DOV0_ConstructFullyQualifiedName("/tmp/", "x");
    const std::string text = "/tmp/x";
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(std::string(name, 512), text + std::string(512 - text.size(), '\0'));
    DOV0_FreeStorage(&name);
}

TEST(ConstructFullyQualifiedName, BoundsThePathName)
{
    unsetenv(Variable);
    pathName(nullptr, "");
    for (const size_t pathLength : {0U, 1U, 300U, 510U, 511U, 512U, 513U, 100000U}) {
        for (const size_t nameLength : {0U, 1U, 211U, 212U, 300U, 510U, 511U, 512U, 100000U}) {
            const std::string path(pathLength, 'p');
            const std::string name(nameLength, 'n');
            const std::string expected = (path + name).substr(0, 511);
            const Outcome outcome = outcomeOf(Trace::Error, path.c_str(), name);
            EXPECT_EQ(outcome.result, expected) << pathLength << " + " << nameLength;
            const size_t copied = pathLength < 511 ? 511 - pathLength : 0;
            EXPECT_EQ(outcome.log,
                      pathLength + nameLength >= 512 ? TraceLog{warning(copied, name, expected)} : TraceLog{})
                << pathLength << " + " << nameLength;
        }
    }
}

TEST(ConstructFullyQualifiedName, BoundsThePathNameInTheWorkDirectory)
{
    unsetenv(Variable);
    for (const size_t nameLength : {503U, 504U, 505U, 512U, 100000U}) {
        const std::string name(nameLength, 'n');
        const std::string expected = ("./work/" + name).substr(0, 511);
        const Outcome outcome = outcomeOf(Trace::Error, nullptr, name);
        EXPECT_EQ(outcome.result, expected);
        EXPECT_EQ(outcome.log, nameLength > 504 ? TraceLog{warning(504, name, expected)} : TraceLog{})
            << nameLength;
    }
}

TEST(ConstructFullyQualifiedName, BoundsAWorkDirectoryOf509Characters)
{
    setenv(Variable, std::string(509, 'd').c_str(), 1);
    const std::string directory = std::string(509, 'd') + '/';
    EXPECT_EQ(outcomeOf(Trace::Error, nullptr, "x").result, directory + 'x');
    const Outcome outcome = outcomeOf(Trace::Error, nullptr, "xy");
    EXPECT_EQ(outcome.result, directory + 'x');
    EXPECT_EQ(outcome.log, (TraceLog{warning(1, "xy", directory + 'x')}));
}

TEST(ConstructFullyQualifiedName, BoundsAWorkDirectoryOf511Characters)
{
    setenv(Variable, std::string(511, 'd').c_str(), 1);
    const Outcome outcome = outcomeOf(Trace::Error, nullptr, "x");
    EXPECT_EQ(outcome.result, std::string(511, 'd'));
    EXPECT_EQ(outcome.log, (TraceLog{warning(0, "x", std::string(511, 'd'))}));
}

TEST(ConstructFullyQualifiedName, BoundsAWorkDirectoryOf100000Characters)
{
    setenv(Variable, std::string(100000, 'd').c_str(), 1);
    for (int call = 0; call < 2; ++call) {
        const Outcome outcome = outcomeOf(Trace::Error, nullptr, "x");
        EXPECT_EQ(outcome.result, std::string(511, 'd'));
        EXPECT_EQ(outcome.log, (TraceLog{warning(0, "x", std::string(511, 'd'))}));
    }
    EXPECT_EQ(outcomeOf(Trace::Error, "/tmp/", "x").result, "/tmp/x");
}

TEST(ConstructFullyQualifiedName, ReportsTheTruncationUnderTheErrorBitOnly)
{
    const std::string path(300, 'p');
    const std::string name(300, 'n');
    EXPECT_EQ(
        bitsThatShow(warning(211, name, path + std::string(211, 'n')), [&] { pathName(path.c_str(), name); }),
        Trace::Error);
}

TEST(ConstructFullyQualifiedName, TracesTheDefaultDirectoryAndTheName)
{
    unsetenv(Variable);
    char *result = nullptr;
    const auto call = [&] { result = DOV0_ConstructFullyQualifiedName(nullptr, "x.dat"); };
    TraceLog log = traceOf(Function, Trace::All, call);
    EXPECT_EQ(log, (TraceLog{entry(Function), message(Function, "Using WorkFilePath <%s>\n", "./work/"),
                             message(Function, "Input PathSpec NULL, NameSpec %s\n", "x.dat"),
                             leave(Function, static_cast<const void *>(result))}));
    DOV0_FreeStorage(&result);
    log = traceOf(Function, Trace::All, call);
    EXPECT_EQ(log,
              (TraceLog{entry(Function), message(Function, "Input PathSpec NULL, NameSpec %s\n", "x.dat"),
                        leave(Function, static_cast<const void *>(result))}));
    DOV0_FreeStorage(&result);
}

TEST(ConstructFullyQualifiedName, TracesTheServicesItUsesInTheirOrder)
{
    setenv(Variable, "/var/agent", 1);
    char *result = nullptr;
    const TraceLog log = traceAt(Trace::Flow | Trace::Detail | Trace::Storage | Trace::Error,
                                 [&] { result = DOV0_ConstructFullyQualifiedName("/tmp/", "x.dat"); });
    const void *address = result;
    // The directory's block is gone again; its address is in the exit event of the service that made it.
    const std::string exitOfService = from("DOV0_CheckPathSpec", log).back();
    const auto *block =
        reinterpret_cast<const void *>(std::stoll(exitOfService.substr(exitOfService.rfind(' '))));
    TraceLog withoutLookUp;
    for (const std::string &record : log) {
        if (record.find("DOV0_GetEnv: ") != 0) {
            withoutLookUp.push_back(record);
        }
    }
    const void *value = std::getenv(Variable);
    EXPECT_EQ(
        withoutLookUp,
        (TraceLog{
            entry(Function),
            entry("DOV0_GetEnv"),
            leave("DOV0_GetEnv", value),
            entry("DOV0_CheckPathSpec"),
            message("DOV0_CheckPathSpec", "Input path spec ->{%s}\n", "/var/agent"),
            entry("DOV0_GetStorage"),
            message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n", block, 12),
            leave("DOV0_GetStorage", block),
            message("DOV0_CheckPathSpec", "Allocated path buffer @%p for length %d\n", block, 12),
            leave("DOV0_CheckPathSpec", block),
            message(Function, "Comparing WorkFileNamePtr <%s> against <%s>\n", "/var/agent", "/var/agent/"),
            message(Function, "Freeing path buffer @%p", block),
            entry("DOV0_FreeStorage"),
            message("DOV0_FreeStorage", "Freeing storage at address @%p\n", block),
            leave("DOV0_FreeStorage"),
            entry("DOV0_GetStorage"),
            message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n", address, 512),
            leave("DOV0_GetStorage", address),
            message(Function, "Input PathSpec %s, NameSpec %s\n", "/tmp/", "x.dat"),
            leave(Function, address)}));
    DOV0_FreeStorage(&result);
}

TEST(ConstructFullyQualifiedName, TracesDecisionsUnderTheDetailBitOnly)
{
    setenv(Variable, "/var/agent", 1);
    EXPECT_EQ(traceOf(Function, Trace::All & ~(Trace::Detail | Trace::Storage | Trace::Flow),
                      [] { pathName(nullptr, "x"); }),
              TraceLog{});
    EXPECT_EQ(
        bitsThatShow(message(Function, "Input PathSpec NULL, NameSpec x\n"), [] { pathName(nullptr, "x"); }),
        Trace::Detail);
    EXPECT_EQ(
        bitsThatShow(message(Function, "Input PathSpec /tmp/, NameSpec x\n"), [] { pathName("/tmp/", "x"); }),
        Trace::Detail);
}

TEST(ConstructFullyQualifiedName, TracesTheComparisonUnderTheDetailBit)
{
    setenv(Variable, "/var/agent", 1);
    EXPECT_EQ(outcomeOf(Trace::Detail, "/tmp/", "x").log,
              (TraceLog{message(Function, "Comparing WorkFileNamePtr <%s> against <%s>\n", "/var/agent",
                                "/var/agent/"),
                        message(Function, "Input PathSpec %s, NameSpec %s\n", "/tmp/", "x")}));
}

TEST(ConstructFullyQualifiedName, TracesTheFreedBlockUnderTheStorageBit)
{
    setenv(Variable, "/var/agent", 1);
    const TraceLog log = outcomeOf(Trace::Storage, nullptr, "x").log;
    ASSERT_EQ(log.size(), 1U);
    EXPECT_EQ(log[0].find(message(Function, "Freeing path buffer @0x")), 0U) << log[0];
    EXPECT_NE(log[0].back(), '\n');
}

TEST(ConstructFullyQualifiedName, TracesTheDefaultDirectoryUnderTheDetailBitOnly)
{
    unsetenv(Variable);
    EXPECT_EQ(outcomeOf(Trace::All & ~(Trace::Detail | Trace::Flow), "/tmp/", "x").log, TraceLog{});
}

TEST(ConstructFullyQualifiedName, TriesAgainAfterTheWorkDirectoryFoundNoStorage)
{
    setenv(Variable, "/first", 1);
    const char *name = Function;
    const TraceLog log = traceOf(Function, Trace::Flow | Trace::Error, [&] {
        EXPECT_TRUE(withHeapFailure(1, [&] { name = DOV0_ConstructFullyQualifiedName(nullptr, "x"); }));
    });
    EXPECT_EQ(name, nullptr);
    EXPECT_EQ(log, (TraceLog{entry(Function),
                             message(Function,
                                     "****Error: unable to allocate path buffer storage for workfile {%s}\n",
                                     "/first"),
                             leave(Function, nullptr)}));
    setenv(Variable, "/second", 1);
    EXPECT_EQ(pathName(nullptr, "x"), "/second/x");
}

TEST(ConstructFullyQualifiedName, ReportsAMissingWorkDirectoryUnderTheErrorBitOnly)
{
    setenv(Variable, "/first", 1);
    EXPECT_EQ(
        bitsThatShow(
            message(Function, "****Error: unable to allocate path buffer storage for workfile {/first}\n"),
            [] { withoutHeap([] { DOV0_ConstructFullyQualifiedName(nullptr, "x"); }); }),
        Trace::Error);
}

TEST(ConstructFullyQualifiedName, ReportsAMissingBlock)
{
    setenv(Variable, "/first", 1);
    const std::string withoutPath = message(
        Function, "****Error: unable to allocate fully qualified pathname buffer for NameSpec <%s>\n", "x");
    const std::string withPath = message(
        Function,
        "****Error: unable to allocate fully qualified pathname buffer for PathSpec <%s>, NameSpec <%s>\n",
        "/tmp/", "x");
    char *name = nullptr;
    // The second block is the one for the name; the directory is settled by then.
    EXPECT_EQ(traceOf(Function, Trace::Flow | Trace::Error,
                      [&] {
                          EXPECT_TRUE(withHeapFailure(
                              2, [&] { name = DOV0_ConstructFullyQualifiedName(nullptr, "x"); }));
                      }),
              (TraceLog{entry(Function), withoutPath, leave(Function, nullptr)}));
    EXPECT_EQ(name, nullptr);
    setenv(Variable, "/second", 1);
    EXPECT_EQ(pathName(nullptr, "x"), "/first/x");

    EXPECT_EQ(traceOf(Function, Trace::All,
                      [&] { withoutHeap([&] { name = DOV0_ConstructFullyQualifiedName("/tmp/", "x"); }); }),
              (TraceLog{entry(Function), withPath, leave(Function, nullptr)}));
    EXPECT_EQ(name, nullptr);
    EXPECT_EQ(bitsThatShow(withoutPath,
                           [] { withoutHeap([] { DOV0_ConstructFullyQualifiedName(nullptr, "x"); }); }),
              Trace::Error);
    EXPECT_EQ(
        bitsThatShow(withPath, [] { withoutHeap([] { DOV0_ConstructFullyQualifiedName("/tmp/", "x"); }); }),
        Trace::Error);
}

TEST(ConstructFullyQualifiedName, AsksForTwoBlocksAtFirstAndForOneAfterwards)
{
    setenv(Variable, "/first", 1);
    char *name = nullptr;
    EXPECT_EQ(heapRequestsOf([&] { name = DOV0_ConstructFullyQualifiedName(nullptr, "x"); }), 2);
    DOV0_FreeStorage(&name);
    EXPECT_EQ(heapRequestsOf([&] { name = DOV0_ConstructFullyQualifiedName(nullptr, "x"); }), 1);
    DOV0_FreeStorage(&name);
}

TEST(ConstructFullyQualifiedName, RefusesANullName)
{
    const std::string text = message(Function, "***** Input NameSpec is NULL\n");
    for (const char *pathSpec : {static_cast<const char *>(nullptr), "/tmp/"}) {
        const char *name = Function;
        EXPECT_EQ(traceAt(Trace::All, [&] { name = DOV0_ConstructFullyQualifiedName(pathSpec, nullptr); }),
                  (TraceLog{entry(Function), text, leave(Function, nullptr)}));
        EXPECT_EQ(name, nullptr);
    }
    EXPECT_EQ(bitsThatShow(text, [] { DOV0_ConstructFullyQualifiedName(nullptr, nullptr); }), Trace::Error);
}

TEST(ConstructFullyQualifiedName, MayBeCalledByManyThreadsAtFirst)
{
    setenv(Variable, "/var/agent", 1);
    std::vector<std::thread> threads;
    std::vector<std::string> results(16);
    for (std::string &result : results) {
        threads.emplace_back([&result] {
            for (int call = 0; call < 50; ++call) {
                result = pathName(nullptr, "x.dat");
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(results, std::vector<std::string>(16, "/var/agent/x.dat"));
}
