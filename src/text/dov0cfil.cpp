// Closes a stream and clears the caller's pointer to it, so that it is not used or closed again.
#include "foundation/frame.h"

#include <cerrno>
#include <cstdio>

TRACE_CONTROL("dov0cfil", DOV0_CloseFile);
extern "C" void DOV0_CloseFile(FILE **stream) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (stream == nullptr || *stream == nullptr) {
        TRACE(frame, Trace::Error, "***** Input FD pointer is NULL");
        return frame.leave();
    }
    const int rc = std::fclose(*stream);
    const int error = errno;
    *stream = nullptr;
    TRACE(frame, Trace::Detail, "File closed rc %d errno %d", rc, error);
    frame.leave();
}
