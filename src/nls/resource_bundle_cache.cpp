#include "nls/resource_bundle_cache.h"

#include "foundation/first_use_lock.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// More than a process shows messages in; beyond that the bundle unused for longest is closed.
constexpr int32_t LargestCache = 64;

constinit FirstUseLock cacheLock;
constinit LNG2_ResourceBundle *cache = nullptr; // last used first
constinit int32_t cacheSize = 0;

LNG2_ResourceBundle *takeCached(const char *path, const char *localeName) noexcept
{
    for (LNG2_ResourceBundle **link = &cache; *link != nullptr; link = &(*link)->next) {
        LNG2_ResourceBundle *found = *link;
        if (std::strcmp(found->localeName, localeName) == 0 && std::strcmp(found->path, path) == 0) {
            *link = found->next;
            --cacheSize;
            return found;
        }
    }
    return nullptr;
}

LNG2_ResourceBundle *openBundle(const char *path, const char *localeName, UErrorCode &status) noexcept
{
    UResourceBundle *bundle = ures_open(path, localeName, &status);
    if (U_FAILURE(status)) {
        return nullptr;
    }
    const size_t pathSize = std::strlen(path) + 1;
    auto *opened = static_cast<LNG2_ResourceBundle *>(std::malloc(sizeof(LNG2_ResourceBundle) + pathSize));
    if (opened == nullptr) {
        ures_close(bundle);
        status = U_MEMORY_ALLOCATION_ERROR;
        return nullptr;
    }
    opened->bundle = bundle;
    opened->openStatus = status;
    opened->users = 0;
    std::snprintf(opened->localeName, sizeof opened->localeName, "%s", localeName);
    opened->path = reinterpret_cast<char *>(opened + 1);
    std::memcpy(opened->path, path, pathSize);
    return opened;
}

// Closes the bundle that has been unused for longest, if any is unused.
void closeOldest() noexcept
{
    LNG2_ResourceBundle **oldest = nullptr;
    for (LNG2_ResourceBundle **link = &cache; *link != nullptr; link = &(*link)->next) {
        if ((*link)->users == 0) {
            oldest = link;
        }
    }
    if (oldest != nullptr) {
        LNG2_ResourceBundle *closed = *oldest;
        *oldest = closed->next;
        --cacheSize;
        ures_close(closed->bundle);
        std::free(closed);
    }
}

} // namespace

LNG2_ResourceBundle *useBundle(const char *path, const char *localeName, UErrorCode &status) noexcept
{
    cacheLock.ensureInitialized();
    const LockHolder holder(cacheLock);
    LNG2_ResourceBundle *bundle = takeCached(path, localeName);
    if (bundle == nullptr) {
        bundle = openBundle(path, localeName, status);
    }
    if (bundle == nullptr) {
        return nullptr;
    }
    if (cacheSize >= LargestCache) {
        closeOldest();
    }
    bundle->next = cache;
    cache = bundle;
    ++cacheSize;
    ++bundle->users;
    status = bundle->openStatus;
    return bundle;
}

void endUse(LNG2_ResourceBundle *bundle) noexcept
{
    const LockHolder holder(cacheLock);
    --bundle->users;
}
