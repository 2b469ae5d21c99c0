// What the bits of a UTF encoding type say.
#ifndef DOV0610_NLS_ENCODING_TYPE_H
#define DOV0610_NLS_ENCODING_TYPE_H

#include "dov0610.h"

// Bytes of a code unit by the type's bits alone: 0, 2, 4, or for a senseless type 6.
constexpr int32_t unitWidth(uint16_t type) noexcept
{
    return type & (DOV0_UTF_16BIT | DOV0_UTF_32BIT);
}

// Whether the type is one that an encoding name stands for.
constexpr bool isFixedWidth(uint16_t type) noexcept
{
    switch (type) {
    case DOV0_UTF16:
    case DOV0_UTF16BE:
    case DOV0_UTF16LE:
    case DOV0_UTF32:
    case DOV0_UTF32BE:
    case DOV0_UTF32LE:
        return true;
    default:
        return false;
    }
}

#endif
