// A decimal number at the beginning of a text, as timestamps and dates hold them.
#ifndef DOV0610_TIME_DECIMAL_NUMBER_H
#define DOV0610_TIME_DECIMAL_NUMBER_H

#include <algorithm>
#include <cstdint>
#include <cstdlib>

// Reads like atoi: white space, a sign, digits, and 0 where there are none. One beyond 32 bits becomes the
// nearest number within them.
inline int32_t numberAt(const char *text) noexcept
{
    return static_cast<int32_t>(std::clamp<long>(std::strtol(text, nullptr, 10), INT32_MIN, INT32_MAX));
}

#endif
