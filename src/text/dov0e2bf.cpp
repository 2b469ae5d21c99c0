// Writes the four Base64 characters of one group of bytes.
#include "foundation/frame.h"
#include "text/base64_alphabet.h"

TRACE_CONTROL("dov0e2bf", DOV0_EncodeToBuffer);
extern "C" void DOV0_EncodeToBuffer(const DOV0_Base64Group *group, char *target) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (group == nullptr || target == nullptr) {
        TRACE(frame, Trace::Error, "*****Base64 group or target is NULL\n");
        return frame.leave();
    }
    unsigned char sextets[4];
    DOV0_EncodeRaw(sextets, group->data);
    target[0] = Base64Alphabet[sextets[0]];
    target[1] = Base64Alphabet[sextets[1]];
    target[2] = group->count == 1 ? Base64Padding : Base64Alphabet[sextets[2]];
    target[3] = group->count == 1 || group->count == 2 ? Base64Padding : Base64Alphabet[sextets[3]];
    frame.leave();
}
