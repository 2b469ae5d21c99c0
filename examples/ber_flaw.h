// The check in front of the library's BER readers, which do not know where the buffer ends.
#ifndef DOV0610_EXAMPLES_BER_FLAW_H
#define DOV0610_EXAMPLES_BER_FLAW_H

#include <cstddef>
#include <cstdint>

// What is wrong with the field that begins here, or null when all of it lies before the end. Asked before each field
// is read, and only when there is a byte left.
inline const char *flawOf(const unsigned char *field, const unsigned char *end)
{
    constexpr unsigned int NumberFollows = 0x1F; // in a tag
    const auto left = static_cast<size_t>(end - field);
    if ((field[0] & NumberFollows) == NumberFollows) {
        return "has a tag of several bytes";
    }
    if (left < 2) {
        return "ends before its length";
    }
    size_t headerSize = 2;
    size_t length = field[1];
    if (field[1] >= 0x80) {
        const size_t count = field[1] & 0x7FU;
        headerSize += count;
        length = 0;
        if (count == 0 || count > sizeof(uint32_t)) {
            return "has a length of a form that is not supported";
        }
        if (left < headerSize) {
            return "ends inside its length";
        }
        for (size_t i = 2; i < headerSize; ++i) {
            length = length << 8 | field[i];
        }
    }
    return length > left - headerSize ? "is longer than what is left" : nullptr;
}

#endif
