// The readers of BER fields, object identifiers and data fields behind a caller who checks lengths as the manual
// advises: what is announced must lie inside what was received before it is looked at.
// Functions: DOV0_ExtractBERfield DOV0_ExtractBERinteger DOV0_GetASN1typeString
// Functions: DOV0_DecodeOIDfromBER DOV0_ConvertOIDtoString DOV0_ExtractDataField
#include "fuzz_target.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <vector>

namespace {

// Each field is a dozen messages, so a few are enough when the trace is on.
constexpr size_t MostTracedBytes = 160;

uint32_t bigEndian(std::string_view bytes)
{
    uint32_t value = 0;
    for (const char byte : bytes) {
        value = value * 256 + static_cast<unsigned char>(byte);
    }
    return value;
}

// A field as its first bytes announce it. Not readable when they are cut off.
struct Announced {
    explicit Announced(std::string_view received)
    {
        if (received.size() < 2) {
            return;
        }
        tag = static_cast<unsigned char>(received[0]);
        const auto first = static_cast<unsigned char>(received[1]);
        const size_t lengthBytes = first < 0x80 ? 1 : first - 0x80U;
        const size_t lengthStart = first < 0x80 ? 1 : 2;
        headerSize = lengthStart + lengthBytes;
        isSupported = lengthBytes < 5;
        length = isSupported ? bigEndian(received.substr(lengthStart, lengthBytes)) : 0;
        isReadable = headerSize <= received.size();
        isWhole = isReadable && length <= received.size() - headerSize;
    }

    uint32_t tag = 0;
    uint32_t length = 0;
    size_t headerSize = 0;
    bool isSupported = false;
    bool isReadable = false;
    bool isWhole = false;
};

const char *nameByModel(uint32_t tag)
{
    switch (tag) {
    case 2:
        return "ASN_INTEGER";
    case 4:
        return "ASN_OCTETSTRING";
    case 5:
        return "ASN_NULL";
    case 6:
        return "ASN_OBJECTIDENTIFIER";
    case 48:
        return "ASN_SEQUENCE";
    default:
        return "UNKNOWN";
    }
}

enum class Decoding { Good, TooLong, Malformed };

Decoding decodedByModel(const std::string &content, std::vector<uint32_t> &elements)
{
    if (content.empty()) {
        return Decoding::Malformed;
    }
    if (content.size() > 96) {
        return Decoding::TooLong;
    }
    const auto first = static_cast<unsigned char>(content[0]);
    elements = {first < 40U ? 0U : first < 80U ? 1U : 2U};
    elements.push_back(first - 40U * elements[0]);
    uint64_t element = 0;
    int continuations = 0;
    for (const char character : content.substr(1)) {
        const auto byte = static_cast<unsigned char>(character);
        element = element * 128 + byte % 128;
        if (byte >= 128) {
            if (++continuations > 4) {
                return Decoding::Malformed;
            }
        } else {
            elements.push_back(static_cast<uint32_t>(element & UINT32_MAX));
            element = 0;
            continuations = 0;
        }
    }
    return continuations == 0 ? Decoding::Good : Decoding::Malformed;
}

std::string dottedByModel(const std::vector<uint32_t> &elements)
{
    std::string text;
    for (const uint32_t element : elements) {
        text += (text.empty() ? "" : ".") + std::to_string(static_cast<int32_t>(element));
    }
    return text.substr(0, DOV0_OID_TEXT_SIZE - 1);
}

void showAsText(const std::vector<uint32_t> &elements)
{
    const auto array = std::make_unique<uint32_t[]>(elements.size());
    std::copy(elements.begin(), elements.end(), array.get());
    const Owned<char> text(DOV0_ConvertOIDtoString(array.get(), static_cast<int32_t>(elements.size())));
    MUST_EQUAL(text.get() == nullptr, takeStorageFailure());
    if (text.get() != nullptr) {
        MUST_EQUAL(std::string(text.get()), dottedByModel(elements));
    }
}

void decodeObjectIdentifier(const std::string &content)
{
    const ExactBuffer bytes = ExactBuffer::ofBytes(content);
    std::vector<uint32_t> expected;
    const Decoding decoding = decodedByModel(content, expected);
    int32_t count = -1;
    const Owned<uint32_t> array(
        DOV0_DecodeOIDfromBER(bytes.bytes(), static_cast<int32_t>(content.size()), &count));
    if (takeStorageFailure() && array.get() == nullptr) {
        MUST_EQUAL(count, 0);
        return;
    }
    MUST_EQUAL(array.get() == nullptr, decoding == Decoding::Malformed);
    if (decoding != Decoding::Good) {
        MUST_EQUAL(count, 0);
        return;
    }
    MUST_EQUAL(count, static_cast<int32_t>(expected.size()));
    MUST(std::equal(expected.begin(), expected.end(), array.get()));
    showAsText(expected);
}

void readInteger(const ExactBuffer &received, size_t position, const Announced &field)
{
    unsigned char *const start = received.bytes() + position;
    unsigned char *cursor = start;
    int32_t value = 4711;
    const int32_t result = DOV0_ExtractBERinteger(&cursor, &value);
    MUST_EQUAL(result, field.tag == 2 && field.length < 5 ? 1 : 0);
    if (result == 1) {
        const std::string_view bytes(received.text() + position + field.headerSize, field.length);
        MUST_EQUAL(static_cast<uint32_t>(value), bigEndian(bytes));
    } else {
        MUST_EQUAL(value, 4711);
    }
    MUST(cursor == (field.tag == 2 ? start + field.headerSize + field.length : start));
}

// Reads field after field, and what is inside sequences.
void readFields(const std::string &received, int depth, uint32_t level)
{
    const ExactBuffer buffer = ExactBuffer::ofBytes(received);
    size_t position = 0;
    for (;;) {
        const Announced field(std::string_view(received).substr(position));
        // With the trace on the value is read as well.
        if (!field.isReadable || (level != 0 && !field.isWhole)) {
            return;
        }
        unsigned char *cursor = buffer.bytes() + position;
        uint32_t length = 4711;
        unsigned char *value = nullptr;
        const uint32_t tag = DOV0_ExtractBERfield(&cursor, &length, &value);
        unsigned char *const valueStart = buffer.bytes() + position + field.headerSize;
        MUST_EQUAL(tag, field.tag);
        MUST_EQUAL(length, field.length);
        MUST(value == (length != 0 ? valueStart : nullptr));
        if (!field.isWhole) {
            return; // what the caller finds out by the length
        }
        MUST(cursor == valueStart + length);
        MUST_EQUAL(std::string(DOV0_GetASN1typeString(static_cast<int32_t>(tag))), nameByModel(tag));
        readInteger(buffer, position, field);
        const std::string content = received.substr(position + field.headerSize, length);
        if (tag == 6) {
            decodeObjectIdentifier(content);
        } else if (tag == 48 && depth < 8) {
            readFields(content, depth + 1, level);
        }
        position += field.headerSize + length;
    }
}

// The bytes of the integer that a data field of this type and length holds, or 0.
size_t integerSizeByModel(uint32_t type, char attrType, size_t length)
{
    static const std::set<uint32_t> twoBytes = {16, 83, 112, 256, 257};
    static const std::set<uint32_t> fourBytes = {17, 64, 128, 288, 352, 368};
    const bool isCounter = type == 81 && std::string("CGA?#%").find(attrType) != std::string::npos;
    if (twoBytes.count(type) != 0 || (type == 81 && attrType == 'S')) {
        return length == 2 ? 2 : 0;
    }
    if (fourBytes.count(type) != 0) {
        return length == 4 ? 4 : 0;
    }
    return isCounter && (length == 2 || length == 4) ? length : 0;
}

void readDataFields(const std::string &record, char attrType)
{
    const ExactBuffer buffer = ExactBuffer::ofBytes(record);
    std::string expected = record;
    size_t position = 0;
    while (record.size() - position >= 6) {
        const uint32_t announced = bigEndian(record.substr(position, 4));
        const uint32_t type = bigEndian(record.substr(position + 4, 2));
        // A length below the header's and one that is no positive number mean no data.
        const size_t size = announced < 6 || announced > INT32_MAX ? 6 : announced;
        if (size > record.size() - position) {
            break; // cut off
        }
        unsigned char *cursor = buffer.bytes() + position;
        unsigned char *data = nullptr;
        int32_t length = -1;
        MUST_EQUAL(static_cast<uint32_t>(DOV0_ExtractDataField(&cursor, &data, &length, &attrType)), type);
        MUST(data == buffer.bytes() + position + 6);
        MUST_EQUAL(length, static_cast<int32_t>(size - 6));
        MUST(cursor == buffer.bytes() + position + size);
        const size_t integerSize = integerSizeByModel(type, attrType, size - 6);
        const uint32_t integer = bigEndian(record.substr(position + 6, integerSize));
        const auto narrow = static_cast<uint16_t>(integer);
        if (integerSize == 2) {
            expected.replace(position + 6, 2, reinterpret_cast<const char *>(&narrow), 2);
        } else if (integerSize == 4) {
            expected.replace(position + 6, 4, reinterpret_cast<const char *>(&integer), 4);
        }
        position += size;
    }
    MUST_EQUAL(buffer.contents(), expected);
}

void refuseNull()
{
    unsigned char *cursor = nullptr;
    MUST_EQUAL(DOV0_ExtractBERfield(nullptr, nullptr, nullptr), 0U);
    MUST_EQUAL(DOV0_ExtractBERfield(&cursor, nullptr, nullptr), 0U);
    MUST_EQUAL(DOV0_ExtractBERinteger(nullptr, nullptr), 0);
    MUST_EQUAL(DOV0_ExtractBERinteger(&cursor, nullptr), 0);
    MUST_EQUAL(DOV0_ExtractDataField(nullptr, nullptr, nullptr, nullptr), 0);
    MUST_EQUAL(DOV0_ExtractDataField(&cursor, nullptr, nullptr, nullptr), 0);
    MUST(cursor == nullptr);
    int32_t count = -1;
    MUST(DOV0_DecodeOIDfromBER(nullptr, 1, &count) == nullptr);
    MUST_EQUAL(count, 0);
    const unsigned char content[] = {0x2B};
    MUST(DOV0_DecodeOIDfromBER(content, 1, nullptr) == nullptr);
    MUST(DOV0_ConvertOIDtoString(nullptr, 1) == nullptr);
    showAsText({});
}

} // namespace

void fuzzOneInput(FuzzInput &input)
{
    if (input.remaining() == 0) {
        return refuseNull();
    }
    const int32_t kind = input.number(0, 3);
    const auto attrType = static_cast<char>(input.byte());
    const std::string bytes = input.take(input.level == 0 ? SIZE_MAX : MostTracedBytes);
    if (kind == 0) {
        readFields(bytes, 0, input.level);
    } else if (kind == 1) {
        readDataFields(bytes, attrType);
    } else if (kind == 2) {
        decodeObjectIdentifier(bytes);
    } else {
        std::vector<uint32_t> elements;
        for (size_t i = 0; i + 4 <= bytes.size(); i += 4) {
            elements.push_back(bigEndian(bytes.substr(i, 4)));
        }
        showAsText(elements);
    }
}
