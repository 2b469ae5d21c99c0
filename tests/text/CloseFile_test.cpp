#include "support/trace_recorder.h"

#include <cerrno>
#include <fcntl.h>

namespace {

constexpr char Function[] = "DOV0_CloseFile";

} // namespace

TEST(CloseFile, ClosesTheStreamAndClearsThePointer)
{
    FILE *stream = std::tmpfile();
    ASSERT_NE(stream, nullptr);
    const int descriptor = fileno(stream);
    DOV0_CloseFile(&stream);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
}

TEST(CloseFile, TracesTheResult)
{
    FILE *stream = std::tmpfile();
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(
        traceAt(Trace::All,
                [&] {
                    errno = 0;
                    DOV0_CloseFile(&stream);
                }),
        (TraceLog{entry(Function), message(Function, "File closed rc %d errno %d", 0, 0), leave(Function)}));
}

TEST(CloseFile, ClearsThePointerAlsoWhenClosingFails)
{
    FILE *stream = std::fopen("/dev/full", "w");
    ASSERT_NE(stream, nullptr);
    ASSERT_GT(std::fputs("what does not fit", stream), 0);
    const int descriptor = fileno(stream);
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_CloseFile(&stream); }),
              (TraceLog{entry(Function), message(Function, "File closed rc %d errno %d", EOF, ENOSPC),
                        leave(Function)}));
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
}

TEST(CloseFile, TracesTheResultUnderTheDetailBitOnly)
{
    EXPECT_EQ(bitsThatShow(message(Function, "File closed rc %d errno %d", 0, 0),
                           [] {
                               FILE *stream = std::tmpfile();
                               errno = 0;
                               DOV0_CloseFile(&stream);
                           }),
              Trace::Detail);
}

TEST(CloseFile, OnlyTracesForAStreamThatIsClosed)
{
    FILE *stream = nullptr;
    for (FILE **address : {&stream, static_cast<FILE **>(nullptr)}) {
        EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_CloseFile(address); }),
                  (TraceLog{entry(Function), message(Function, "***** Input FD pointer is NULL"),
                            leave(Function)}));
        EXPECT_EQ(bitsThatShow(message(Function, "***** Input FD pointer is NULL"),
                               [&] { DOV0_CloseFile(address); }),
                  Trace::Error);
    }
    EXPECT_EQ(stream, nullptr);
}
