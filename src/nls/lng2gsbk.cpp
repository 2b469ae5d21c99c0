// Fetches a text from a resource bundle.
#include "nls/resource_bundle_cache.h"

extern "C" const char16_t *LNG2_GetStringByKey(LNG2_ResourceBundle *bundle, const char *key, int32_t *length,
                                               int32_t *status)
{
    const char16_t *text = nullptr;
    int32_t units = 0;
    UErrorCode error = U_ILLEGAL_ARGUMENT_ERROR;
    if (bundle != nullptr && key != nullptr) {
        error = U_ZERO_ERROR;
        text = ures_getStringByKey(bundle->bundle, key, &units, &error);
    }
    if (U_FAILURE(error)) {
        text = nullptr;
        units = 0;
    }
    if (length != nullptr) {
        *length = units;
    }
    if (status != nullptr) {
        *status = error;
    }
    return text;
}
