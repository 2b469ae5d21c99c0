#include "nls/language_stand_in.h"

#include "support/heap_faults.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <unicode/ucnv.h>

#define TEXT_OF(name) #name
#define NAME_OF(function) TEXT_OF(function) // ICU's names are macros that add its version
#define REAL(function) (reinterpret_cast<decltype(&function)>(dlsym(RTLD_NEXT, NAME_OF(function))))

namespace {

std::atomic<int> outLocales;
std::atomic<int> outBundles;
std::atomic<int> openConverters;
thread_local LNG2_Locale *givenLocale = nullptr;
thread_local LNG2_ResourceBundle *givenBundle = nullptr;

LNG2_Locale *counted(LNG2_Locale *locale)
{
    outLocales += locale != nullptr ? 1 : 0;
    givenLocale = locale;
    return locale;
}

} // namespace

LanguageStandIn &languageStandIn()
{
    static auto *const standIn = [] {
        const HeapFaultPause pause;
        return new LanguageStandIn;
    }();
    return *standIn;
}

LNG2_Locale *lastLocale()
{
    return givenLocale;
}

LNG2_ResourceBundle *lastBundle()
{
    return givenBundle;
}

int localesOut()
{
    return outLocales;
}

int bundlesOut()
{
    return outBundles;
}

int convertersOpen()
{
    return openConverters;
}

LNG2_Locale *madeLocale(int32_t languageId, int32_t codepage, const char *name)
{
    auto *locale = static_cast<LNG2_Locale *>(std::malloc(sizeof(LNG2_Locale)));
    locale->languageId = languageId;
    locale->codepage = codepage;
    std::snprintf(locale->name, sizeof locale->name, "%s", name);
    return locale;
}

extern "C" {

LNG2_Locale *LNG2_GetLocale(const void *selector1, const void *selector2, const void *selector3,
                            int32_t *status)
{
    static const auto real = REAL(LNG2_GetLocale);
    const LanguageStandIn &standIn = languageStandIn();
    return counted(standIn.getLocale ? standIn.getLocale(status)
                                     : real(selector1, selector2, selector3, status));
}

LNG2_Locale *LNG2_GetThreadLocale(int32_t *status)
{
    static const auto real = REAL(LNG2_GetThreadLocale);
    const LanguageStandIn &standIn = languageStandIn();
    return counted(standIn.getThreadLocale ? standIn.getThreadLocale(status) : real(status));
}

void LNG2_ReleaseLocale(LNG2_Locale *locale)
{
    static const auto real = REAL(LNG2_ReleaseLocale);
    outLocales -= locale != nullptr ? 1 : 0;
    real(locale);
}

int32_t LNG2_GetCodepageId(const char *converterName, int32_t *status)
{
    static const auto real = REAL(LNG2_GetCodepageId);
    const LanguageStandIn &standIn = languageStandIn();
    return standIn.getCodepageId ? standIn.getCodepageId(converterName, status) : real(converterName, status);
}

int32_t LNG2_GetCodepageName(int32_t codepage, char *name, int32_t nameSize)
{
    static const auto real = REAL(LNG2_GetCodepageName);
    const LanguageStandIn &standIn = languageStandIn();
    return standIn.getCodepageName ? standIn.getCodepageName(codepage, name, nameSize)
                                   : real(codepage, name, nameSize);
}

int32_t LNG2_TranslateString(int32_t targetCodepage, char *output, int32_t outputCapacity,
                             int32_t sourceCodepage, const char *input, int32_t inputLength,
                             int32_t *inputConsumed, int32_t reserved, int32_t *status)
{
    static const auto real = REAL(LNG2_TranslateString);
    const LanguageStandIn &standIn = languageStandIn();
    return standIn.translateString ? standIn.translateString(targetCodepage, output, outputCapacity,
                                                             sourceCodepage, input, inputLength, status)
                                   : real(targetCodepage, output, outputCapacity, sourceCodepage, input,
                                          inputLength, inputConsumed, reserved, status);
}

LNG2_ResourceBundle *LNG2_ResourceOpen(const char *bundlePath, LNG2_Locale *locale, int32_t *status)
{
    static const auto real = REAL(LNG2_ResourceOpen);
    const LanguageStandIn &standIn = languageStandIn();
    givenBundle = real(bundlePath, locale, status);
    outBundles += givenBundle != nullptr ? 1 : 0;
    return standIn.openedResource ? standIn.openedResource(givenBundle, status) : givenBundle;
}

void LNG2_ResourceClose(LNG2_ResourceBundle *bundle)
{
    static const auto real = REAL(LNG2_ResourceClose);
    outBundles -= bundle != nullptr ? 1 : 0;
    real(bundle);
}

void AGF_CreateMessage(const char *sText, const char *cText, const char *message, int32_t reserved)
{
    static const auto real = REAL(AGF_CreateMessage);
    const LanguageStandIn &standIn = languageStandIn();
    if (standIn.createMessage) {
        standIn.createMessage(sText, cText, message, reserved);
    } else {
        real(sText, cText, message, reserved);
    }
}

UConverter *ucnv_open(const char *converterName, UErrorCode *status)
{
    static const auto real = REAL(ucnv_open);
    const LanguageStandIn &standIn = languageStandIn();
    if (standIn.openConverter) {
        const UErrorCode failure = standIn.openConverter(converterName != nullptr ? converterName : "");
        if (failure != U_ZERO_ERROR) {
            *status = failure;
            return nullptr;
        }
    }
    UConverter *converter = real(converterName, status);
    openConverters += converter != nullptr ? 1 : 0;
    return converter;
}

void ucnv_close(UConverter *converter)
{
    static const auto real = REAL(ucnv_close);
    openConverters -= converter != nullptr ? 1 : 0;
    real(converter);
}

void ucnv_toUnicode(UConverter *converter, UChar **target, const UChar *targetLimit, const char **source,
                    const char *sourceLimit, int32_t *offsets, UBool flush, UErrorCode *status)
{
    static const auto real = REAL(ucnv_toUnicode);
    real(converter, target, targetLimit, source, sourceLimit, offsets, flush, status);
    if (languageStandIn().toUnicode != U_ZERO_ERROR) {
        *status = languageStandIn().toUnicode;
    }
}

int32_t ucnv_fromUChars(UConverter *converter, char *target, int32_t capacity, const UChar *source,
                        int32_t length, UErrorCode *status)
{
    static const auto real = REAL(ucnv_fromUChars);
    const int32_t needed = real(converter, target, capacity, source, length, status);
    if (languageStandIn().fromUChars != U_ZERO_ERROR) {
        *status = languageStandIn().fromUChars;
    }
    return needed;
}

int32_t ucnv_toUChars(UConverter *converter, UChar *target, int32_t capacity, const char *source,
                      int32_t length, UErrorCode *status)
{
    static const auto real = REAL(ucnv_toUChars);
    const int32_t needed = real(converter, target, capacity, source, length, status);
    if (languageStandIn().toUChars != U_ZERO_ERROR) {
        *status = languageStandIn().toUChars;
    }
    return needed;
}

const char *ucnv_detectUnicodeSignature(const char *source, int32_t length, int32_t *signatureLength,
                                        UErrorCode *status)
{
    static const auto real = REAL(ucnv_detectUnicodeSignature);
    if (languageStandIn().detectSignature != U_ZERO_ERROR) {
        *status = languageStandIn().detectSignature;
        return nullptr;
    }
    return real(source, length, signatureLength, status);
}

} // extern "C"
