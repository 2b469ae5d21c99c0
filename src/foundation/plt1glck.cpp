// Acquires a lock.
#include "dov0610_platform.h"

extern "C" void PLT1_GetLock(PLT1_Lock *lock)
{
    pthread_mutex_lock(&lock->mutex);
}
