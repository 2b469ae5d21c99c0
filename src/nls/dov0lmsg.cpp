// Makes an operator message: finds its pattern in the catalogue of the current locale, puts the parameters in, and
// delivers it in the native code page.
#include "foundation/frame.h"
#include "nls/message_pattern.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <unicode/ucnv.h>
#include <unicode/utf16.h>

namespace {

constexpr const char *KeyPrefixes[] = {"DOVPA", "DOVPG", "DOVPL",
                                       "DOVPS", "DOVPS", "DOVPV"}; // by class, from 1
constexpr size_t KeySize = 16;
constexpr size_t NumberSize = 8;

constexpr int32_t ParameterUnits = DOV0_MESSAGE_PARAMETER_UNITS; // a zero unit follows
constexpr int32_t MessageUnits = DOV0_MESSAGE_UNITS;

constexpr char BundleName[] = "/dovpmsg";

// The resource directory and the bundle in it, settled by the first message of the process.
constinit char path_and_bundle[4096] = "";
constinit int32_t specified_rb_path_length = 0; // of the directory alone
constinit int32_t specified_rb_path_found = 0;  // a once control

struct Parameters {
    const char *given[MessageParameterCount];
    char16_t converted[MessageParameterCount][ParameterUnits + 1];
};

const char *errorName(int32_t status) noexcept
{
    return u_errorName(static_cast<UErrorCode>(status));
}

void settleResourcePath(void *callersFrame) noexcept
{
    const Frame &frame = *static_cast<const Frame *>(callersFrame);
    const char *path = DOV0_GetEnv("DOVP_RB_PATH", nullptr);
    if (path != nullptr) {
        TRACE(frame, Trace::Detail, "Will use RB path specified by DOVP_ENV_RB_PATH=%s\n", path);
    } else {
        TRACE(frame, Trace::Detail,
              "RB path specified by DOVP_ENV_RB_PATH is NULL. Checking DOVP_ENV_LNG1_LOCALEDIR.\n");
        path = DOV0_GetEnv("LNG1_LOCALEDIR", nullptr);
        if (path != nullptr) {
            TRACE(frame, Trace::Detail, "Will use RB path specified by DOVP_ENV_LNG1_LOCALEDIR=%s\n", path);
        } else {
            TRACE(frame, Trace::Detail,
                  "RB path specified by DOVP_ENV_RB_PATH and DOVP_ENV_LNG1_LOCALEDIR are both NULL. Will use "
                  "default of .rb \n");
            path = "./rb";
        }
    }
    std::snprintf(path_and_bundle, sizeof path_and_bundle, "%s%s", path, BundleName);
    specified_rb_path_length = static_cast<int32_t>(std::min(std::strlen(path), sizeof path_and_bundle - 1));
}

// Builds the key that a message has in the catalogue; false when the class or the number has none.
bool buildKey(const Frame &frame, int32_t messageClass, int32_t messageNumber, char (&key)[KeySize]) noexcept
{
    if (messageClass < DOV0_MESSAGE_CLASS_A || messageClass > DOV0_MESSAGE_CLASS_V) {
        TRACE(frame, Trace::Error, "*****Message class %d of Message ID %d is not supported\n", messageClass,
              messageNumber);
        return false;
    }
    char number[NumberSize];
    const int length = std::snprintf(number, sizeof number, "%d", messageNumber);
    if (static_cast<size_t>(length) >= sizeof number) {
        TRACE(frame, Trace::Error, "*****Message ID %d has more than %d characters\n", messageNumber,
              static_cast<int32_t>(NumberSize - 1));
        return false;
    }
    std::snprintf(key, sizeof key, "%s%s", KeyPrefixes[messageClass - DOV0_MESSAGE_CLASS_A], number);
    return true;
}

LNG2_Locale *getLocale(const Frame &frame, int32_t messageNumber) noexcept
{
    int32_t status = U_ZERO_ERROR;
    LNG2_Locale *locale = LNG2_GetLocale(nullptr, nullptr, nullptr, &status);
    if (locale == nullptr) {
        TRACE(frame, Trace::Error,
              "LNG2_GetLocale call failed <%s> unable to retrieve Message ID %d from resource bundle\n",
              errorName(status), messageNumber);
        std::printf("Unable to locate Message ID %d in resource bundle, error code is %s\n", messageNumber,
                    errorName(status));
        return nullptr;
    }
    TRACE(frame, Trace::Storage, "Allocated LNG2_Locale @%p\n", static_cast<void *>(locale));
    return locale;
}

// The product specification's locale comes before the process's.
void chooseLocaleName(const Frame &frame, LNG2_Locale &locale) noexcept
{
    const char *agentLocale = DOV0_QueryProductSpec(DOV0_PSF_AGENT_LOCALE);
    if (agentLocale != nullptr && agentLocale[0] != '\0') {
        std::snprintf(locale.name, sizeof locale.name, "%s", agentLocale);
    }
    TRACE(frame, Trace::Detail, "Locale setting is: %s\n", locale.name);
}

LNG2_ResourceBundle *openBundle(const Frame &frame, LNG2_Locale &locale) noexcept
{
    int32_t status = U_ZERO_ERROR;
    LNG2_ResourceBundle *bundle = LNG2_ResourceOpen(path_and_bundle, &locale, &status);
    if (bundle == nullptr || status > U_ZERO_ERROR) {
        TRACE(frame, Trace::Error,
              "Could not find any dovpmsg resource bundles in directory %.*s.  Error <%s> \n",
              specified_rb_path_length, path_and_bundle, errorName(status));
        std::printf("DOVPV599E - ERROR: Could not find any dovpmsg resource bundles in directory %.*s\n",
                    specified_rb_path_length, path_and_bundle);
        std::printf("Error code is %s\n", errorName(status));
        return nullptr;
    }
    TRACE(frame, Trace::Storage, "Allocated LNG2_UResourceBundle @%p\n", static_cast<void *>(bundle));
    return bundle;
}

void convertParameters(const Frame &frame, LNG2_Locale *locale, Parameters &parameters) noexcept
{
    for (int32_t i = 0; i < MessageParameterCount; ++i) {
        const char *text = parameters.given[i];
        const bool isGiven = text != nullptr && text[0] != '\0';
        DOV0_LNG2_MsgSubparmToUTF_Util(locale, parameters.converted[i], ParameterUnits, isGiven ? text : "?");
        if (isGiven && i < MessageParameterCount - 1) {
            TRACE(frame, Trace::Detail, "Parameter %d is <%s>\n", i + 1, text);
        } else if (isGiven) {
            TRACE(frame, Trace::Detail, "Parameter 5 is: %s \n", text);
        }
    }
}

// Formats in two passes, of which the first learns the length. Returns the units of the message, 0 on failure; what
// does not fit is cut.
int32_t formatMessage(const Frame &frame, const char *localeName, const char *key, const char16_t *pattern,
                      int32_t patternLength, const Parameters &parameters,
                      char16_t (&message)[MessageUnits]) noexcept
{
    UErrorCode status = U_ZERO_ERROR;
    MessagePattern messagePattern(localeName, pattern, patternLength, status);
    for (int32_t i = 0; U_SUCCESS(status) && i < MessageParameterCount; ++i) {
        messagePattern.setParameter(i, parameters.converted[i], status);
    }
    int32_t length = U_SUCCESS(status) ? messagePattern.format(nullptr, 0, status) : 0;
    if (status != U_BUFFER_OVERFLOW_ERROR) {
        TRACE(frame, Trace::Error, "LNG2_FormatMessage returned error <%s> for message key <%s>\n",
              u_errorName(status), key);
        return 0;
    }
    TRACE(frame, Trace::Detail,
          "LNG2_FormatMessage returned buffer overflow error for message key <%s> resultLengthOut <%d>\n",
          key, length);
    const bool isCut = length > MessageUnits;
    status = U_ZERO_ERROR;
    messagePattern.format(message, std::min(length + 1, MessageUnits), status);
    if (U_FAILURE(status) && !(isCut && status == U_BUFFER_OVERFLOW_ERROR)) {
        TRACE(frame, Trace::Error,
              "Second call to LNG2_FormatMessage returned error <%s> for message key <%s>\n",
              u_errorName(status), key);
        return 0;
    }
    if (isCut) { // never half a character
        length = U16_IS_LEAD(message[MessageUnits - 1]) ? MessageUnits - 1 : MessageUnits;
    }
    return length;
}

// Converts the message into the caller's buffer; false when there is no converter.
bool deliver(const Frame &frame, const char16_t *message, int32_t units, char *output,
             int32_t outputSize) noexcept
{
    UErrorCode status = U_ZERO_ERROR;
    UConverter *converter = ucnv_open(nullptr, &status);
    if (U_FAILURE(status)) {
        TRACE(frame, Trace::Error, "Could not open default output converter, error <%s>\n",
              u_errorName(status));
        return false;
    }
    status = U_ZERO_ERROR;
    ucnv_fromUChars(converter, output, outputSize, message, units, &status);
    if (U_SUCCESS(status) || status == U_BUFFER_OVERFLOW_ERROR) {
        output[outputSize - 1] = '\0'; // a message that does not fit is cut
    } else {
        TRACE(frame, Trace::Error, "Conversion error, error <%s>\n", u_errorName(status));
        output[0] = '\0';
    }
    ucnv_close(converter);
    return true;
}

// From the open bundle to the caller's buffer; false when it went no further than a failure that leaves it empty.
bool compose(const Frame &frame, LNG2_Locale *locale, LNG2_ResourceBundle *bundle, const char *key,
             Parameters &parameters, char *output, int32_t outputSize) noexcept
{
    int32_t patternLength = 0;
    int32_t status = U_ZERO_ERROR;
    const char16_t *pattern = LNG2_GetStringByKey(bundle, key, &patternLength, &status);
    if (pattern == nullptr || status > U_ZERO_ERROR) {
        TRACE(frame, Trace::Error, "Could not retrieve message %s.  Error <%s>\n", key, errorName(status));
        return false;
    }
    convertParameters(frame, locale, parameters);
    char16_t message[MessageUnits];
    const int32_t units =
        formatMessage(frame, locale->name, key, pattern, patternLength, parameters, message);
    return deliver(frame, message, units, output, outputSize);
}

} // namespace

TRACE_CONTROL("dov0lmsg", DOV0_LNG2_Message);
extern "C" void DOV0_LNG2_Message(int32_t messageClass, char *output, int32_t outputSize,
                                  int32_t messageNumber, const char *parameter1, const char *parameter2,
                                  const char *parameter3, const char *parameter4,
                                  const char *parameter5) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (output == nullptr || outputSize < 1) {
        TRACE(frame, Trace::Error, "*****No room for Message ID %d in output @%p size %d\n", messageNumber,
              static_cast<void *>(output), outputSize);
        return frame.leave();
    }
    // The output is emptied only now and then, since a parameter may stand in it.
    char key[KeySize];
    if (!buildKey(frame, messageClass, messageNumber, key)) {
        output[0] = '\0';
        return frame.leave();
    }
    if (__atomic_load_n(&specified_rb_path_found, __ATOMIC_ACQUIRE) >= 0) {
        PLT1_InitializeOnce(&specified_rb_path_found, settleResourcePath, const_cast<Frame *>(&frame),
                            TRC1__F_, __LINE__);
    }
    TRACE(frame, Trace::Detail, "RB specified path and bundle=%s\n", path_and_bundle);
    LNG2_Locale *locale = getLocale(frame, messageNumber);
    if (locale == nullptr) {
        output[0] = '\0';
        return frame.leave();
    }
    chooseLocaleName(frame, *locale);
    TRACE(frame, Trace::Detail, "Message key is %s\n", key);
    LNG2_ResourceBundle *bundle = openBundle(frame, *locale);
    if (bundle == nullptr) {
        output[0] = '\0';
        LNG2_ReleaseLocale(locale);
        return frame.leave();
    }
    Parameters parameters = {{parameter1, parameter2, parameter3, parameter4, parameter5}, {}};
    if (!compose(frame, locale, bundle, key, parameters, output, outputSize)) {
        output[0] = '\0';
        LNG2_ResourceClose(bundle);
        LNG2_ReleaseLocale(locale);
        return frame.leave();
    }
    TRACE(frame, Trace::Storage, "Freeing LNG2_UResourceBundle @%p\n", static_cast<void *>(bundle));
    LNG2_ResourceClose(bundle);
    TRACE(frame, Trace::Storage, "Freeing LNG2_Locale @%p\n", static_cast<void *>(locale));
    LNG2_ReleaseLocale(locale);
    TRACE(frame, Trace::Detail, "Returning with message=%s\n", output);
    frame.leave();
}
