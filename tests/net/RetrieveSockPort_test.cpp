#include "support/trace_recorder.h"

#include <arpa/inet.h>
#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr char Function[] = "DOV0_RetrieveSockPort";

// A UDP socket on a loopback port that the system chose, and that port.
int boundSocket(int32_t *port)
{
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(bind(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    socklen_t length = sizeof address;
    EXPECT_EQ(getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &length), 0);
    *port = ntohs(address.sin_port);
    return descriptor;
}

} // namespace

TEST(RetrieveSockPort, GivesThePortInHostOrder)
{
    int32_t port = 0;
    const int descriptor = boundSocket(&port);
    ASSERT_NE(port, 0);
    EXPECT_EQ(DOV0_RetrieveSockPort(descriptor), port);
    EXPECT_EQ(
        traceAt(Trace::All, [&] { DOV0_RetrieveSockPort(descriptor); }),
        (TraceLog{entry(Function), message(Function, "Socket %d port assignment is %d", descriptor, port),
                  leave(Function, port)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Detail, [&] { DOV0_RetrieveSockPort(descriptor); }),
              (TraceLog{entry(Function), leave(Function, port)}));
    close(descriptor);
}

TEST(RetrieveSockPort, GivesZeroForAnUnboundSocket)
{
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    EXPECT_EQ(traceAt(Trace::Detail, [&] { DOV0_RetrieveSockPort(descriptor); }),
              (TraceLog{message(Function, "Socket %d port assignment is %d", descriptor, 0)}));
    EXPECT_EQ(DOV0_RetrieveSockPort(descriptor), 0);
    close(descriptor);
}

TEST(RetrieveSockPort, ReportsWhatIsNoSocket)
{
    int32_t result = -1;
    EXPECT_EQ(traceAt(Trace::All, [&] { result = DOV0_RetrieveSockPort(-1); }),
              (TraceLog{entry(Function),
                        message(Function, "*** getsockname failed for socket %d. errno %d", -1, EBADF),
                        leave(Function, intptr_t{0})}));
    EXPECT_EQ(result, 0);
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Error, [] { DOV0_RetrieveSockPort(-1); }),
              (TraceLog{entry(Function), leave(Function, intptr_t{0})}));
    int pipeEnds[2] = {-1, -1};
    ASSERT_EQ(pipe(pipeEnds), 0);
    EXPECT_EQ(traceAt(Trace::Error, [&] { DOV0_RetrieveSockPort(pipeEnds[0]); }),
              (TraceLog{message(Function, "*** getsockname failed for socket %d. errno %d", pipeEnds[0],
                                ENOTSOCK)}));
    close(pipeEnds[0]);
    close(pipeEnds[1]);
}
