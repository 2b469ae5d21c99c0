// Reads the clock in milliseconds, for the difference between two readings.
#include "foundation/frame.h"

#include <sys/time.h>

TRACE_CONTROL("dov0gtod", DOV0_GetTimeOfDay);
extern "C" int32_t DOV0_GetTimeOfDay(void) noexcept
{
    const Frame frame(TRC1__EPB_);

    timeval now;
    gettimeofday(&now, nullptr);
    // The value wraps on purpose, in unsigned arithmetic because only that wraps by definition.
    const uint32_t milliseconds =
        static_cast<uint32_t>(now.tv_sec) * 1000U + static_cast<uint32_t>(now.tv_usec / 1000);
    return frame.leave<int32_t>(static_cast<int32_t>(milliseconds));
}
