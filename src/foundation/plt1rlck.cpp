// Releases a lock.
#include "dov0610_platform.h"

extern "C" void PLT1_ReleaseLock(PLT1_Lock *lock)
{
    pthread_mutex_unlock(&lock->mutex);
}
