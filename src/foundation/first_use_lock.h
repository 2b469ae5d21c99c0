// A platform lock in static storage that the first user initialises, however many come at once.
#ifndef DOV0610_FOUNDATION_FIRST_USE_LOCK_H
#define DOV0610_FOUNDATION_FIRST_USE_LOCK_H

#include "dov0610_platform.h"

#include <sched.h>

class FirstUseLock {
public:
    constexpr FirstUseLock() noexcept = default;

    // Returns once the lock is initialised, by this call or another.
    void ensureInitialized() noexcept
    {
        if (__atomic_load_n(&state, __ATOMIC_ACQUIRE) != Ready) {
            initialize();
        }
    }

    void acquire() noexcept { PLT1_GetLock(&lock); }
    void release() noexcept { PLT1_ReleaseLock(&lock); }

private:
    enum State : int32_t { Untouched, InProgress, Ready };

    void initialize() noexcept
    {
        int32_t found = Untouched;
        if (__atomic_compare_exchange_n(&state, &found, InProgress, false, __ATOMIC_ACQUIRE,
                                        __ATOMIC_ACQUIRE)) {
            PLT1_InitializeLock(&lock);
            __atomic_store_n(&state, Ready, __ATOMIC_RELEASE);
            return;
        }
        while (__atomic_load_n(&state, __ATOMIC_ACQUIRE) != Ready) {
            sched_yield();
        }
    }

    PLT1_Lock lock = {};
    int32_t state = Untouched;
};

// Holds a lock for the length of a block.
class LockHolder {
public:
    explicit LockHolder(FirstUseLock &heldLock) noexcept : lock(heldLock) { lock.acquire(); }
    ~LockHolder() { lock.release(); }
    LockHolder(const LockHolder &) = delete;
    LockHolder &operator=(const LockHolder &) = delete;

private:
    FirstUseLock &lock;
};

#endif
