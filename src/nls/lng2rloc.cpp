// Takes a locale object back.
#include "dov0610_platform.h"

#include <cstdlib>

extern "C" void LNG2_ReleaseLocale(LNG2_Locale *locale)
{
    std::free(locale);
}
