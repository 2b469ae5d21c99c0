// Splits three bytes into the four six-bit values of a Base64 group.
#include "foundation/frame.h"

TRACE_CONTROL("dov0eraw", DOV0_EncodeRaw);
extern "C" void DOV0_EncodeRaw(unsigned char *sextets, const unsigned char *bytes) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (sextets == nullptr || bytes == nullptr) {
        TRACE(frame, Trace::Error, "*****Base64 group or target is NULL\n");
        return frame.leave();
    }
    const uint32_t bits = uint32_t{bytes[0]} << 16 | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]};
    sextets[0] = static_cast<unsigned char>(bits >> 18);
    sextets[1] = static_cast<unsigned char>(bits >> 12 & 0x3F);
    sextets[2] = static_cast<unsigned char>(bits >> 6 & 0x3F);
    sextets[3] = static_cast<unsigned char>(bits & 0x3F);
    frame.leave();
}
