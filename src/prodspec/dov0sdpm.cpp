// Records how data providers are started.
#include "foundation/dp_start_mode.h"
#include "foundation/frame.h"

TRACE_CONTROL("dov0sdpm", DOV0_SetDPstartMode);
extern "C" void DOV0_SetDPstartMode(int32_t mode) noexcept
{
    const Frame frame(TRC1__EPB_);

    IndependentDPstartMode.store(mode, std::memory_order_relaxed);
    frame.leave();
}
