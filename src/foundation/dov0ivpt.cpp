// Tells whether a pointer may be used, which means no more than that it is not null. A leaf: no flow events.
#include "foundation/frame.h"

TRACE_CONTROL("dov0ivpt", DOV0_IsValidPointer);
extern "C" int32_t DOV0_IsValidPointer(const void *pointer) noexcept
{
    const TraceLevel level(TRC1__EPB_);

    if (pointer == nullptr) {
        TRACE(level, Trace::State, "Input pointer is NULL\n");
        return 0;
    }
    TRACE(level, Trace::State, "Input pointer @%p is valid\n", pointer);
    return 1;
}
