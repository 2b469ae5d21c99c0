// Initialises a lock. A second initialisation, also at the same moment, must not disturb a holder, so
// zeroed storage is already a mutex in its first state and nothing is written to it here.
#include "dov0610_platform.h"

extern "C" void PLT1_InitializeLock(PLT1_Lock *lock)
{
    __atomic_store_n(&lock->initialized, 1, __ATOMIC_RELEASE);
}
