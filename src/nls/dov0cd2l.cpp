// Brings data from the network character set into the local one, in place.
#include "foundation/frame.h"
#include "nls/network_character_set.h"

TRACE_CONTROL("dov0cd2l", DOV0_ConvertDataToLocal);
extern "C" void DOV0_ConvertDataToLocal(void *buffer, int32_t length) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (Local_A == NETWORK_A || Local_A != ASCII_A || length < 1) {
        return frame.leave();
    }
    if (buffer == nullptr) {
        TRACE(frame, Trace::Error, "***** Input buffer is NULL\n");
        return frame.leave();
    }
    auto *bytes = static_cast<unsigned char *>(buffer);
    for (int32_t i = 0; i < length; ++i) {
        bytes[i] = ebcdic_to_ascii[bytes[i]];
    }
    frame.leave();
}
