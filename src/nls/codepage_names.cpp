#include "nls/codepage_names.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unicode/ucnv.h>

namespace {

struct UnicodeCodepage {
    const char *converter; // ICU's own name
    int32_t codepage;
};

// The first name of a number is the one it is opened by. A missing byte order means big-endian, and unlike ICU's
// converters of the name alone these neither expect nor write a mark.
constexpr UnicodeCodepage UnicodeCodepages[] = {
    {"UTF-8", LNG2_CODEPAGE_UTF8},       {"UTF-16BE", LNG2_CODEPAGE_UTF16BE},
    {"UTF-16", LNG2_CODEPAGE_UTF16BE},   {"UTF-16LE", LNG2_CODEPAGE_UTF16LE},
    {"UTF-32BE", LNG2_CODEPAGE_UTF32BE}, {"UTF-32", LNG2_CODEPAGE_UTF32BE},
    {"UTF-32LE", LNG2_CODEPAGE_UTF32LE},
};

// Windows numbers win where IBM uses the same ones for older tables.
constexpr const char *Prefixes[] = {"windows-", "ibm-", "cp"};

constexpr int32_t FirstSharedNumber = 1250;
constexpr int32_t LastSharedNumber = 1258;

// The number behind a prefix that the name consists of otherwise, or 0.
int32_t numberBehind(const char *prefix, const char *name) noexcept
{
    const size_t prefixLength = std::strlen(prefix);
    if (name == nullptr || std::strncmp(name, prefix, prefixLength) != 0) {
        return 0;
    }
    const char *digits = name + prefixLength;
    const size_t count = std::strspn(digits, "0123456789");
    return count > 0 && count < 8 && digits[count] == '\0'
               ? static_cast<int32_t>(std::strtol(digits, nullptr, 10))
               : 0;
}

const char *standardName(const char *converterName, const char *standard) noexcept
{
    UErrorCode error = U_ZERO_ERROR;
    return ucnv_getStandardName(converterName, standard, &error);
}

// ICU's own name of a converter, or null when it knows none.
const char *ownName(const char *converterName) noexcept
{
    UErrorCode error = U_ZERO_ERROR;
    return ucnv_getAlias(converterName, 0, &error);
}

// The first number that any alias of a converter carries, or 0.
int32_t numberInAliases(const char *converterName) noexcept
{
    UErrorCode error = U_ZERO_ERROR;
    const uint16_t count = ucnv_countAliases(converterName, &error);
    for (const char *prefix : Prefixes) {
        for (uint16_t i = 0; i < count; ++i) {
            const int32_t number = numberBehind(prefix, ucnv_getAlias(converterName, i, &error));
            if (number != 0) {
                return number;
            }
        }
    }
    return 0;
}

bool isSameConverter(const char *one, const char *other) noexcept
{
    const char *ownOne = ownName(one);
    const char *ownOther = ownName(other);
    return ownOne != nullptr && ownOther != nullptr && std::strcmp(ownOne, ownOther) == 0;
}

} // namespace

int32_t codepageOf(const char *converterName, int32_t &status) noexcept
{
    const char *own = converterName != nullptr ? ownName(converterName) : nullptr;
    if (own == nullptr) {
        status = converterName != nullptr ? U_FILE_ACCESS_ERROR : U_ILLEGAL_ARGUMENT_ERROR;
        return 0;
    }
    status = U_ZERO_ERROR;
    for (const UnicodeCodepage &known : UnicodeCodepages) {
        if (std::strcmp(own, known.converter) == 0) {
            return known.codepage;
        }
    }
    const int32_t windowsNumber = numberBehind("windows-", standardName(converterName, "WINDOWS"));
    if (windowsNumber >= FirstSharedNumber && windowsNumber <= LastSharedNumber) {
        return windowsNumber;
    }
    int32_t number = numberBehind("ibm-", standardName(converterName, "IBM"));
    if (number == 0) {
        number = numberInAliases(converterName);
    }
    if (number == 0) {
        status = U_UNSUPPORTED_ERROR;
    }
    return number;
}

bool nameConverterOf(int32_t codepage, char (&name)[LNG2_CODEPAGE_NAME_SIZE]) noexcept
{
    for (const UnicodeCodepage &known : UnicodeCodepages) {
        if (known.codepage == codepage) {
            std::snprintf(name, sizeof name, "%s", known.converter);
            return true;
        }
    }
    for (const char *prefix : Prefixes) {
        std::snprintf(name, sizeof name, "%s%d", prefix, codepage);
        if (codepage < 1 || ownName(name) == nullptr) {
            continue;
        }
        for (const char *standard : {"MIME", "IANA"}) {
            const char *preferred = standardName(name, standard);
            int32_t status = U_ZERO_ERROR;
            if (preferred != nullptr && isSameConverter(preferred, name) &&
                codepageOf(preferred, status) == codepage) {
                std::snprintf(name, sizeof name, "%s", preferred);
                break;
            }
        }
        return true;
    }
    return false;
}
