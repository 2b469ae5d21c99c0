// Brings local data into the network character set, in place.
#include "foundation/frame.h"
#include "nls/network_character_set.h"

TRACE_CONTROL("dov0cd2n", DOV0_ConvertDataToNetwork);
extern "C" void DOV0_ConvertDataToNetwork(void *buffer, int32_t length) noexcept
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
        const unsigned char byte = bytes[i];
        if (byte < ascii_to_ebcdic.size()) {
            bytes[i] = ascii_to_ebcdic[byte];
        } else {
            TRACE(frame, Trace::Detail,
                  "Warning: *src %d exceeds ascii_to_ebcdic array size, substituting question mark\n", byte);
            bytes[i] = EBCDICQuestionMark;
        }
    }
    frame.leave();
}
