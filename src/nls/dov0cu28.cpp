// Converts UTF-16 to UTF-8 in a buffer of the caller's.
#include "foundation/frame.h"
#include "nls/utf8_converter.h"

#include <cstring>

namespace {

// Returns the length of the result, 0 on failure.
int32_t convert(const Frame &frame, const char16_t *text, int32_t units, char *output, int32_t size) noexcept
{
    const LockHolder holder(ThisConverterUseLock);
    if (UTF8_Converter == nullptr || text == nullptr || units < 1 || size < 1) {
        return 0;
    }
    const int32_t capacity = size - 1; // one byte is kept back for the terminator
    UErrorCode status = U_ZERO_ERROR;
    const int32_t needed = ucnv_fromUChars(UTF8_Converter, output, capacity, text, units, &status);
    if (output != nullptr && needed >= capacity) { // ICU leaves a full buffer open
        output[capacity] = '\0';
    }
    if (U_FAILURE(status)) {
        if (status == U_BUFFER_OVERFLOW_ERROR) {
            TRACE(frame, Trace::Error,
                  "Warning: Data truncated in Unicode to UTF8 conversion, length needed <%d> length supplied "
                  "<%d>\n",
                  needed, capacity);
        } else {
            TRACE(frame, Trace::Error, "*ERROR: Unicode to UTF8 conversion failed. Status %d <%s>\n", status,
                  u_errorName(status));
        }
        return 0;
    }
    TRACE(frame, Trace::Detail,
          "Successfully converted Unicode to UTF8, length needed <%d> length supplied <%d>\n", needed,
          capacity);
    // The length of the text, which a zero unit in the input ends early.
    return static_cast<int32_t>(output != nullptr ? std::strlen(output) : 0);
}

} // namespace

TRACE_CONTROL("dov0cu28", DOV0_ConvertUnicodeToUTF8);
extern "C" int32_t DOV0_ConvertUnicodeToUTF8(const char16_t *text, int32_t units, char *output,
                                             int32_t size) noexcept
{
    const Frame frame(TRC1__EPB_);

    openUTF8ConverterOnce(TRC1__F_, __LINE__);
    return frame.leave(convert(frame, text, units, output, size));
}
