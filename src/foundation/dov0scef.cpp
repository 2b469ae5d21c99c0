// Marks a file descriptor close-on-exec, so that it does not leak into programs that the process starts.
#include "foundation/frame.h"

#include <cerrno>
#include <fcntl.h>

TRACE_CONTROL("dov0scef", DOV0_SetCloExecFlag);
extern "C" int32_t DOV0_SetCloExecFlag(int32_t fileDescriptor) noexcept
{
    const Frame frame(TRC1__EPB_);

    const int descFlags = fcntl(fileDescriptor, F_GETFD);
    int error = errno;
    if (descFlags < 0) { // answered like a success
        TRACE(frame, Trace::Error, "*** fcntl for file descriptor %d failed, errno %d\n", fileDescriptor,
              error);
        return frame.leave<int32_t>(0);
    }
    TRACE(frame, Trace::Detail, "fcntl returned descFlags %X for fileDescriptor %d\n",
          static_cast<unsigned>(descFlags), fileDescriptor);
    const int32_t rc = fcntl(fileDescriptor, F_SETFD, descFlags | FD_CLOEXEC);
    error = errno;
    TRACE(frame, Trace::Detail, "fcntl returned rc %d errno %d\n", rc, error);
    return frame.leave<int32_t>(rc);
}
