// Closes a socket with the right words in the trace.
#include "foundation/frame.h"

#include <cerrno>
#include <unistd.h>

TRACE_CONTROL("dov0clsk", DOV0_CloseTheSocket);
extern "C" int32_t DOV0_CloseTheSocket(int32_t socket) noexcept
{
    const Frame frame(TRC1__EPB_);

    const int result = close(socket);
    const int error = errno;
    if (result == 0) {
        TRACE(frame, Trace::Storage, "Successfully closed socket %d, rc: %d\n", socket, result);
    } else if (socket != 0) { // a failure on descriptor 0 is kept quiet
        if (error == ENOTSOCK) {
            TRACE(frame, Trace::Detail, "Unable to close socket %d, not a valid socket\n", socket);
        } else {
            TRACE(frame, Trace::Error, "***** Unable to close socket %d, rc: %d, errno: %d\n", socket, result,
                  error);
        }
    }
    return frame.leave<int32_t>(result);
}
