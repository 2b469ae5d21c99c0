// Tells whether a block may be used, which means no more than that its pointer is not null. A leaf: no flow
// events.
#include "foundation/frame.h"

TRACE_CONTROL("dov0ivbp", DOV0_IsValidBlockPointer);
extern "C" int32_t DOV0_IsValidBlockPointer(const void *pointer) noexcept
{
    const TraceLevel level(TRC1__EPB_);

    if (pointer == nullptr) {
        TRACE(level, Trace::State, "Input block pointer is NULL\n");
        return 0;
    }
    TRACE(level, Trace::State, "Input block pointer @%p is valid\n", pointer);
    return 1;
}
