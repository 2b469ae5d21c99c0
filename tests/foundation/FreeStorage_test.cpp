#include "support/trace_recorder.h"

#include <unistd.h>

namespace {

constexpr char Function[] = "DOV0_FreeStorage";

std::string report(double kilobytes, int visited)
{
    return message(Function, "After free, Total Working Storage Size %.2fK, WSB %d", kilobytes, visited);
}

// The reports of the accounting without the heap limit, which the test's own storage moves.
TraceLog reports(const TraceLog &log)
{
    TraceLog found;
    for (const std::string &line : from(Function, log)) {
        if (line.find("Total Working Storage") != std::string::npos) {
            found.push_back(line.substr(0, line.find(" heap limit")));
        }
    }
    return found;
}

} // namespace

TEST(FreeStorage, ClearsTheCallersPointer)
{
    char *text = static_cast<char *>(DOV0_GetStorage(10));
    ASSERT_NE(text, nullptr);
    DOV0_FreeStorage(&text);
    EXPECT_EQ(text, nullptr);
}

TEST(FreeStorage, TracesTheBlockUnderTheDetailBit)
{
    void *block = DOV0_GetStorage(10);
    void *const address = block;
    EXPECT_EQ(traceAt(Trace::Flow | Trace::Detail, [&] { DOV0_FreeStorage(&block); }),
              (TraceLog{entry(Function), message(Function, "Freeing storage at address @%p\n", address),
                        leave(Function)}));
    block = DOV0_GetStorage(10);
    EXPECT_EQ(traceAt(Trace::All & ~(Trace::Flow | Trace::Detail | Trace::State),
                      [&] { DOV0_FreeStorage(&block); }),
              TraceLog{});
}

TEST(FreeStorage, LeavesAVariableThatHoldsNullAlone)
{
    void *block = nullptr;
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_FreeStorage(&block); }),
              (TraceLog{entry(Function), leave(Function)}));
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_FreeStorage(nullptr); }),
              (TraceLog{entry(Function), leave(Function)}));
}

TEST(FreeStorage, DoesNothingTheSecondTime)
{
    void *block = DOV0_GetStorage(10);
    DOV0_FreeStorage(&block);
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_FreeStorage(&block); }),
              (TraceLog{entry(Function), leave(Function)}));
}

TEST(FreeStorage, SubtractsARecordedBlock)
{
    void *first = nullptr;
    void *second = nullptr;
    const TraceLog log = traceAt(Trace::State, [&] {
        first = DOV0_GetStorage(1024);
        second = DOV0_GetStorage(512);
        DOV0_FreeStorage(&first);
        DOV0_FreeStorage(&second);
    });
    EXPECT_EQ(reports(log), (TraceLog{report(0.50, 1), report(0.00, 2)}));
}

TEST(FreeStorage, ReportsTheProgramBreakAsHeapLimit)
{
    void *block = nullptr;
    const TraceLog log = traceAt(Trace::State, [&] {
        block = DOV0_GetStorage(1024);
        takeTrace();
        DOV0_FreeStorage(&block);
    });
    EXPECT_EQ(log, (TraceLog{message(Function,
                                     "After free, Total Working Storage Size %.2fK, WSB %d heap limit @%p\n",
                                     0.0, 1, sbrk(0))}));
}

TEST(FreeStorage, WalksAllSlotsForABlockThatIsNotRecorded)
{
    void *unrecorded = DOV0_GetStorage(100);
    void *recorded = nullptr;
    const TraceLog log = traceAt(Trace::State, [&] {
        recorded = DOV0_GetStorage(2048);
        DOV0_FreeStorage(&unrecorded);
    });
    EXPECT_EQ(reports(log), (TraceLog{report(2.00, 341)}));
    DOV0_FreeStorage(&recorded);
}

TEST(FreeStorage, KeepsTheRecordOfABlockFreedWithoutTheStateBit)
{
    void *block = nullptr;
    traceAt(Trace::State, [&] { block = DOV0_GetStorage(1024); });
    DOV0_FreeStorage(&block);
    void *other = nullptr;
    const TraceLog log = traceAt(Trace::State, [&] {
        other = DOV0_GetStorage(2000000); // too large to be given the freed block's address
        DOV0_FreeStorage(&other);
    });
    EXPECT_EQ(reports(log), (TraceLog{report(1.00, 2)}));
}

TEST(FreeStorage, WorksWhenTheStateBitComesOnAfterTheAllocation)
{
    void *block = DOV0_GetStorage(100);
    const TraceLog log = traceAt(Trace::State, [&] { DOV0_FreeStorage(&block); });
    EXPECT_EQ(reports(log), (TraceLog{report(0.00, 0)}));
}
