// Reads one BER field: its tag, the length of its value and where that is. The end of the buffer is not known here.
#include "ber/ber_length.h"
#include "ber/big_endian.h"
#include "foundation/frame.h"

#include <cstring>

namespace {

// The value is the one thing that is read beyond the length bytes, and only for this message.
void traceField(const Frame &frame, uint32_t tag, const unsigned char *value, uint32_t length) noexcept
{
    char *hex = nullptr;
    if (length <= LargestTracedValue) {
        hex = static_cast<char *>(DOV0_GetStorage(static_cast<int32_t>(2 * length + 1)));
    }
    if (hex != nullptr) {
        static constexpr char Digits[] = "0123456789ABCDEF";
        for (uint32_t i = 0; i < length; ++i) {
            hex[2 * i] = Digits[value[i] >> 4];
            hex[2 * i + 1] = Digits[value[i] & 0x0F];
        }
    }
    TRACE_WITH_ZERO_FLAG(frame, Trace::Detail, "ASN1 type %02.2X, Length %d, value <%s>\n", tag,
                         static_cast<int32_t>(length), hex != nullptr ? hex : "...");
    if (hex != nullptr) {
        DOV0_FreeStorage(&hex);
    }
}

} // namespace

TRACE_CONTROL("dov0ebfd", DOV0_ExtractBERfield);
extern "C" uint32_t DOV0_ExtractBERfield(unsigned char **cursor, uint32_t *lengthOut,
                                         unsigned char **valueOut) noexcept
{
    const Frame frame(TRC1__EPB_);

    unsigned char *const field = cursor != nullptr ? *cursor : nullptr;
    if (field == nullptr) {
        TRACE(frame, Trace::Error,
              "*****Input BER data buffer pointer invalid, DataBuffer @%p ASNfieldPtr @%p\n",
              static_cast<void *>(cursor), static_cast<void *>(field));
        return frame.leave(uint32_t{0});
    }
    const uint32_t tag = field[0];
    unsigned char *lengthBytes = field + 1;
    int32_t count = 1;
    if ((*lengthBytes & LongForm) != 0) {
        count = *lengthBytes++ & 0x7F;
        TRACE(frame, Trace::Detail, "Assigned i = %d\n", count);
    } else {
        TRACE(frame, Trace::Detail, "Assigned i = 1\n");
    }

    unsigned char workSize[4] = {};
    constexpr int32_t Widest = sizeof workSize;
    if (count <= Widest) {
        TRACE(frame, Trace::Detail, "Copying ASNfieldPtr @%p to WorkSize @%p + %d for length %d\n",
              static_cast<void *>(lengthBytes), static_cast<void *>(workSize), Widest - count, count);
        std::memcpy(workSize + Widest - count, lengthBytes, static_cast<size_t>(count));
    } else {
        TRACE(frame, Trace::Error, "*****ASN1 field length %d too large. Unsupported\n", count);
    }
    const uint32_t length = loadBigEndian(workSize, Widest);
    unsigned char *const value = lengthBytes + count;
    if (lengthOut != nullptr) {
        *lengthOut = length;
    }
    if (valueOut != nullptr) {
        *valueOut = length != 0 ? value : nullptr;
    }
    *cursor = advanced(value, length);
    if (frame.traces(Trace::Detail)) {
        traceField(frame, tag, value, length);
    }
    return frame.leave(tag);
}
