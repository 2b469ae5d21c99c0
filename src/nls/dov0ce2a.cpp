// Turns EBCDIC data into 7-bit ASCII in place, whatever the local character set.
#include "foundation/frame.h"
#include "nls/network_character_set.h"

TRACE_CONTROL("dov0ce2a", DOV0_ConvertEBCDICtoASCII);
extern "C" void DOV0_ConvertEBCDICtoASCII(void *buffer, int32_t length) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (length < 1) {
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
