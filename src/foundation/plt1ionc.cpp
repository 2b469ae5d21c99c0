// Runs a function exactly once in the process. The control word is below 0 when it has run, marked as
// running meanwhile, and anything else before. Callers that come while it runs wait for its end.
#include "dov0610_platform.h"

#include <cstdint>

namespace {

constexpr int32_t Running = INT32_MAX;
constexpr int32_t Done = -1;

constinit pthread_mutex_t onceLock = PTHREAD_MUTEX_INITIALIZER;
constinit pthread_cond_t onceChanged = PTHREAD_COND_INITIALIZER;

} // namespace

extern "C" void PLT1_InitializeOnce(int32_t *control, void (*function)(void *), void *argument,
                                    const char * /*sourceFile*/, int32_t /*line*/)
{
    if (__atomic_load_n(control, __ATOMIC_ACQUIRE) < 0) {
        return;
    }
    pthread_mutex_lock(&onceLock);
    while (*control == Running) {
        pthread_cond_wait(&onceChanged, &onceLock);
    }
    if (*control < 0) {
        pthread_mutex_unlock(&onceLock);
        return;
    }
    __atomic_store_n(control, Running, __ATOMIC_RELAXED);
    pthread_mutex_unlock(&onceLock);

    function(argument); // without the lock, so that it may initialise something else once

    pthread_mutex_lock(&onceLock);
    __atomic_store_n(control, Done, __ATOMIC_RELEASE);
    pthread_cond_broadcast(&onceChanged);
    pthread_mutex_unlock(&onceLock);
}
