// Writes a BER field that holds a signed integer in one to four bytes.
#include "ber/big_endian.h"
#include "foundation/frame.h"

namespace {

// The magnitude decides, so that some negative values take a byte more than they need, and the lowest
// integer, whose magnitude overflows to itself, takes one. Peers rely on it.
int32_t bytesOf(int32_t value) noexcept
{
    if (value == INT32_MIN) {
        return 1;
    }
    const int32_t magnitude = value < 0 ? -value : value;
    return magnitude <= 0x7F ? 1 : magnitude <= 0x7FFF ? 2 : magnitude <= 0x7FFFFF ? 3 : 4;
}

} // namespace

TRACE_CONTROL("dov0fbit", DOV0_FormatBERintegerType);
extern "C" int32_t DOV0_FormatBERintegerType(unsigned char **cursor, unsigned char tag,
                                             int32_t value) noexcept
{
    const Frame frame(TRC1__EPB_);

    unsigned char *const field = cursor != nullptr ? *cursor : nullptr;
    if (field == nullptr) {
        TRACE(frame, Trace::Error, "*****Input parameter invalid @%p\n", static_cast<void *>(field));
        return frame.leave<int32_t>(0);
    }
    unsigned char *target = field;
    *target++ |= tag; // the other writers assign theirs; this one leaves bits that are set
    const int32_t size = bytesOf(value);
    DOV0_FormatBERlengthField(&target, static_cast<uint32_t>(size));
    target = storeBigEndian(target, static_cast<uint32_t>(value), size);
    *cursor = target;
    const auto written = static_cast<int32_t>(target - field);
    DUMP(frame, Trace::Detail, field, written, "%02.2X");
    return frame.leave<int32_t>(written);
}
