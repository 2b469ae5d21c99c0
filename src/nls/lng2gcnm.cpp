// Looks up a converter name of a code page.
#include "nls/codepage_names.h"

#include <cstring>

extern "C" int32_t LNG2_GetCodepageName(int32_t codepage, char *name, int32_t nameSize)
{
    char found[LNG2_CODEPAGE_NAME_SIZE];
    if (name == nullptr || nameSize < 1 || !nameConverterOf(codepage, found)) {
        return -1;
    }
    const size_t length = std::strlen(found);
    if (length >= static_cast<size_t>(nameSize)) {
        return -1;
    }
    std::memcpy(name, found, length + 1);
    return 0;
}
