// Writes a BER field that holds nothing.
#include "foundation/frame.h"

TRACE_CONTROL("dov0fbnt", DOV0_FormatBERnullType);
extern "C" int32_t DOV0_FormatBERnullType(unsigned char **cursor) noexcept
{
    const Frame frame(TRC1__EPB_);

    unsigned char *target = cursor != nullptr ? *cursor : nullptr;
    if (target == nullptr) {
        TRACE(frame, Trace::Error, "*****Input parameter invalid @%p\n", static_cast<void *>(target));
        return frame.leave<int32_t>(0);
    }
    *target++ = DOV0_ASN_NULL;
    *target++ = 0;
    *cursor = target;
    return frame.leave<int32_t>(2);
}
