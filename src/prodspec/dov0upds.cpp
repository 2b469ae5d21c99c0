// Changes one value of the product specification in effect.
#include "foundation/frame.h"
#include "prodspec/product_spec_table.h"

#include <cstdio>

namespace {

// A switch that holds a shared constant gets a private text for its new first character, so that the constant and the
// other switches stay as they are; everything else gets a copy of the whole text. False without storage.
bool replaceValue(int32_t index, const char *newValue) noexcept
{
    if (isSharedConstant(productSpecValue(index))) {
        const char character[] = {newValue[0], '\0'};
        return copyProductSpecValue(index, character);
    }
    return copyProductSpecValue(index, newValue);
}

} // namespace

TRACE_CONTROL("dov0upds", DOV0_UpdateProductSpec);
extern "C" int32_t DOV0_UpdateProductSpec(int32_t index, const char *newValue) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (frame.traces(Trace::Detail)) {
        TRACE_ALWAYS(frame, "Entering UpdateProductSpec with ProdSpec %d NewProductSpecValue <%s>\n", index,
                     shown(newValue));
        std::fflush(stdout);
    }
    if (index < DOV0_PSF_PACKAGED_SOLUTION || index > DOV0_PSF_RESERVED) {
        TRACE(frame, Trace::Error, "*****Input Product Specification %d is invalid\n", index);
        return frame.leave<int32_t>(0);
    }
    if (ProductSpecInitialized.load(std::memory_order_acquire) == 0) {
        TRACE(frame, Trace::Error, "*****Logic error. Product Specification %d not yet initialized\n", index);
        return frame.leave<int32_t>(0);
    }
    // The reserved index is valid, yet there is no keyword behind it to change.
    if (index == DOV0_PSF_RESERVED || newValue == nullptr) {
        return frame.leave<int32_t>(0);
    }
    if (newValue[0] == 'N' && isUnsetWhenOff(index)) {
        setProductSpecValue(index, nullptr);
    } else if (!replaceValue(index, newValue)) {
        return frame.leave<int32_t>(0);
    }
    TRACE(frame, Trace::Detail, "%s=%s\n", ProductSpecNameArray[index], shown(productSpecValue(index)));
    return frame.leave<int32_t>(1);
}
