#include "nls/locale_object.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unicode/uloc.h>

namespace {

constexpr int32_t CyrillicCodepage = 1251;
constexpr int32_t LatinTurkicCodepage = 1254;
constexpr int32_t ArabicCodepage = 1256;
constexpr int32_t SimplifiedChineseCodepage = 936;
constexpr int32_t TraditionalChineseCodepage = 950;

struct LanguageGroup {
    int32_t codepage;
    const char *languages; // each with a blank before and behind
};

// Languages in the script they are written in when their locale names none.
constexpr LanguageGroup LanguageGroups[] = {
    {1252, " af arn br ca co cy da de en es eu fi fil fo fr fy ga gd gl gsw ha id ig is it kl lb mi moh ms "
           "nb nl nn no nso oc pt qu quc quz rm rw se sma smj smn sms st sv sw tn tzm wo xh yo zu "},
    {1250, " bs cs dsb hr hsb hu pl ro sk sl sq tk "},
    {CyrillicCodepage, " ba be bg kk ky mk mn ru sah sr tg tt uk "},
    {1253, " el "},
    {LatinTurkicCodepage, " az tr uz "},
    {1255, " he iw yi "},
    {ArabicCodepage, " ar fa prs ps sd ug ur "},
    {1257, " et lt lv "},
    {1258, " vi "},
    {874, " th "},
    {932, " ja "},
    {SimplifiedChineseCodepage, " zh "},
    {949, " ko "},
};

struct ScriptException {
    const char *language;
    const char *scriptOrCountry;
    int32_t codepage;
};

constexpr ScriptException ScriptExceptions[] = {
    {"az", "Cyrl", CyrillicCodepage},
    {"bs", "Cyrl", CyrillicCodepage},
    {"iu", "Latn", 1252},
    {"ku", "Arab", ArabicCodepage},
    {"pa", "Arab", ArabicCodepage},
    {"sr", "Latn", 1250},
    {"tg", "Latn", LatinTurkicCodepage},
    {"uz", "Cyrl", CyrillicCodepage},
    {"zh", "Hant", TraditionalChineseCodepage},
    {"zh", "TW", TraditionalChineseCodepage},
    {"zh", "HK", TraditionalChineseCodepage},
    {"zh", "MO", TraditionalChineseCodepage},
};

constexpr int32_t PartSize = 32;

int32_t languageIdOf(const char *localeName) noexcept
{
    char language[PartSize] = "";
    UErrorCode error = U_ZERO_ERROR;
    uloc_getLanguage(localeName, language, PartSize - 1, &error);
    if (std::strcmp(language, "el") == 0) {
        return LNG2_LANGUAGE_GREEK;
    }
    if (std::strcmp(language, "tr") == 0) {
        return LNG2_LANGUAGE_TURKISH;
    }
    return static_cast<int32_t>(uloc_getLCID(localeName));
}

} // namespace

LNG2_Locale *newLocaleObject(const char *name, int32_t *status) noexcept
{
    auto *locale = static_cast<LNG2_Locale *>(std::malloc(sizeof(LNG2_Locale)));
    if (status != nullptr) {
        *status = locale != nullptr ? U_ZERO_ERROR : U_MEMORY_ALLOCATION_ERROR;
    }
    if (locale == nullptr) {
        return nullptr;
    }
    locale->languageId = languageIdOf(name);
    locale->codepage = 0;
    std::snprintf(locale->name, sizeof locale->name, "%s", name);
    return locale;
}

int32_t windowsCodepageOf(const char *localeName) noexcept
{
    char language[PartSize] = "";
    char script[PartSize] = "";
    char country[PartSize] = "";
    UErrorCode error = U_ZERO_ERROR;
    uloc_getLanguage(localeName, language, PartSize - 1, &error);
    uloc_getScript(localeName, script, PartSize - 1, &error);
    uloc_getCountry(localeName, country, PartSize - 1, &error);
    if (U_FAILURE(error)) {
        return LNG2_CODEPAGE_UTF8;
    }
    // A named script decides before the country does: zh_Hans_HK is written in simplified characters.
    const char *decisive = script[0] != '\0' ? script : country;
    for (const ScriptException &exception : ScriptExceptions) {
        if (std::strcmp(language, exception.language) == 0 &&
            std::strcmp(decisive, exception.scriptOrCountry) == 0) {
            return exception.codepage;
        }
    }
    char wanted[PartSize + 2];
    std::snprintf(wanted, sizeof wanted, " %s ", language);
    for (const LanguageGroup &group : LanguageGroups) {
        if (language[0] != '\0' && std::strstr(group.languages, wanted) != nullptr) {
            return group.codepage;
        }
    }
    return LNG2_CODEPAGE_UTF8;
}
