// Sets a variable for this library alone; the process environment is never changed.
#include "foundation/frame.h"
#include "foundation/local_environment.h"

#include <cstring>

TRACE_CONTROL("dov0penv", DOV0_PutEnv);
extern "C" void DOV0_PutEnv(const char *envString) noexcept
{
    const Frame frame(TRC1__EPB_);

    EnvArrayLock.ensureInitialized();
    const char *equals = envString != nullptr ? std::strchr(envString, '=') : nullptr;
    if (equals == nullptr) {
        TRACE(frame, Trace::Error, "*****Error: Invalid environment syntax ignored. <%s>\n",
              shown(envString));
        return frame.leave();
    }
    constexpr int32_t entrySize = sizeof(LocalEnvEntry);
    auto *newEnv = static_cast<LocalEnvEntry *>(DOV0_GetStorage(entrySize));
    if (newEnv == nullptr) {
        return frame.leave();
    }
    TRACE(frame, Trace::Storage, "Allocated NewEnv @%p length %d for EnvString <%s>\n",
          static_cast<void *>(newEnv), entrySize, envString);
    const auto nameLength = static_cast<size_t>(equals - envString);
    const size_t valueLength = std::strlen(equals + 1);
    if (nameLength > DOV0_ENV_MAX_LENGTH || valueLength > DOV0_ENV_MAX_LENGTH) {
        TRACE(frame, Trace::Error, "*****Error: Environment specification <%s> exceeds maximum size %d\n",
              envString, DOV0_ENV_MAX_LENGTH);
        DOV0_FreeStorage(&newEnv);
        return frame.leave();
    }
    std::memcpy(newEnv->name, envString, nameLength); // the block's zeros terminate both texts
    std::memcpy(newEnv->value, equals + 1, valueLength);
    DOV0_ConvertStringToUpper(newEnv->name, 0); // complains about an empty name, which is stored all the same

    {
        const LockHolder holder(EnvArrayLock);
        LocalEnvEntry *known = findLocalEnv(newEnv->name);
        if (known != nullptr) {
            TRACE(frame, Trace::State, "Env <%s> value updated from <%s> to <%s>\n", known->name,
                  known->value, newEnv->value);
            std::memcpy(known->value, newEnv->value, valueLength + 1);
            TRACE(frame, Trace::Storage, "Freeing NewEnv @%p\n", static_cast<void *>(newEnv));
            DOV0_FreeStorage(&newEnv);
        } else {
            appendLocalEnv(newEnv);
            TRACE(frame, Trace::State, "New local Env <%s> value <%s> added to array\n", newEnv->name,
                  newEnv->value);
        }
    }
    frame.leave();
}
