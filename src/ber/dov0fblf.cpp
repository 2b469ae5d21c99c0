// Writes a BER length field: one byte for lengths up to 127, else a first byte and two to four length bytes.
#include "ber/ber_length.h"
#include "ber/big_endian.h"
#include "foundation/frame.h"

TRACE_CONTROL("dov0fblf", DOV0_FormatBERlengthField);
extern "C" int32_t DOV0_FormatBERlengthField(unsigned char **cursor, uint32_t length) noexcept
{
    const Frame frame(TRC1__EPB_);

    unsigned char *target = cursor != nullptr ? *cursor : nullptr;
    TRACE(frame, Trace::Detail, "Input buffer pointer @%p size %d\n", static_cast<void *>(target),
          static_cast<int32_t>(length));
    if (length == 0) {
        return frame.leave<int32_t>(0);
    }
    if (target == nullptr) {
        TRACE(frame, Trace::Error, "*****Input parameter invalid @%p\n", static_cast<void *>(target));
        return frame.leave<int32_t>(0);
    }
    const int32_t count = longFormCount(length);
    if (count == 0) {
        *target++ = static_cast<unsigned char>(length);
    } else {
        *target++ = static_cast<unsigned char>(LongForm | count);
        target = storeBigEndian(target, length, count);
    }
    *cursor = target;
    return frame.leave<int32_t>(1);
}
