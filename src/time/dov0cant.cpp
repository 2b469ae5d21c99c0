// Makes the timestamp of the present moment. A leaf that reports no flow events of its own.
#include "foundation/frame.h"

TRACE_CONTROL("dov0cant", DOV0_GetCorvelTime);
extern "C" char *DOV0_GetCorvelTime(char *buffer) noexcept
{
    [[maybe_unused]] const TraceLevel level(TRC1__EPB_);

    const time_t now = time(nullptr);
    return DOV0_ConvertTimeToCorvelTime(&now, buffer);
}
