// Which code page number a converter name stands for, and which converter a number names.
#ifndef DOV0610_NLS_CODEPAGE_NAMES_H
#define DOV0610_NLS_CODEPAGE_NAMES_H

#include "dov0610_platform.h"

#include <cstdint>

// The code page of a converter. Returns 0 with U_FILE_ACCESS_ERROR for an unknown name and with
// U_UNSUPPORTED_ERROR for a converter that has no number.
int32_t codepageOf(const char *converterName, int32_t &status) noexcept;

// A name under which ICU opens the converter of a code page; false when it has none.
bool nameConverterOf(int32_t codepage, char (&name)[LNG2_CODEPAGE_NAME_SIZE]) noexcept;

#endif
