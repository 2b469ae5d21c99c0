// Stands between the library and the language support or ICU, so that a test can see or change what goes through. Where
// nothing is set, calls go on to the real operations.
#ifndef DOV0610_TESTS_LANGUAGE_STAND_IN_H
#define DOV0610_TESTS_LANGUAGE_STAND_IN_H

#include "dov0610_platform.h"

#include <functional>
#include <string>
#include <unicode/utypes.h>

struct LanguageStandIn {
    std::function<LNG2_Locale *(int32_t *status)> getLocale;
    std::function<LNG2_Locale *(int32_t *status)> getThreadLocale;
    std::function<LNG2_ResourceBundle *(LNG2_ResourceBundle *opened, int32_t *status)> openedResource;
    std::function<int32_t(const char *converterName, int32_t *status)> getCodepageId;
    std::function<int32_t(int32_t codepage, char *name, int32_t nameSize)> getCodepageName;
    std::function<int32_t(int32_t target, char *output, int32_t capacity, int32_t source, const char *input,
                          int32_t length, int32_t *status)>
        translateString;
    std::function<void(const char *sText, const char *cText, const char *message, int32_t reserved)>
        createMessage;

    // Statuses with which ICU's operations fail; 0 lets them work. Converters fail by name, "" for the default one.
    std::function<UErrorCode(const std::string &name)> openConverter;
    UErrorCode toUnicode = U_ZERO_ERROR;
    UErrorCode fromUChars = U_ZERO_ERROR;
    UErrorCode toUChars = U_ZERO_ERROR;
    UErrorCode detectSignature = U_ZERO_ERROR;
};

// The one stand-in of the process; set before other threads use it.
LanguageStandIn &languageStandIn();

// The objects that the calling thread was last given.
LNG2_Locale *lastLocale();
LNG2_ResourceBundle *lastBundle();

// What was given out and has not come back.
int localesOut();
int bundlesOut();
int convertersOpen();

// A locale object as the language support would give it out.
LNG2_Locale *madeLocale(int32_t languageId, int32_t codepage, const char *name);

#endif
