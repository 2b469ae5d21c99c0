// Tells the UTF encoding type that an encoding's name stands for.
#include "foundation/frame.h"

#include <cstring>

namespace {

struct EncodingName {
    const char *name;
    uint16_t type;
};

constexpr EncodingName EncodingNames[] = {
    {"UTF-16", DOV0_UTF16}, {"UTF-16BE", DOV0_UTF16BE}, {"UTF-16LE", DOV0_UTF16LE},
    {"UTF-32", DOV0_UTF32}, {"UTF-32BE", DOV0_UTF32BE}, {"UTF-32LE", DOV0_UTF32LE},
};

uint16_t typeOf(const char *encoding) noexcept
{
    for (const EncodingName &known : EncodingNames) {
        if (std::strcmp(encoding, known.name) == 0) {
            return known.type;
        }
    }
    return DOV0_UTF_BYTES;
}

} // namespace

TRACE_CONTROL("dov0lgft", DOV0_LNG2_GetFileEncodingType);
extern "C" uint16_t DOV0_LNG2_GetFileEncodingType(const char *encoding) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (encoding == nullptr) {
        TRACE(frame, Trace::Detail, "No encoding value supplied\n");
        return frame.leave<uint16_t>(DOV0_UTF_BYTES);
    }
    TRACE(frame, Trace::Detail, "Getting UTF type for encoding <%s>\n", encoding);
    return frame.leave(typeOf(encoding));
}
