// Reads one typed field of a record of the data collection host and converts its integers to host order in place.
#include "ber/ber_length.h"
#include "ber/big_endian.h"
#include "ber/data_field_encoding.h"
#include "foundation/frame.h"

#include <cstring>

namespace {

// An integer of two or four bytes in place of its network form.
uint32_t convertToHostOrder(unsigned char *data, int32_t size) noexcept
{
    const uint32_t integer = loadBigEndian(data, size);
    if (size == 2) {
        const auto narrow = static_cast<uint16_t>(integer);
        std::memcpy(data, &narrow, sizeof narrow);
    } else {
        std::memcpy(data, &integer, sizeof integer);
    }
    return integer;
}

} // namespace

TRACE_CONTROL("dov0edfd", DOV0_ExtractDataField);
extern "C" int32_t DOV0_ExtractDataField(unsigned char **cursor, unsigned char **dataOut, int32_t *lengthOut,
                                         const char *attrType) noexcept
{
    const Frame frame(TRC1__EPB_);

    unsigned char *const field = cursor != nullptr ? *cursor : nullptr;
    if (field == nullptr) {
        TRACE(frame, Trace::Error, "***Error: received invalid field @%p\n", static_cast<void *>(field));
        return frame.leave<int32_t>(0);
    }
    // Read as a signed number, so that a length of 2^31 or more is below the header's like a short one.
    auto fieldLength = static_cast<int32_t>(loadBigEndian(field, FieldLengthSize));
    if (fieldLength < FieldHeaderSize) {
        fieldLength = FieldHeaderSize;
    }
    const auto type = static_cast<int32_t>(loadBigEndian(field + FieldLengthSize, FieldTypeSize));
    unsigned char *const data = field + FieldHeaderSize;
    const int32_t length = fieldLength - FieldHeaderSize;
    if (dataOut != nullptr) {
        *dataOut = data;
    }
    if (lengthOut != nullptr) {
        *lengthOut = length;
    }
    *cursor = advanced(field, static_cast<uint32_t>(fieldLength));

    const DataEncoding encoding = encodingOf(type, attrType);
    const int32_t integerBytes = integerSize(encoding, length);
    if (encoding == DataEncoding::Unknown && type != DOV0_DATA_NONE) {
        TRACE(frame, Trace::Detail, "Received unsupported DCH data type: %d\n", type);
    } else if (integerBytes != 0 && integerBytes == length) {
        const uint32_t integer = convertToHostOrder(data, integerBytes);
        if (encoding == DataEncoding::Long) {
            TRACE(frame, Trace::Detail, "Copying %d bytes from LongValue <%ld> for DCH_objectPtr\n",
                  integerBytes, static_cast<long>(static_cast<int32_t>(integer)));
        }
    }
    return frame.leave<int32_t>(type);
}
