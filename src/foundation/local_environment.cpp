// A singly linked list in the order of arrival: a few dozen variables, set once at start-up.
#include "foundation/local_environment.h"

#include <cstring>

constinit FirstUseLock EnvArrayLock;

namespace {

constinit LocalEnvEntry *LocalEnvArray = nullptr;

} // namespace

LocalEnvEntry *findLocalEnv(const char *name) noexcept
{
    LocalEnvEntry *entry = LocalEnvArray;
    while (entry != nullptr && std::strcmp(entry->name, name) != 0) {
        entry = entry->next;
    }
    return entry;
}

void appendLocalEnv(LocalEnvEntry *entry) noexcept
{
    LocalEnvEntry **end = &LocalEnvArray;
    while (*end != nullptr) {
        end = &(*end)->next;
    }
    *end = entry;
}
