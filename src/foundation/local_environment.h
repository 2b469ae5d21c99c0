// The local environment array: variables that exist in this process only for this library. They are looked
// up when the process environment does not define the name, and never written to it.
#ifndef DOV0610_FOUNDATION_LOCAL_ENVIRONMENT_H
#define DOV0610_FOUNDATION_LOCAL_ENVIRONMENT_H

#include "dov0610.h"
#include "foundation/first_use_lock.h"

// One variable. Entries are never removed and values are rewritten in place, so a pointer to a value is
// good for the life of the process. The last byte of each text is never anything but 0.
struct LocalEnvEntry {
    LocalEnvEntry *next;
    char name[DOV0_ENV_MAX_LENGTH + 1]; // upper case
    char value[DOV0_ENV_MAX_LENGTH + 1];
};

// Guards the array and the values in it.
extern FirstUseLock EnvArrayLock;

// The first entry of exactly this name, or null. Lock held.
LocalEnvEntry *findLocalEnv(const char *name) noexcept;

// Puts an entry behind the last one. Lock held.
void appendLocalEnv(LocalEnvEntry *entry) noexcept;

#endif
