// Writes a BER field that holds bytes.
#include "foundation/frame.h"

#include <cstring>

namespace {

// With a tag and a length field before it, a longer value would have a size that the result cannot tell.
constexpr bool isTooLong(int32_t length) noexcept
{
    return length > INT32_MAX - 6;
}
static_assert(!isTooLong(INT32_MAX - 6) && isTooLong(INT32_MAX - 5));

} // namespace

TRACE_CONTROL("dov0fbot", DOV0_FormatBERoctetstringType);
extern "C" int32_t DOV0_FormatBERoctetstringType(unsigned char **cursor, unsigned char tag,
                                                 const unsigned char *data, int32_t length) noexcept
{
    const Frame frame(TRC1__EPB_);

    unsigned char *const field = cursor != nullptr ? *cursor : nullptr;
    // The predicates refuse no more than null, but tell the trace what they were asked.
    const bool isRoomGiven =
        DOV0_IsValidPointer(field) != 0 && length >= 1 && DOV0_IsValidBlockPointer(field) != 0;
    if (!isRoomGiven || field == nullptr || data == nullptr || isTooLong(length)) {
        TRACE(frame, Trace::Error, "*****Input parameter invalid @%p @%p %d\n", static_cast<void *>(field),
              static_cast<const void *>(data), length);
        return frame.leave<int32_t>(0);
    }
    unsigned char *target = field;
    *target++ = tag;
    DOV0_FormatBERlengthField(&target, static_cast<uint32_t>(length));
    std::memmove(target, data, static_cast<size_t>(length)); // it may lie in the buffer already
    target += length;
    *cursor = target;
    const auto written = static_cast<int32_t>(target - field);
    DUMP(frame, Trace::Detail, field, written, "%02.2X");
    return frame.leave<int32_t>(written);
}
