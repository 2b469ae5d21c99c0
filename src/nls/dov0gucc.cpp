// Counts the UTF-16 units of a UTF-8 text, and gives them to a caller who wants them.
#include "foundation/frame.h"
#include "nls/utf16_storage.h"
#include "nls/utf8_converter.h"

namespace {

constexpr int32_t StackUnits = 2048;
constexpr int32_t LongestForStack = 1024; // bytes of text

// Returns the number of units, 0 on failure.
int32_t count(const Frame &frame, const char *text, int32_t length, char16_t **outBuffer) noexcept
{
    const LockHolder holder(ThisConverterUseLock);
    if (UTF8_Converter == nullptr || text == nullptr || length < 1) {
        return 0;
    }
    char16_t stackBuffer[StackUnits];
    char16_t *allocated = nullptr;
    char16_t *buffer = stackBuffer;
    int32_t capacity = StackUnits;
    if (length > LongestForStack || outBuffer != nullptr) {
        allocated = allocateUnits(length);
        buffer = allocated;
        capacity = length;
    }
    int32_t units = 0;
    UErrorCode status = buffer != nullptr ? U_ZERO_ERROR : U_MEMORY_ALLOCATION_ERROR;
    if (buffer != nullptr) {
        char16_t *target = buffer;
        const char *source = text;
        ucnv_resetToUnicode(UTF8_Converter);
        ucnv_toUnicode(UTF8_Converter, &target, buffer + capacity, &source, text + length, nullptr, true,
                       &status);
        units = static_cast<int32_t>(target - buffer);
    }
    if (U_FAILURE(status)) {
        TRACE(frame, Trace::Error, "*ERROR: ucnv_toUnicode conversion failed. Status %d <%s>\n", status,
              u_errorName(status));
        units = 0;
    }
    if (outBuffer != nullptr) {
        *outBuffer = allocated; // also after a failure; the caller's from here
    } else if (allocated != nullptr) {
        DOV0_FreeStorage(&allocated);
    }
    return units;
}

} // namespace

TRACE_CONTROL("dov0gucc", DOV0_GetUTF8CharacterCount);
extern "C" int32_t DOV0_GetUTF8CharacterCount(const char *text, int32_t length, char16_t **outBuffer) noexcept
{
    const Frame frame(TRC1__EPB_);

    openUTF8ConverterOnce(TRC1__F_, __LINE__);
    return frame.leave(count(frame, text, length, outBuffer));
}
