// Reserved for fields in XML. Callers may pass anything; nothing is read.
#include "foundation/frame.h"

TRACE_CONTROL("dov0exml", DOV0_ExtractXMLfield);
extern "C" int32_t DOV0_ExtractXMLfield(...) noexcept
{
    const Frame frame(TRC1__EPB_);

    return frame.leave<int32_t>(0);
}
