// Answers a query for one value of the product specification.
#include "foundation/frame.h"
#include "prodspec/product_spec_table.h"

TRACE_CONTROL("dov0qpds", DOV0_QueryProductSpec);
extern "C" const char *DOV0_QueryProductSpec(int32_t index) noexcept
{
    const Frame frame(TRC1__EPB_);

    // One more index than there are keywords is valid; its entry is never set.
    if (index < DOV0_PSF_PACKAGED_SOLUTION || index > DOV0_PSF_RESERVED) {
        TRACE(frame, Trace::Error, "*****Input Product Specification %d is invalid\n", index);
        return frame.leaveUnreported<const char *>(nullptr);
    }
    if (ProductSpecInitialized.load(std::memory_order_acquire) == 0) {
        // Callers ask for the instance name before they know whether there is a specification.
        if (index == DOV0_PSF_INSTANCE_NAME) {
            TRACE(frame, Trace::Detail, "Instance Name specification not yet initialized\n");
        } else {
            TRACE(frame, Trace::Error, "*****Logic error. Product Specification %d not yet initialized\n",
                  index);
        }
        return frame.leaveUnreported<const char *>(nullptr);
    }
    const char *value = productSpecValue(index);
    if (value != nullptr) {
        TRACE(frame, Trace::Detail, "Returning <%s> for Product Specification %d\n", value, index);
    } else if (index == DOV0_PSF_PACKAGED_SOLUTION) {
        TRACE(frame, Trace::Detail, "Returning NULL for DOV2_PACKAGED_SOLUTION query\n");
    } else {
        TRACE(frame, Trace::Detail, "Returning NULL for Product Specification %d\n", index);
    }
    return frame.leave(value);
}
