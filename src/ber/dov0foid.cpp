// Encodes a dotted object identifier as a BER field.
#include "ber/ber_length.h"
#include "foundation/frame.h"

#include <cstdlib>
#include <cstring>

namespace {

// Room behind the field, as ever.
constexpr int64_t SpareSize = 32;

// Whether a field of this size has that room in a block.
constexpr bool fitsABlock(int64_t size) noexcept
{
    return size <= INT32_MAX - SpareSize;
}
static_assert(fitsABlock(int64_t{INT32_MAX} - 32) && !fitsABlock(int64_t{INT32_MAX} - 31));

// The size of a copy of a text; 0, which is refused, where no block holds it.
constexpr int32_t copySize(size_t length) noexcept
{
    return length < INT32_MAX ? static_cast<int32_t>(length + 1) : 0;
}
static_assert(copySize(INT32_MAX - 1) == INT32_MAX && copySize(INT32_MAX) == 0);

struct Elements {
    int64_t first = 0;
    int64_t second = 0;
    size_t restOffset = 0;   // where the text behind the first two begins
    int64_t encodedSize = 0; // of all, each taken by itself
};

// A wide type whatever the width of long, so that the encoding is the same everywhere. Letters count as 0.
int64_t numberIn(const char *element) noexcept
{
    return std::strtoll(element, nullptr, 10);
}

int32_t encodedSize(int64_t element) noexcept
{
    return element <= 0x7F        ? 1
           : element <= 0x3FFF    ? 2
           : element <= 0x1FFFFF  ? 3
           : element <= 0xFFFFFFF ? 4
                                  : 5;
}

// Splits the text at its dots, which the tokenizer overwrites.
Elements measure(char *text, size_t length) noexcept
{
    Elements elements;
    int32_t count = 0;
    for (char *token = DOV0_strtok(text, "."); token != nullptr; token = DOV0_strtok(nullptr, ".")) {
        const int64_t number = numberIn(token);
        elements.encodedSize += encodedSize(number);
        ++count;
        if (count <= 2) {
            (count == 1 ? elements.first : elements.second) = number;
            const size_t end = static_cast<size_t>(token - text) + std::strlen(token);
            elements.restOffset = end < length ? end + 1 : length;
        }
    }
    return elements;
}

// Seven bits a byte, the most significant first; every byte but the last says that more follow. An element of
// more than 35 bits loses its upper ones, a negative one is its low byte.
unsigned char *storeElement(unsigned char *target, int64_t element) noexcept
{
    const auto bits = static_cast<uint64_t>(element);
    if (element <= 0x7F) {
        *target++ = static_cast<unsigned char>(bits);
        return target;
    }
    for (int32_t group = encodedSize(element) - 1; group > 0; --group) {
        *target++ = static_cast<unsigned char>(0x80 | (bits >> (7 * group) & 0x7F));
    }
    *target++ = static_cast<unsigned char>(bits & 0x7F);
    return target;
}

// A new block with the field, or null. The copy of the text is used up.
unsigned char *encode(const Frame &frame, const char *text, char *copy, size_t length,
                      int32_t &sizeOut) noexcept
{
    const Elements elements = measure(copy, length);
    if (elements.encodedSize == 0) {
        return nullptr;
    }
    const auto contentSize = static_cast<uint32_t>(elements.encodedSize - 1); // the first two share a byte
    const int64_t size = int64_t{1} + 1 + longFormCount(contentSize) + contentSize;
    TRACE(frame, Trace::Detail, "Calculated OID length %d\n", static_cast<int32_t>(size));

    std::memcpy(copy, text, length + 1);
    if (elements.first >= 3) {
        TRACE(frame, Trace::Error, "First OID element must be 0, 1, or 2. Input %d\n",
              static_cast<int32_t>(elements.first));
        return nullptr;
    }
    if (elements.second >= 40) {
        TRACE(frame, Trace::Error, "Second OID element must be less than 40. Input %d\n",
              static_cast<int32_t>(elements.second));
        return nullptr;
    }
    if (!fitsABlock(size)) {
        return nullptr;
    }
    auto *field = static_cast<unsigned char *>(DOV0_GetStorage(static_cast<int32_t>(size + SpareSize)));
    if (field == nullptr) {
        return nullptr;
    }
    unsigned char *target = field;
    *target++ |= DOV0_ASN_OBJECTIDENTIFIER;
    DOV0_FormatBERlengthField(&target, contentSize);
    *target++ = static_cast<unsigned char>(40 * static_cast<uint64_t>(elements.first) +
                                           static_cast<uint64_t>(elements.second));
    char *token = elements.restOffset < length ? DOV0_strtok(copy + elements.restOffset, ".") : nullptr;
    for (; token != nullptr; token = DOV0_strtok(nullptr, ".")) {
        const int64_t element = numberIn(token);
        TRACE(frame, Trace::Detail, "Encode OID element %d\n", static_cast<int32_t>(element));
        target = storeElement(target, element);
    }
    if (target - field != size) {
        DOV0_FreeStorage(&field); // no slot was left for the second tokenizing
    }
    sizeOut = static_cast<int32_t>(size);
    return field;
}

} // namespace

TRACE_CONTROL("dov0foid", DOV0_FormatOIDfromString);
extern "C" int32_t DOV0_FormatOIDfromString(const char *text, unsigned char **berOut,
                                            int32_t *sizeOut) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (berOut != nullptr) {
        *berOut = nullptr;
    }
    if (sizeOut != nullptr) {
        *sizeOut = 0;
    }
    unsigned char *field = nullptr;
    int32_t size = 0;
    const size_t length = text != nullptr ? std::strlen(text) : 0;
    if (length > 0 && berOut != nullptr && sizeOut != nullptr) {
        auto *copy = static_cast<char *>(DOV0_GetStorage(copySize(length)));
        if (copy != nullptr) {
            std::memcpy(copy, text, length + 1);
            field = encode(frame, text, copy, length, size);
            DOV0_FreeStorage(&copy);
        } else {
            TRACE(frame, Trace::Error, "***** Unable to allocate %d bytes for OIDstring\n", copySize(length));
        }
    }
    if (field == nullptr) {
        TRACE(frame, Trace::Error, "*****Error detected in input OID string <%s>\n",
              text != nullptr ? text : "");
        return frame.leave<int32_t>(0);
    }
    *berOut = field;
    *sizeOut = size;
    TRACE(frame, Trace::Detail, "OID string %s -> ", text);
    DUMP(frame, Trace::Detail, field, size, "%02.2X");
    return frame.leave<int32_t>(1);
}
