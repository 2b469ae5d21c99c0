// Tests texts for being decimal numbers.
#ifndef DOV0610_FOUNDATION_IS_NUMERIC_H
#define DOV0610_FOUNDATION_IS_NUMERIC_H

#include <cstdint>

// 1 when every byte of the text is a decimal digit, else 0; an empty text has no other byte, so it
// yields 1. A call within the library, not exported, that reports entry and exit events nevertheless.
int32_t isNumeric(const char *text) noexcept;

#endif
