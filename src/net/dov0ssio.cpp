// Applies an I/O control request to a socket.
#include "foundation/frame.h"

#include <cerrno>
#include <sys/ioctl.h>

TRACE_CONTROL("dov0ssio", DOV0_SetSocketIoctl);
extern "C" int32_t DOV0_SetSocketIoctl(int32_t socket, unsigned long request, void *argument) noexcept
{
    const Frame frame(TRC1__EPB_);

    const int result = ioctl(socket, request, argument);
    const int error = errno;
    if (result < 0) {
        TRACE(frame, Trace::Error, "ioctl failed. errno %d\n", error);
    }
    frame.leave<int32_t>(result);
    errno = error; // the caller's only way to learn the cause
    return result;
}
