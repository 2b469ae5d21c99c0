#include "net/socket_faults.h"
#include "support/trace_recorder.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr char Function[] = "DOV0_SetSocketIoctl";

} // namespace

TEST(SetSocketIoctl, AppliesTheRequest)
{
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    int nonBlocking = 1;
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_SetSocketIoctl(descriptor, FIONBIO, &nonBlocking); }),
              (TraceLog{entry(Function), leave(Function, intptr_t{0})}));
    EXPECT_NE(fcntl(descriptor, F_GETFL) & O_NONBLOCK, 0);
    nonBlocking = 0;
    EXPECT_EQ(DOV0_SetSocketIoctl(descriptor, FIONBIO, &nonBlocking), 0);
    EXPECT_EQ(fcntl(descriptor, F_GETFL) & O_NONBLOCK, 0);
    close(descriptor);
}

TEST(SetSocketIoctl, ReportsAFailure)
{
    int32_t result = 0;
    int nonBlocking = 1;
    int error = 0;
    EXPECT_EQ(traceAt(Trace::All,
                      [&] {
                          result = DOV0_SetSocketIoctl(-1, FIONBIO, &nonBlocking);
                          error = errno;
                      }),
              (TraceLog{entry(Function), message(Function, "ioctl failed. errno %d\n", EBADF),
                        leave(Function, -1)}));
    EXPECT_EQ(result, -1);
    EXPECT_EQ(error, EBADF);
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Error, [&] { DOV0_SetSocketIoctl(-1, FIONBIO, &nonBlocking); }),
              (TraceLog{entry(Function), leave(Function, -1)}));
}

TEST(SetSocketIoctl, PassesNullOn)
{
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    EXPECT_EQ(DOV0_SetSocketIoctl(descriptor, FIONBIO, nullptr), -1);
    EXPECT_EQ(errno, EFAULT);
    close(descriptor);
}
