// Resource bundles that were opened before, by path and locale name. An entry may be used by several threads.
#ifndef DOV0610_NLS_RESOURCE_BUNDLE_CACHE_H
#define DOV0610_NLS_RESOURCE_BUNDLE_CACHE_H

#include "dov0610_platform.h"

#include <unicode/ures.h>

struct LNG2_ResourceBundle {
    LNG2_ResourceBundle *next;
    UResourceBundle *bundle;
    UErrorCode openStatus; // 0 or the warning that came with the bundle
    int32_t users;
    char localeName[LNG2_LOCALE_NAME_SIZE];
    char *path; // behind the entry, in the same block
};

// The bundle of this path and locale, read from its files if it is not in memory. Null with a failure in status.
LNG2_ResourceBundle *useBundle(const char *path, const char *localeName, UErrorCode &status) noexcept;

// Ends one use; the bundle stays in memory.
void endUse(LNG2_ResourceBundle *bundle) noexcept;

#endif
