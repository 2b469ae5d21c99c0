// Converts UTF-8 to the process's native code page, for output.
#include "foundation/frame.h"

#include <unicode/ucnv.h>

namespace {

// Gives the locale object the code page of the process's default converter.
void setDefaultCodepage(const Frame &frame, LNG2_Locale &locale) noexcept
{
    const char *converterName = ucnv_getDefaultName();
    int32_t status = U_ZERO_ERROR;
    locale.codepage = LNG2_GetCodepageId(converterName, &status);
    if (status > U_ZERO_ERROR) {
        TRACE(frame, Trace::Error, "Error: Unable to get codepage ID for <%s>, error <%s>\n",
              shown(converterName), u_errorName(static_cast<UErrorCode>(status)));
    } else {
        TRACE(frame, Trace::Detail, "Obtained codepage ID %d for <%s>\n", locale.codepage,
              shown(converterName));
    }
}

void traceFailure(const Frame &frame, int32_t codepage) noexcept
{
    if (!frame.traces(Trace::Error)) {
        return;
    }
    char name[LNG2_CODEPAGE_NAME_SIZE];
    if (LNG2_GetCodepageName(codepage, name, sizeof name) == 0) {
        TRACE_ALWAYS(frame, "Error: Unable to convert supplied string from UTF8 to %s\n", name);
    } else {
        TRACE_ALWAYS(frame, "Error: Unable to convert supplied string from UTF8 to codepage #%d\n", codepage);
    }
}

} // namespace

TRACE_CONTROL("dov0cu2n", DOV0_ConvertUTF8ToNative);
extern "C" int32_t DOV0_ConvertUTF8ToNative(const char *text, int32_t length, char *output,
                                            int32_t size) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (text == nullptr || length < 1) {
        return frame.leave<int32_t>(0);
    }
    int32_t status = U_ZERO_ERROR;
    LNG2_Locale *locale = LNG2_GetLocale(nullptr, nullptr, nullptr, &status);
    if (status > U_ZERO_ERROR || locale == nullptr) {
        TRACE(frame, Trace::Error, "Error: Unable to get locale object, error <%s>\n",
              u_errorName(static_cast<UErrorCode>(status)));
        return frame.leave<int32_t>(0);
    }
    if (locale->codepage == 0) {
        setDefaultCodepage(frame, *locale);
    }
    DUMP(frame, Trace::Dump, text, length, "%02.2X");
    TRACE(frame, Trace::Detail,
          "Calling LNG2_TranslateString with codepage ID %d inUTF8BufferLength %d outNativeBufferLength %d\n",
          locale->codepage, length, size);
    int32_t consumed = 0;
    status = U_ZERO_ERROR;
    int32_t nativeLength = LNG2_TranslateString(locale->codepage, output, size, LNG2_CODEPAGE_UTF8, text,
                                                length, &consumed, 0, &status);
    if (status > U_ZERO_ERROR) {
        nativeLength = 0;
        traceFailure(frame, locale->codepage);
    } else {
        TRACE(frame, Trace::Detail,
              "Successfully converted string from UTF-8 to native codepage #%d, nativeOutSize %d\n",
              locale->codepage, nativeLength);
    }
    TRACE(frame, Trace::Storage, "Freeing LNG2_Locale object @%p\n", static_cast<void *>(locale));
    LNG2_ReleaseLocale(locale);
    return frame.leave<int32_t>(nativeLength);
}
