// Decides whether data that arrives with a type and a code page has to be converted for this process.
#include "foundation/frame.h"
#include "nls/network_character_set.h"

#include <cstdlib>
#include <cstring>
#include <unicode/ucnv.h>
#include <unicode/uloc.h>

namespace {

// Data in the process's own code page is taken as it stands only under an English locale.
bool isLocalText(const char *codepage, const char *defaultCodepage, const char *defaultLocale) noexcept
{
    const bool inDefaultCodepage =
        codepage == nullptr || (defaultCodepage != nullptr && std::strcmp(codepage, defaultCodepage) == 0);
    return inDefaultCodepage && defaultLocale != nullptr && std::strstr(defaultLocale, "en_") != nullptr;
}

} // namespace

TRACE_CONTROL("dov0ckcc", DOV0_CheckCodeConversion);
extern "C" int32_t DOV0_CheckCodeConversion(char type, const char *codepage) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (codepage != nullptr) {
        TRACE(frame, Trace::Detail, "Received type <%c> codepage <%s>\n", type, codepage);
    }
    bool asItStands = false;
    if (Local_A == ASCII_A) {
        const char *defaultCodepage = ucnv_getDefaultName();
        const char *defaultLocale = uloc_getDefault();
        TRACE(frame, Trace::Detail, "Local default codepage <%s> locale <%s>\n", shown(defaultCodepage),
              shown(defaultLocale));
        asItStands = type == DOV0_SOURCE_ASCII && isLocalText(codepage, defaultCodepage, defaultLocale);
    } else if (Local_A == EBCDIC_A) {
        asItStands = type == DOV0_SOURCE_EBCDIC;
    } else {
        TRACE_ALWAYS(frame, "***** Unsupported system platform, abort!");
        std::abort();
    }
    if (asItStands) {
        TRACE(frame, Trace::Detail, "No data conversion required\n");
        return frame.leave<int32_t>(0);
    }
    TRACE(frame, Trace::Detail, "Data conversion required\n");
    return frame.leave<int32_t>(1);
}
