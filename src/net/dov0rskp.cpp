// Reads the port back that a socket is bound to, above all one that the system chose.
#include "foundation/frame.h"

#include <arpa/inet.h>
#include <cerrno>
#include <sys/socket.h>

TRACE_CONTROL("dov0rskp", DOV0_RetrieveSockPort);
extern "C" int32_t DOV0_RetrieveSockPort(int32_t socket) noexcept
{
    const Frame frame(TRC1__EPB_);

    sockaddr_in address = {};
    socklen_t length = sizeof address;
    if (getsockname(socket, reinterpret_cast<sockaddr *>(&address), &length) < 0) {
        const int error = errno;
        TRACE(frame, Trace::Error, "*** getsockname failed for socket %d. errno %d", socket, error);
        return frame.leave<int32_t>(0);
    }
    const int32_t port = ntohs(address.sin_port);
    TRACE(frame, Trace::Detail, "Socket %d port assignment is %d", socket, port);
    return frame.leave<int32_t>(port);
}
