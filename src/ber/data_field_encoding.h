// How the data of a typed field is encoded, which the writer and the reader of such fields must agree on.
#ifndef DOV0610_BER_DATA_FIELD_ENCODING_H
#define DOV0610_BER_DATA_FIELD_ENCODING_H

#include "dov0610.h"

#include <cstdint>

// A field: its length with this header included, its type, its data.
constexpr int32_t FieldLengthSize = 4;
constexpr int32_t FieldTypeSize = 2;
constexpr int32_t FieldHeaderSize = FieldLengthSize + FieldTypeSize;

enum class DataEncoding {
    Short,   // integer of 2 bytes
    Int,     // integer of 4 bytes
    Long,    // integer of 4 bytes as well
    Counter, // integer of 2 or 4 bytes, a counter or gauge
    Byte,    // one byte
    Raw,     // bytes as they are
    Text,    // bytes of a text without its terminator
    Unknown  // not a type that can be written
};

// The encoding of an attribute, for which the attribute type decides.
inline DataEncoding attributeEncoding(char attrType) noexcept
{
    switch (attrType) {
    case DOV0_ATTRIBUTE_SHORT:
        return DataEncoding::Short;
    case DOV0_ATTRIBUTE_COUNTER:
    case DOV0_ATTRIBUTE_GAUGE:
    case DOV0_ATTRIBUTE_NUMBER_A:
    case DOV0_ATTRIBUTE_NUMBER_QUESTION:
    case DOV0_ATTRIBUTE_NUMBER_HASH:
    case DOV0_ATTRIBUTE_NUMBER_PERCENT:
        return DataEncoding::Counter;
    default:
        return DataEncoding::Raw;
    }
}

// attrType may be null, which is no attribute type in particular.
inline DataEncoding encodingOf(int32_t type, const char *attrType) noexcept
{
    switch (type) {
    case DOV0_DATA_SHORT_16:
    case DOV0_DATA_SHORT_83:
    case DOV0_DATA_SHORT_112:
    case DOV0_DATA_SHORT_256:
    case DOV0_DATA_SHORT_257:
        return DataEncoding::Short;
    case DOV0_DATA_INT_17:
    case DOV0_DATA_INT_64:
    case DOV0_DATA_INT_128:
    case DOV0_DATA_INT_288:
    case DOV0_DATA_INT_352:
        return DataEncoding::Int;
    case DOV0_DATA_LONG_368:
        return DataEncoding::Long;
    case DOV0_DATA_BYTE_48:
        return DataEncoding::Byte;
    case DOV0_DATA_RAW_18:
    case DOV0_DATA_RAW_82:
        return DataEncoding::Raw;
    case DOV0_DATA_TEXT_32:
    case DOV0_DATA_TEXT_33:
    case DOV0_DATA_TEXT_34:
    case DOV0_DATA_TEXT_35:
    case DOV0_DATA_TEXT_36:
    case DOV0_DATA_TEXT_40:
    case DOV0_DATA_TEXT_41:
    case DOV0_DATA_TEXT_80:
    case DOV0_DATA_TEXT_96:
    case DOV0_DATA_TEXT_144:
    case DOV0_DATA_TEXT_272:
    case DOV0_DATA_TEXT_304:
    case DOV0_DATA_TEXT_320:
    case DOV0_DATA_TEXT_336:
    case DOV0_DATA_TEXT_384:
    case DOV0_DATA_TEXT_400:
        return DataEncoding::Text;
    case DOV0_DATA_ATTRIBUTE_81:
        return attributeEncoding(attrType != nullptr ? *attrType : '\0');
    default:
        return DataEncoding::Unknown;
    }
}

// The bytes of an integer in this encoding, where size is that of a counter; 0 when it holds no integer.
inline int32_t integerSize(DataEncoding encoding, int32_t size) noexcept
{
    switch (encoding) {
    case DataEncoding::Short:
        return 2;
    case DataEncoding::Int:
    case DataEncoding::Long:
        return 4;
    case DataEncoding::Counter:
        return size == 2 || size == 4 ? size : 0;
    default:
        return 0;
    }
}

#endif
