// Integers in network byte order, byte by byte: the same on every host, and at any alignment.
#ifndef DOV0610_BER_BIG_ENDIAN_H
#define DOV0610_BER_BIG_ENDIAN_H

#include <cstdint>

// Writes the lowest count bytes of a value, most significant first, and returns where the next byte goes.
inline unsigned char *storeBigEndian(unsigned char *target, uint32_t value, int32_t count) noexcept
{
    for (int32_t shift = 8 * (count - 1); shift >= 0; shift -= 8) {
        *target++ = static_cast<unsigned char>(value >> shift);
    }
    return target;
}

// Reads an unsigned integer of count bytes, 4 at most, most significant first.
inline uint32_t loadBigEndian(const unsigned char *source, int32_t count) noexcept
{
    uint32_t value = 0;
    for (int32_t i = 0; i < count; ++i) {
        value = value << 8 | source[i];
    }
    return value;
}

#endif
