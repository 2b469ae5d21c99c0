// What the trace facility does when it has no storage itself.
#include "platform/trace_file.h"
#include "support/heap_faults.h"

#include <algorithm>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

namespace {

// A host function with a file to trace to.
struct TraceStorage : testing::Test {
    TraceFile file;
    HostFunction host{"hostfile", "HOST_Function"};

    void SetUp() override { ASSERT_EQ(TRC1_Configure("all", file.name().c_str()), 0); }

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

TEST_F(TraceStorage, ChangesNothingWithoutStorageForTheNewConfiguration)
{
    const TraceFile other;
    const std::string otherName = other.name();
    int failures = 0;
    for (int n = 1;; ++n) {
        int32_t result = 0;
        const bool reached =
            withHeapFailure(n, [&] { result = TRC1_Configure("HOST_Function=error", otherName.c_str()); });
        if (!reached) {
            EXPECT_EQ(result, 0);
            break;
        }
        ++failures;
        EXPECT_EQ(result, -1);
        EXPECT_EQ(TRC1_Sync(&host.block), 0x1FFU & ~0x20U) << n; // the old levels
        EXPECT_EQ(other.lines().size(), 0U) << n;
    }
    EXPECT_GE(failures, 1); // the levels; the file's name needs none
    EXPECT_EQ(TRC1_Sync(&host.block), 0x80U);
    const std::vector<std::string> complaints = texts();
    ASSERT_EQ(static_cast<int>(complaints.size()), failures);
    for (const std::string &complaint : complaints) {
        EXPECT_EQ(complaint, "*****Error: no storage for the trace levels. Nothing is changed");
    }
}

TEST_F(TraceStorage, CutsALongMessageThatItHasNoStorageFor)
{
    const std::string lengthy(5000, 'x');
    withoutHeap([&] { TRC1_Printf(&host.block, 7, "<%s>\n", lengthy.c_str()); });
    TRC1_Printf(&host.block, 7, "next\n");
    const std::vector<std::string> lines = texts();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], "<" + std::string(510, 'x')); // as much as is formatted on the stack
    EXPECT_EQ(lines[1], "next");
}

TEST_F(TraceStorage, LeavesErrnoAlone)
{
    const std::string lengthy(5000, 'f');
    HostFunction longName("hostfile", lengthy.c_str());
    withoutHeap([&] { expectErrnoKept(longName.block); });
    const std::string written = file.contents();
    EXPECT_EQ(std::count(written.begin(), written.end(), '\n'), 3); // each cut in the name
}

TEST_F(TraceStorage, CutsAMessageThatGrowsWhenItIsMadeVisible)
{
    const std::string invisible(400, '\x01');
    withoutHeap([&] { TRC1_Printf(&host.block, 7, "%s\n", invisible.c_str()); });
    TRC1_Printf(&host.block, 7, "next\n");
    const std::vector<std::string> lines = texts();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[0], StartsWith("\\x01\\x01"));
    EXPECT_THAT(lines[0], EndsWith("\\x01"));
    EXPECT_EQ(lines[0].size() % 4, 0U);
    EXPECT_EQ(lines[1], "next");
}

TEST_F(TraceStorage, WritesAllThatItHasStorageFor)
{
    const std::string lengthy(5000, 'x');
    for (int n = 1; withHeapFailure(n, [&] { TRC1_Printf(&host.block, 7, "<%s>\n", lengthy.c_str()); });
         ++n) {
    }
    const std::vector<std::string> lines = texts();
    ASSERT_GE(lines.size(), 2U);
    for (const std::string &line : lines) {
        EXPECT_THAT(line, StartsWith("<xxxx"));
    }
    EXPECT_EQ(lines.back(), "<" + lengthy + ">");
}

TEST_F(TraceStorage, EndsTheLineOfADumpWithoutStorage)
{
    const std::string bytes(300, 'd');
    withoutHeap([&] { TRC1_Dump(&host.block, 7, bytes.data(), 300, "%02.2X"); });
    TRC1_Printf(&host.block, 7, "next\n");
    EXPECT_EQ(texts().back(), "next");
}

TEST(TraceStorageAtStart, TracesNothingWithoutStorageForTheLevels)
{
    const TraceFile file;
    HostFunction host{"hostfile", "HOST_Function"};
    setenv("DOV_TRACE", "all", 1);
    setenv("DOV_TRACE_FILE", file.name().c_str(), 1);
    uint32_t level = 1;
    EXPECT_TRUE(withHeapFailure(1, [&] { level = TRC1_Sync(&host.block); }));
    EXPECT_EQ(level, 0U);
    const std::vector<TraceLine> lines = file.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].text, "*****Error: no storage for the levels of DOV_TRACE. Nothing is traced");
}
