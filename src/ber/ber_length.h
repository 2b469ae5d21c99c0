// The length field of a BER field, and what a length that came from outside may do to a pointer and to the trace.
#ifndef DOV0610_BER_BER_LENGTH_H
#define DOV0610_BER_BER_LENGTH_H

#include <cstdint>

// Marks the first byte of a length field in the long form; the other seven bits count the bytes that follow.
constexpr unsigned char LongForm = 0x80;

// The largest value that is read for the trace. A length beyond it is more likely an attack than a value.
constexpr uint32_t LargestTracedValue = 0x01000000;

// The number of length bytes that follow the first byte of a length field; 0 in the short form. 0x81 is never
// written: a length of 128 to 255 takes two bytes, on purpose.
constexpr int32_t longFormCount(uint32_t length) noexcept
{
    return length <= 0x7F ? 0 : length <= 0xFFFF ? 2 : length <= 0xFFFFFF ? 3 : 4;
}

// Moves a pointer on by a length that may be any number, without passing the end of the address space.
inline unsigned char *advanced(unsigned char *pointer, uint32_t length) noexcept
{
    const uintptr_t room = UINTPTR_MAX - reinterpret_cast<uintptr_t>(pointer);
    return pointer + (length <= room ? length : room);
}

#endif
