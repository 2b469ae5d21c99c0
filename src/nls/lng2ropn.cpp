// Opens a resource bundle for a locale.
#include "nls/resource_bundle_cache.h"

extern "C" LNG2_ResourceBundle *LNG2_ResourceOpen(const char *bundlePath, LNG2_Locale *locale,
                                                  int32_t *status)
{
    LNG2_ResourceBundle *bundle = nullptr;
    UErrorCode error = U_ZERO_ERROR;
    if (locale == nullptr || bundlePath == nullptr || bundlePath[0] == '\0') { // ICU would open its own data
        error = U_ILLEGAL_ARGUMENT_ERROR;
    } else {
        bundle = useBundle(bundlePath, locale->name, error);
    }
    if (status != nullptr) {
        *status = error;
    }
    return bundle;
}
