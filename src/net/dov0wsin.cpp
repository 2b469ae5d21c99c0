// Starts the socket library, which on this system needs no start.
#include "foundation/frame.h"

TRACE_CONTROL("dov0wsin", DOV0_WinSockInitialization);
extern "C" int32_t DOV0_WinSockInitialization(void) noexcept
{
    const Frame frame(TRC1__EPB_);

    return frame.leave<int32_t>(1);
}
