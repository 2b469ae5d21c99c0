// Reverses the bytes of a 32-bit integer, whatever the host's byte order: the caller decides when.
#include "foundation/frame.h"

#include <algorithm>

TRACE_CONTROL("dov0clge", DOV0_ConvertLongEndian);
extern "C" void DOV0_ConvertLongEndian(void *integer) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (integer == nullptr) {
        TRACE(frame, Trace::Error, "***** Input integer is NULL\n");
        return frame.leave();
    }
    auto *bytes = static_cast<unsigned char *>(integer);
    std::reverse(bytes, bytes + 4);
    frame.leave();
}
