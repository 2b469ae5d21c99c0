#include "time/local_time.h"

#include <pthread.h>

namespace {

// Guards the area that localtime answers in, as far as this library is concerned.
constinit pthread_mutex_t localTimeLock = PTHREAD_MUTEX_INITIALIZER;

} // namespace

bool breakIntoLocalTime(time_t when, tm &fields) noexcept
{
    pthread_mutex_lock(&localTimeLock);
    const tm *local = localtime(&when);
    if (local != nullptr) {
        fields = *local;
    }
    pthread_mutex_unlock(&localTimeLock);
    return local != nullptr;
}
