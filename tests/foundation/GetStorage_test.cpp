#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <unistd.h>

namespace {

constexpr char Function[] = "DOV0_GetStorage";

std::string afterAllocation(double kilobytes, int position)
{
    return message(Function, "After allocation, Total Working Storage Size %.2fK, WSB %d heap limit @%p\n",
                   kilobytes, position, sbrk(0));
}

// The reports of the accounting without the heap limit, which the test's own storage moves.
TraceLog reports(const TraceLog &log)
{
    TraceLog found;
    for (const std::string &line : log) {
        if (line.find("Total Working Storage") != std::string::npos) {
            found.push_back(line.substr(0, line.find(" heap limit")));
        }
    }
    return found;
}

std::string report(double kilobytes, int position)
{
    const std::string text = afterAllocation(kilobytes, position);
    return text.substr(0, text.find(" heap limit"));
}

} // namespace

TEST(GetStorage, GivesZeroFilledBlocks)
{
    for (const int32_t size : {1, 2, 15, 16, 17, 4095, 4096, 1000003}) {
        auto *block = static_cast<unsigned char *>(DOV0_GetStorage(size));
        ASSERT_NE(block, nullptr);
        for (int32_t i = 0; i < size; ++i) {
            ASSERT_EQ(block[i], 0) << "byte " << i << " of " << size;
            block[i] = 0xFF; // what a reused block must not show
        }
        DOV0_FreeStorage(&block);
    }
}

TEST(GetStorage, RefusesSizesBelowOne)
{
    for (const int32_t size : {0, -1, -5, INT32_MIN}) {
        void *block = &block;
        const TraceLog log = traceAt(Trace::Flow | Trace::Error, [&] { block = DOV0_GetStorage(size); });
        EXPECT_EQ(block, nullptr);
        EXPECT_EQ(log,
                  (TraceLog{entry(Function), message(Function, "*****Invalid get storage size %d\n", size),
                            leave(Function, nullptr)}));
    }
}

TEST(GetStorage, ReportsAnInvalidSizeUnderTheErrorBitOnly)
{
    EXPECT_EQ(
        bitsThatShow(message(Function, "*****Invalid get storage size 0\n"), [] { DOV0_GetStorage(0); }),
        Trace::Error);
}

TEST(GetStorage, ReportsAnExhaustedHeap)
{
    void *block = &block;
    const TraceLog log = traceAt(Trace::Flow | Trace::Error | Trace::Detail,
                                 [&] { withoutHeap([&] { block = DOV0_GetStorage(77); }); });
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(log,
              (TraceLog{entry(Function), message(Function, "*****Unable to obtain storage, size %d\n", 77),
                        leave(Function, nullptr)}));
    EXPECT_EQ(bitsThatShow(message(Function, "*****Unable to obtain storage, size 77\n"),
                           [] { withoutHeap([] { DOV0_GetStorage(77); }); }),
              Trace::Error);
}

TEST(GetStorage, TracesABlockUnderTheDetailBit)
{
    void *block = nullptr;
    const TraceLog log = traceAt(Trace::Flow | Trace::Detail, [&] { block = DOV0_GetStorage(24); });
    EXPECT_EQ(log, (TraceLog{entry(Function),
                             message(Function, "Allocated storage at address @%p size %d\n", block, 24),
                             leave(Function, block)}));
    DOV0_FreeStorage(&block);
}

TEST(GetStorage, TracesNothingElseWithoutTheStateBit)
{
    void *block = nullptr;
    const TraceLog log = traceAt(Trace::All & ~(Trace::Flow | Trace::State | Trace::Detail),
                                 [&] { block = DOV0_GetStorage(24); });
    EXPECT_EQ(log, TraceLog{});
    DOV0_FreeStorage(&block);
}

TEST(GetStorage, InitializesTheAccountingOnceAndOnlyUnderTheStateBit)
{
    EXPECT_EQ(traceAt(Trace::All & ~Trace::State & ~Trace::Flow, [] { DOV0_GetStorage(0); }),
              (TraceLog{message(Function, "*****Invalid get storage size 0\n")}));
    EXPECT_EQ(traceAt(Trace::State, [] { DOV0_GetStorage(0); }),
              (TraceLog{message(Function, "Initializing WorkingStorageCounterLock\n")}));
    EXPECT_EQ(traceAt(Trace::State, [] { DOV0_GetStorage(0); }), TraceLog{});
}

TEST(GetStorage, ReportsTotalAndPositionUnderTheStateBit)
{
    void *blocks[3] = {};
    const TraceLog log = traceAt(Trace::State, [&] {
        blocks[0] = DOV0_GetStorage(1024);
        blocks[1] = DOV0_GetStorage(512);
        DOV0_FreeStorage(&blocks[0]);
        blocks[2] = DOV0_GetStorage(256);
    });
    EXPECT_EQ(from(Function, reports(log)), (TraceLog{report(1.00, 1), report(1.50, 2), report(0.75, 1)}));
    DOV0_FreeStorage(&blocks[1]);
    DOV0_FreeStorage(&blocks[2]);
}

TEST(GetStorage, ReportsTheProgramBreakAsHeapLimit)
{
    void *block = nullptr;
    void *limit = nullptr;
    const TraceLog log = traceAt(Trace::State, [&] {
        block = DOV0_GetStorage(1024);
        limit = sbrk(0);
    });
    ASSERT_EQ(log.size(), 2U);
    EXPECT_EQ(log[1],
              message(Function, "After allocation, Total Working Storage Size %.2fK, WSB %d heap limit @%p\n",
                      1.0, 1, limit));
    DOV0_FreeStorage(&block);
}

TEST(GetStorage, BeginsASecondPageWithThe342ndBlock)
{
    std::vector<void *> blocks(342);
    const TraceLog log = traceAt(Trace::State, [&] {
        for (void *&block : blocks) {
            block = DOV0_GetStorage(4);
        }
    });
    const TraceLog found = reports(log);
    ASSERT_EQ(found.size(), 342U);
    for (int i = 0; i < 342; ++i) {
        EXPECT_EQ(found[static_cast<size_t>(i)], report((i + 1) * 4 / 1024.0, i + 1));
    }
    const TraceLog reused = traceAt(Trace::State, [&] {
        DOV0_FreeStorage(&blocks[0]);
        blocks[0] = DOV0_GetStorage(4);
    });
    EXPECT_EQ(from(Function, reports(reused)), (TraceLog{report(342 * 4 / 1024.0, 1)}));
    for (void *&block : blocks) {
        DOV0_FreeStorage(&block);
    }
}

TEST(GetStorage, AsksForOneBlockOnlyWithoutTheStateBit)
{
    void *block = nullptr;
    EXPECT_EQ(heapRequestsOf([&] { block = DOV0_GetStorage(8); }), 1);
    DOV0_FreeStorage(&block);
}

TEST(GetStorage, GivesTheBlockUnrecordedWhenNoPageOfSlotsCanBeHad)
{
    void *block = nullptr;
    bool reached = false;
    setTraceLevel(Trace::State);
    DOV0_GetStorage(0); // the lock's announcement
    takeTrace();
    // The recorder needs the heap too, but traces nothing between the block and the page.
    reached = withHeapFailure(2, [&] { block = DOV0_GetStorage(8); });
    EXPECT_TRUE(reached);
    EXPECT_NE(block, nullptr);
    EXPECT_EQ(takeTrace(), TraceLog{});
    setTraceLevel(0);
    DOV0_FreeStorage(&block);
}
