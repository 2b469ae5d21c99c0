// Names a BER tag for messages and listings.
#include "foundation/frame.h"

namespace {

const char *nameOf(unsigned char tag) noexcept
{
    switch (tag) {
    case DOV0_ASN_INTEGER:
        return "ASN_INTEGER";
    case DOV0_ASN_OCTETSTRING:
        return "ASN_OCTETSTRING";
    case DOV0_ASN_NULL:
        return "ASN_NULL";
    case DOV0_ASN_OBJECTIDENTIFIER:
        return "ASN_OBJECTIDENTIFIER";
    case DOV0_ASN_SEQUENCE:
        return "ASN_SEQUENCE";
    default:
        return "UNKNOWN";
    }
}

} // namespace

TRACE_CONTROL("dov0gats", DOV0_GetASN1typeString);
extern "C" const char *DOV0_GetASN1typeString(int32_t tag) noexcept
{
    const Frame frame(TRC1__EPB_);

    return frame.leave(nameOf(static_cast<unsigned char>(tag)));
}
