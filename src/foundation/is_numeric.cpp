// Tells whether a text is all decimal digits. Not exported, but run in a frame like an exported function.
#include "foundation/is_numeric.h"

#include "foundation/frame.h"

TRACE_CONTROL("is_numeric", isNumeric);
int32_t isNumeric(const char *text) noexcept
{
    const Frame frame(TRC1__EPB_);

    // A plain range test: a locale with digits of its own must not widen what a number is.
    for (const char *next = text; *next != '\0'; ++next) {
        if (*next < '0' || *next > '9') {
            return frame.leave<int32_t>(0);
        }
    }
    return frame.leave<int32_t>(1);
}
