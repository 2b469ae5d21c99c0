// Looks up the code page that a converter name stands for.
#include "nls/codepage_names.h"

extern "C" int32_t LNG2_GetCodepageId(const char *converterName, int32_t *status)
{
    int32_t found = 0;
    const int32_t codepage = codepageOf(converterName, found);
    if (status != nullptr) {
        *status = found;
    }
    return codepage;
}
