// Renders a timestamp for a human reader.
#include "foundation/frame.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

TRACE_CONTROL("dov0ctst", DOV0_CorvelTimeToString);
extern "C" int32_t DOV0_CorvelTimeToString(const char *timestamp, char *out) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (timestamp == nullptr || out == nullptr) {
        TRACE(frame, Trace::Error, "*****Timestamp or output area is NULL\n");
        return frame.leave<int32_t>(0);
    }
    char stamp[DOV0_TIMESTAMP_SIZE] = {};
    std::memcpy(stamp, timestamp, strnlen(timestamp, DOV0_TIMESTAMP_LENGTH));
    char yearText[4] = {};
    std::memcpy(yearText, stamp, 3);
    // What is missing from a short timestamp comes out as NUL characters, and the count covers them.
    const int count =
        std::snprintf(out, DOV0_TIMESTAMP_TEXT_SIZE, "%.4d/%c%c/%c%c %c%c:%c%c:%c%c %c%c%c",
                      std::atoi(yearText) + 1900, stamp[3], stamp[4], stamp[5], stamp[6], stamp[7], stamp[8],
                      stamp[9], stamp[10], stamp[11], stamp[12], stamp[13], stamp[14], stamp[15]);
    return frame.leave<int32_t>(count);
}
