// Writes the three bytes of one group of mapped Base64 characters.
#include "foundation/frame.h"

TRACE_CONTROL("dov0d2bf", DOV0_DecodeToBuffer);
extern "C" void DOV0_DecodeToBuffer(const DOV0_Base64Group *group, char *target) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (group == nullptr || target == nullptr) {
        TRACE(frame, Trace::Error, "*****Base64 group or target is NULL\n");
        return frame.leave();
    }
    // Always three bytes, also for a tail: the count is not looked at.
    DOV0_DecodeRaw(reinterpret_cast<unsigned char *>(target), group->data);
    frame.leave();
}
