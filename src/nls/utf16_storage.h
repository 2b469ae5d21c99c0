// Working storage for UTF-16 text.
#ifndef DOV0610_NLS_UTF16_STORAGE_H
#define DOV0610_NLS_UTF16_STORAGE_H

#include "dov0610.h"

constexpr int64_t bytesOfUnits(int32_t units) noexcept
{
    return int64_t{units} * static_cast<int64_t>(sizeof(char16_t));
}

// A zero-filled buffer, or null when there is no storage. Sizes beyond 32 bits cannot be had at all.
inline char16_t *allocateUnits(int32_t units) noexcept
{
    const int64_t bytes = bytesOfUnits(units);
    return bytes <= INT32_MAX ? static_cast<char16_t *>(DOV0_GetStorage(static_cast<int32_t>(bytes)))
                              : nullptr;
}

#endif
