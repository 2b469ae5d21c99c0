// Looks a variable up for the whole library: in the process environment first, then among the local
// variables.
#include "foundation/frame.h"
#include "foundation/local_environment.h"

#include <cstring>

TRACE_CONTROL("dov0genv", DOV0_GetEnv);
extern "C" const char *DOV0_GetEnv(const char *name, const char *defaultValue) noexcept
{
    const Frame frame(TRC1__EPB_);

    EnvArrayLock.ensureInitialized();
    if (name == nullptr) { // not even the default
        TRACE(frame, Trace::Detail, "Env <%s> not set\n", shown(name));
        return frame.leave<const char *>(nullptr);
    }
    TRACE(frame, Trace::State, "Calling PLT1_GetEnv for EnvString <%s>\n", name);
    const char *value = PLT1_GetEnv(name, 0);
    const char *text = value;
    char localText[sizeof LocalEnvEntry::value];
    if (value != nullptr) { // also an empty one hides a local variable
        TRACE(frame, Trace::State | Trace::Storage, "PLT1_GetEnv <%s> returned EnvValue @%p <%s>\n", name,
              static_cast<const void *>(value), value);
    } else {
        const LockHolder holder(EnvArrayLock);
        // The name is taken as it is, so only an upper-case one can be found.
        const LocalEnvEntry *entry = findLocalEnv(name);
        value = entry != nullptr ? entry->value : nullptr;
        TRACE(frame, Trace::State, "local GetEnv <%s> returned EnvValue @%p\n", name,
              static_cast<const void *>(value));
        if (entry != nullptr) {
            // Another thread may rewrite the value as soon as the lock is released.
            std::memcpy(localText, entry->value, sizeof localText);
            text = localText;
        }
    }
    if (text == nullptr || text[0] == '\0') {
        value = defaultValue;
        text = defaultValue;
    }
    if (value == nullptr) {
        TRACE(frame, Trace::Detail, "Env <%s> not set\n", name);
    } else {
        TRACE(frame, Trace::Detail, "Env <%s> value <%s>\n", name, text);
    }
    return frame.leave(value);
}
