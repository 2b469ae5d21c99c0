// Puts the four values of a Base64 group together to three bytes.
#include "foundation/frame.h"

TRACE_CONTROL("dov0draw", DOV0_DecodeRaw);
extern "C" void DOV0_DecodeRaw(unsigned char *bytes, const unsigned char *sextets) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (bytes == nullptr || sextets == nullptr) {
        TRACE(frame, Trace::Error, "*****Base64 group or target is NULL\n");
        return frame.leave();
    }
    // Values above 63, from padding and from characters outside the alphabet, enter like any other: each byte
    // is put together on its own, in eight bits.
    const uint32_t value0 = sextets[0];
    const uint32_t value1 = sextets[1];
    const uint32_t value2 = sextets[2];
    const uint32_t value3 = sextets[3];
    bytes[0] = static_cast<unsigned char>(value0 << 2 | (value1 >> 4 & 3));
    bytes[1] = static_cast<unsigned char>(value1 << 4 | (value2 >> 2 & 15));
    bytes[2] = static_cast<unsigned char>(value2 << 6 | (value3 & 63));
    frame.leave();
}
