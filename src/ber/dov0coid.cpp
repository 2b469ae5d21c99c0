// Renders sub-identifiers as dotted text.
#include "foundation/frame.h"

#include <cstdio>

TRACE_CONTROL("dov0coid", DOV0_ConvertOIDtoString);
extern "C" char *DOV0_ConvertOIDtoString(const uint32_t *array, int32_t count) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (array == nullptr && count > 0) {
        TRACE(frame, Trace::Error, "*****OID array @%p invalid, count %d\n", static_cast<const void *>(array),
              count);
        return frame.leave<char *>(nullptr);
    }
    constexpr int32_t Size = DOV0_OID_TEXT_SIZE;
    auto *text = static_cast<char *>(DOV0_GetStorage(Size));
    if (text == nullptr) {
        return frame.leave<char *>(nullptr);
    }
    static_assert(Size == 1024);
    TRACE(frame, Trace::Storage, "Allocated OIDstring @%p for length 1024\n", static_cast<void *>(text));
    int32_t used = 0;
    for (int32_t i = 0; i < count && used < Size - 1; ++i) {
        used += std::snprintf(text + used, static_cast<size_t>(Size - used), i == 0 ? "%d" : ".%d",
                              static_cast<int32_t>(array[i]));
    }
    return frame.leave(text);
}
