// Converts a parameter of a message from the native code page to UTF-16.
#include "foundation/frame.h"

#include <algorithm>
#include <cstring>
#include <unicode/ucnv.h>

TRACE_CONTROL("dov0lmsu", DOV0_LNG2_MsgSubparmToUTF_Util);
extern "C" void DOV0_LNG2_MsgSubparmToUTF_Util(LNG2_Locale * /*locale*/, char16_t *target, int32_t capacity,
                                               const char *text) noexcept
{
    const Frame frame(TRC1__EPB_);

    UErrorCode status = U_ZERO_ERROR;
    UConverter *converter = ucnv_open(nullptr, &status);
    if (U_FAILURE(status)) {
        TRACE(frame, Trace::Error, "Could not open converter for subtext <%s>, error <%s>\n", shown(text),
              u_errorName(status));
        return frame.leave();
    }
    status = U_ILLEGAL_ARGUMENT_ERROR;
    if (text != nullptr) {
        status = U_ZERO_ERROR;
        const size_t length = std::min<size_t>(std::strlen(text), INT32_MAX);
        ucnv_toUChars(converter, target, capacity, text, static_cast<int32_t>(length), &status);
    }
    if (U_FAILURE(status) && status != U_BUFFER_OVERFLOW_ERROR) { // a longer parameter is cut
        TRACE(frame, Trace::Error, "Could not convert subtext <%s> to UTF16, error <%s>\n", shown(text),
              u_errorName(status));
    }
    ucnv_close(converter);
    frame.leave();
}
