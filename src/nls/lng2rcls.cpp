// Takes a resource bundle back.
#include "nls/resource_bundle_cache.h"

extern "C" void LNG2_ResourceClose(LNG2_ResourceBundle *bundle)
{
    if (bundle != nullptr) {
        endUse(bundle);
    }
}
