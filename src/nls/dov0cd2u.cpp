// Converts data in any named code set to UTF-16, in a new buffer.
#include "foundation/frame.h"
#include "nls/utf16_storage.h"

#include <unicode/ucnv.h>

TRACE_CONTROL("dov0cd2u", DOV0_ConvertDataToUnicode);
extern "C" int32_t DOV0_ConvertDataToUnicode(const char *codeset, const char *data, int32_t length,
                                             char16_t **outBuffer, int32_t *outCount) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (codeset == nullptr || data == nullptr || length < 1 || outBuffer == nullptr || outCount == nullptr) {
        TRACE(frame, Trace::Error, "*ERROR: input parameter incomplete, @%p @%p %d @%p @%p\n",
              static_cast<const void *>(codeset), static_cast<const void *>(data), length,
              static_cast<const void *>(outBuffer), static_cast<const void *>(outCount));
        return frame.leave<int32_t>(0);
    }
    UErrorCode status = U_ZERO_ERROR;
    UConverter *converter = ucnv_open(codeset, &status);
    if (U_FAILURE(status)) {
        TRACE(frame, Trace::Error,
              "*ERROR: unable to create Unicode converter for codeset <%s> Status %d <%s>\n", codeset, status,
              u_errorName(status));
        return frame.leave<int32_t>(0);
    }
    // As many units as bytes are enough for every code set whose sequences have no fewer bytes than units.
    char16_t *buffer = allocateUnits(length);
    char16_t *target = buffer;
    const char *source = data;
    status = U_MEMORY_ALLOCATION_ERROR;
    if (buffer != nullptr) {
        TRACE(frame, Trace::Storage, "Allocated Ubuffer @%p for length %d\n", static_cast<void *>(buffer),
              static_cast<int32_t>(bytesOfUnits(length)));
        status = U_ZERO_ERROR;
        ucnv_toUnicode(converter, &target, buffer + length, &source, data + length, nullptr, true, &status);
    }
    ucnv_close(converter);
    if (U_FAILURE(status)) {
        TRACE(frame, Trace::Error, "*ERROR: data conversion to Unicode failed, Status %d <%s>\n", status,
              u_errorName(status));
        DOV0_FreeStorage(&buffer);
        return frame.leave<int32_t>(0);
    }
    const auto count = static_cast<int32_t>(target - buffer);
    *outBuffer = buffer;
    *outCount = count;
    return frame.leave<int32_t>(count);
}
