#include "net/socket_faults.h"
#include "support/trace_recorder.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr char Function[] = "DOV0_CloseTheSocket";

bool isOpen(int descriptor)
{
    return fcntl(descriptor, F_GETFD) >= 0;
}

} // namespace

TEST(CloseTheSocket, ClosesASocket)
{
    int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    int32_t result = -1;
    EXPECT_EQ(traceAt(Trace::All, [&] { result = DOV0_CloseTheSocket(descriptor); }),
              (TraceLog{entry(Function),
                        message(Function, "Successfully closed socket %d, rc: %d\n", descriptor, 0),
                        leave(Function, intptr_t{0})}));
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(isOpen(descriptor));
    descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Storage, [&] { DOV0_CloseTheSocket(descriptor); }),
              (TraceLog{entry(Function), leave(Function, intptr_t{0})}));
}

TEST(CloseTheSocket, ReportsADescriptorThatIsNotOpen)
{
    int32_t result = 0;
    EXPECT_EQ(
        traceAt(Trace::All, [&] { result = DOV0_CloseTheSocket(-1); }),
        (TraceLog{entry(Function),
                  message(Function, "***** Unable to close socket %d, rc: %d, errno: %d\n", -1, -1, EBADF),
                  leave(Function, -1)}));
    EXPECT_EQ(result, -1);
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Error, [] { DOV0_CloseTheSocket(-1); }),
              (TraceLog{entry(Function), leave(Function, -1)}));
}

TEST(CloseTheSocket, TakesADescriptorThatIsNoSocketAsADetail)
{
    socketFaults.onClose = ENOTSOCK;
    EXPECT_EQ(
        traceAt(Trace::All, [] { DOV0_CloseTheSocket(7); }),
        (TraceLog{entry(Function), message(Function, "Unable to close socket %d, not a valid socket\n", 7),
                  leave(Function, -1)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Detail, [] { DOV0_CloseTheSocket(7); }),
              (TraceLog{entry(Function), leave(Function, -1)}));
    socketFaults.onClose = 0;
}

TEST(CloseTheSocket, ClosesWhateverTheSystemCloses)
{
    int pipeEnds[2] = {-1, -1};
    ASSERT_EQ(pipe(pipeEnds), 0);
    EXPECT_EQ(DOV0_CloseTheSocket(pipeEnds[0]), 0);
    EXPECT_FALSE(isOpen(pipeEnds[0]));
    close(pipeEnds[1]);
}

TEST(CloseTheSocket, IsSilentOnAFailureOfDescriptorZero)
{
    for (const int error : {EBADF, ENOTSOCK, EIO}) {
        socketFaults.onClose = error;
        EXPECT_EQ(traceAt(Trace::All, [] { DOV0_CloseTheSocket(0); }),
                  (TraceLog{entry(Function), leave(Function, -1)}));
        socketFaults.onClose = 0;
    }
}

TEST(CloseTheSocket, ReportsSuccessOnDescriptorZero)
{
    dup2(2, 0);
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_CloseTheSocket(0); }),
              (TraceLog{entry(Function), message(Function, "Successfully closed socket 0, rc: 0\n"),
                        leave(Function, intptr_t{0})}));
}
