// Gives a locale object for the process's default locale.
#include "nls/locale_object.h"

#include <unicode/uloc.h>

extern "C" LNG2_Locale *LNG2_GetLocale(const void * /*selector1*/, const void * /*selector2*/,
                                       const void * /*selector3*/, int32_t *status)
{
    return newLocaleObject(uloc_getDefault(), status);
}
