// Tells a path from a plain name by its slash.
#include "foundation/frame.h"

#include <cstring>

TRACE_CONTROL("dov0itfq", DOV0_IsThisFullyQualifiedName);
extern "C" int32_t DOV0_IsThisFullyQualifiedName(const char *text) noexcept
{
    const Frame frame(TRC1__EPB_);

    return frame.leave<int32_t>(text != nullptr && std::strchr(text, '/') != nullptr ? 1 : 0);
}
