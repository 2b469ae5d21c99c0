#include "net/mutex_faults.h"

#include <dlfcn.h>

constinit MutexFaults mutexFaults;

namespace {

using MutexFunction = int (*)(pthread_mutex_t *);

constinit thread_local pthread_mutex_t *lastLocked = nullptr;

// No guarded static: that needs a mutex itself.
MutexFunction hidden(std::atomic<MutexFunction> &known, const char *name)
{
    MutexFunction function = known.load();
    if (function == nullptr) {
        function = reinterpret_cast<MutexFunction>(dlsym(RTLD_NEXT, name));
        known = function;
    }
    return function;
}

} // namespace

pthread_mutex_t *lastLockedMutex()
{
    return lastLocked;
}

extern "C" int pthread_mutex_lock(pthread_mutex_t *mutex) noexcept
{
    constinit static std::atomic<MutexFunction> known = nullptr;
    if (mutexFaults.onLock != 0 && mutex == mutexFaults.mutex) {
        return mutexFaults.onLock;
    }
    lastLocked = mutex;
    return hidden(known, "pthread_mutex_lock")(mutex);
}

extern "C" int pthread_mutex_unlock(pthread_mutex_t *mutex) noexcept
{
    constinit static std::atomic<MutexFunction> known = nullptr;
    const int result = hidden(known, "pthread_mutex_unlock")(mutex);
    return mutexFaults.onUnlock != 0 && mutex == mutexFaults.mutex ? mutexFaults.onUnlock.load() : result;
}
