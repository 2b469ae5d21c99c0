// Writes one typed field into a record for the data collection host and adds its length to that of the record.
#include "ber/big_endian.h"
#include "ber/data_field_encoding.h"
#include "foundation/frame.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int32_t CounterDumpSize = 16;

// The bytes of data that a value takes; below 0 or too large when the caller's size is senseless.
int64_t dataSizeOf(DataEncoding encoding, const void *value, int32_t size) noexcept
{
    switch (encoding) {
    case DataEncoding::Byte:
        return 1;
    case DataEncoding::Raw:
        return size;
    case DataEncoding::Text:
        return value != nullptr ? static_cast<int64_t>(std::strlen(static_cast<const char *>(value))) : 0;
    default:
        return integerSize(encoding, size);
    }
}

// The bits of an integer of two or four bytes in host order, at any alignment.
uint32_t integerAt(const void *value, int32_t size) noexcept
{
    if (size == 2) {
        uint16_t integer = 0;
        std::memcpy(&integer, value, sizeof integer);
        return integer;
    }
    uint32_t integer = 0;
    std::memcpy(&integer, value, sizeof integer);
    return integer;
}

[[noreturn]] void endProcess() noexcept
{
    std::fputs("Logic error. Received invalid DCH data type.  Exiting...\n\n", stdout);
    std::fflush(stdout); // abort would lose it when standard output is a pipe or a file
    std::abort();
}

// Appends the data of a field and returns its size, 0 when the value cannot be used.
int32_t appendData(const Frame &frame, unsigned char *data, int32_t type, DataEncoding encoding,
                   const void *value, int32_t size) noexcept
{
    if (encoding == DataEncoding::Counter && integerSize(encoding, size) == 0) {
        TRACE(frame, Trace::Error, "***Error: received unsupported Counter/Gauge attribute size: %d\n", size);
        if (value != nullptr) {
            DUMP(frame, Trace::Error, value, CounterDumpSize, "%02.2X");
        }
        return 0;
    }
    const int64_t dataSize = dataSizeOf(encoding, value, size);
    if (dataSize == 0) {
        return 0;
    }
    if (value == nullptr || dataSize < 0 || dataSize > INT32_MAX - FieldHeaderSize) {
        TRACE(frame, Trace::Error, "***Error: received invalid value @%p size %d for DCH data type: %d\n",
              value, size, type);
        return 0;
    }
    const int32_t integerBytes = integerSize(encoding, size);
    if (integerBytes == 0) {
        std::memmove(data, value, static_cast<size_t>(dataSize)); // the value may already be in the record
        return static_cast<int32_t>(dataSize);
    }
    const uint32_t integer = integerAt(value, integerBytes);
    if (encoding == DataEncoding::Int) {
        TRACE(frame, Trace::Detail, "Copying %d bytes from IntValue <%d>\n", integerBytes,
              static_cast<int32_t>(integer));
    } else if (encoding == DataEncoding::Long) {
        TRACE(frame, Trace::Detail, "Copying %d bytes from LongValue <%ld> for DCH_objectPtr\n", integerBytes,
              static_cast<long>(static_cast<int32_t>(integer)));
    }
    storeBigEndian(data, integer, integerBytes);
    return integerBytes;
}

} // namespace

TRACE_CONTROL("dov0fdfd", DOV0_FormatDataField);
extern "C" int32_t DOV0_FormatDataField(void *totalLength, void *field, int32_t type, const void *value,
                                        int32_t size, const char *attrType) noexcept
{
    const Frame frame(TRC1__EPB_);

    auto *const total = static_cast<unsigned char *>(totalLength);
    auto *const start = static_cast<unsigned char *>(field);
    TRACE(frame, Trace::Detail, "Buffer @%p TLptr @%p\n", field, totalLength);
    if (total == nullptr || start == nullptr) {
        TRACE(frame, Trace::Error, "***Error: received invalid record @%p field @%p\n", totalLength, field);
        return frame.leave<int32_t>(0);
    }
    if (start == total + FieldLengthSize) { // the first field begins the record
        storeBigEndian(total, FieldLengthSize, FieldLengthSize);
    }
    unsigned char *const data =
        storeBigEndian(start + FieldLengthSize, static_cast<uint32_t>(type), FieldTypeSize);
    const DataEncoding encoding = encodingOf(type, attrType);
    if (encoding == DataEncoding::Unknown) {
        // A provider that makes up types is wrong, and must not go on.
        TRACE(frame, Trace::Error, "***Error: received unsupported DCH data type: %d", type);
        endProcess();
    }
    const int32_t length = FieldHeaderSize + appendData(frame, data, type, encoding, value, size);
    storeBigEndian(total, loadBigEndian(total, FieldLengthSize) + static_cast<uint32_t>(length),
                   FieldLengthSize);
    storeBigEndian(start, static_cast<uint32_t>(length), FieldLengthSize);
    return frame.leave<int32_t>(length);
}
