// Gives a locale object for the calling thread, with the code page that goes with its language.
#include "nls/locale_object.h"

#include <clocale>
#include <cstdio>
#include <cstring>
#include <langinfo.h>
#include <unicode/uloc.h>

namespace {

// The ICU name of the locale that the thread chose for itself; false when it chose none.
bool nameChosenLocale(char (&name)[LNG2_LOCALE_NAME_SIZE])
{
    locale_t chosen = uselocale(nullptr);
    if (chosen == LC_GLOBAL_LOCALE) {
        return false;
    }
    std::snprintf(name, sizeof name, "%s", nl_langinfo_l(NL_LOCALE_NAME(LC_MESSAGES), chosen));
    name[std::strcspn(name, ".@")] = '\0'; // without the character set and the modifier
    if (std::strcmp(name, "C") == 0 || std::strcmp(name, "POSIX") == 0) {
        std::strncpy(name, "en_US_POSIX", sizeof name); // what ICU takes them for
    }
    return true;
}

} // namespace

extern "C" LNG2_Locale *LNG2_GetThreadLocale(int32_t *status)
{
    char chosen[LNG2_LOCALE_NAME_SIZE];
    LNG2_Locale *locale = newLocaleObject(nameChosenLocale(chosen) ? chosen : uloc_getDefault(), status);
    if (locale != nullptr) {
        locale->codepage = windowsCodepageOf(locale->name);
    }
    return locale;
}
