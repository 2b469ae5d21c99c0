// Shows a calendar time, or the present one, as a short text in a static area.
#include "foundation/frame.h"
#include "time/local_time.h"

#include <cstdio>
#include <cstring>

namespace {

// The usual text has eighteen characters; a year far from now may need more.
constinit char CurrentTime[64] = "";

} // namespace

TRACE_CONTROL("dov0gcdt", DOV0_GetCurrentDayTime);
extern "C" char *DOV0_GetCurrentDayTime(const time_t *when) noexcept
{
    const Frame frame(TRC1__EPB_);

    const time_t shownTime = when != nullptr ? *when : time(nullptr);
    std::memset(CurrentTime, 0, sizeof CurrentTime);
    tm local;
    if (!breakIntoLocalTime(shownTime, local)) {
        TRACE(frame, Trace::Error, "*****Time %lld has no local time\n", static_cast<long long>(shownTime));
        return frame.leave(CurrentTime);
    }
    // Years since 1900: three digits from the year 2000 on, kept as such.
    std::snprintf(CurrentTime, sizeof CurrentTime, "%.2d/%.2d/%.2d-%.2d:%.2d:%.2d", local.tm_year,
                  local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
    return frame.leave(CurrentTime);
}
