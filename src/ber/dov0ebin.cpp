// Reads one BER field that holds an integer of up to four bytes.
#include "ber/big_endian.h"
#include "foundation/frame.h"

TRACE_CONTROL("dov0ebin", DOV0_ExtractBERinteger);
extern "C" int32_t DOV0_ExtractBERinteger(unsigned char **cursor, int32_t *valueOut) noexcept
{
    const Frame frame(TRC1__EPB_);

    unsigned char *const start = cursor != nullptr ? *cursor : nullptr;
    uint32_t length = 0;
    unsigned char *bytes = nullptr;
    const uint32_t tag = DOV0_ExtractBERfield(cursor, &length, &bytes);
    if (tag != DOV0_ASN_INTEGER) {
        TRACE(frame, Trace::Error, "*****current BER field %x in buffer is not integer type\n", tag);
        if (cursor != nullptr) {
            *cursor = start;
        }
        return frame.leave<int32_t>(0);
    }
    if (length > sizeof(int32_t)) {
        TRACE(frame, Trace::Error, "*****unsupported BER integer size %d too large\n",
              static_cast<int32_t>(length));
        return frame.leave<int32_t>(0);
    }
    // No sign extension: a negative value in fewer than four bytes is read as an unsigned one, on purpose.
    const auto value = static_cast<int32_t>(loadBigEndian(bytes, static_cast<int32_t>(length)));
    if (valueOut != nullptr) {
        *valueOut = value;
    }
    TRACE(frame, Trace::Detail, "Extracted BER integer value is %d\n", value);
    return frame.leave<int32_t>(1);
}
