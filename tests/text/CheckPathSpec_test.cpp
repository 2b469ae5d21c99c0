#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

namespace {

constexpr char Function[] = "DOV0_CheckPathSpec";

} // namespace

TEST(CheckPathSpec, AppendsASeparator)
{
    const std::vector<std::pair<std::string, std::string>> cases = {{"/var/agent", "/var/agent/"},
                                                                    {"/var/agent/", "/var/agent//"},
                                                                    {"/", "//"},
                                                                    {"", "/"},
                                                                    {"dir  ", "dir  /"}};
    for (const auto &[pathSpec, expected] : cases) {
        GuardedBuffer buffer(pathSpec);
        char *path = DOV0_CheckPathSpec(buffer.text());
        EXPECT_EQ(path, expected);
        EXPECT_EQ(buffer.text(), pathSpec);
        DOV0_FreeStorage(&path);
    }
}

TEST(CheckPathSpec, TakesPathsOfAnyLength)
{
    for (const size_t length : {510U, 511U, 512U, 100000U}) {
        GuardedBuffer buffer(std::string(length, 'p'));
        char *path = DOV0_CheckPathSpec(buffer.text());
        EXPECT_EQ(path, std::string(length, 'p') + '/');
        DOV0_FreeStorage(&path);
    }
}

TEST(CheckPathSpec, TracesItsStepsAndTheBlockOfTheLengthPlusTwo)
{
    char *path = nullptr;
    const TraceLog log = traceAt(Trace::Flow | Trace::Detail | Trace::Storage | Trace::Error,
                                 [&] { path = DOV0_CheckPathSpec("/tmp"); });
    const void *address = path;
    EXPECT_EQ(log,
              (TraceLog{entry(Function), message(Function, "Input path spec ->{%s}\n", "/tmp"),
                        entry("DOV0_GetStorage"),
                        message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n", address, 6),
                        leave("DOV0_GetStorage", address),
                        message(Function, "Allocated path buffer @%p for length %d\n", address, 6),
                        leave(Function, address)}));
    DOV0_FreeStorage(&path);
}

TEST(CheckPathSpec, TracesItsMessagesUnderTheirBitsOnly)
{
    EXPECT_EQ(bitsThatShow(message(Function, "Input path spec ->{/tmp}\n"),
                           [] {
                               char *path = DOV0_CheckPathSpec("/tmp");
                               DOV0_FreeStorage(&path);
                           }),
              Trace::Detail);
    for (uint32_t bit = 1; bit <= 0x8000; bit <<= 1) {
        char *path = nullptr;
        const TraceLog log = traceOf(Function, bit, [&] { path = DOV0_CheckPathSpec("/tmp"); });
        const void *address = path;
        const std::string text = message(Function, "Allocated path buffer @%p for length %d\n", address, 6);
        EXPECT_EQ(std::count(log.begin(), log.end(), text), bit == Trace::Storage ? 1 : 0) << bit;
        DOV0_FreeStorage(&path);
    }
}

TEST(CheckPathSpec, GivesNullForNullWithoutAMessageOrAnExitValue)
{
    const char *path = Function;
    EXPECT_EQ(traceAt(Trace::All, [&] { path = DOV0_CheckPathSpec(nullptr); }),
              (TraceLog{entry(Function), leave(Function)}));
    EXPECT_EQ(path, nullptr);
}

TEST(CheckPathSpec, ReportsAnExhaustedHeap)
{
    const std::string text = message(
        Function, "****Error: unable to allocate path buffer storage for path specification {%s}\n", "/tmp");
    const char *path = Function;
    const TraceLog log = traceAt(Trace::Flow | Trace::Detail | Trace::Storage | Trace::Error,
                                 [&] { withoutHeap([&] { path = DOV0_CheckPathSpec("/tmp"); }); });
    EXPECT_EQ(path, nullptr);
    EXPECT_EQ(log, (TraceLog{entry(Function), message(Function, "Input path spec ->{%s}\n", "/tmp"),
                             entry("DOV0_GetStorage"),
                             message("DOV0_GetStorage", "*****Unable to obtain storage, size %d\n", 6),
                             leave("DOV0_GetStorage", nullptr), text, leave(Function, nullptr)}));
    EXPECT_EQ(bitsThatShow(text, [] { withoutHeap([] { DOV0_CheckPathSpec("/tmp"); }); }), Trace::Error);
}
