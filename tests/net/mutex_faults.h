// Makes locking or unlocking one mutex of the library answer with an error.
#ifndef DOV0610_TESTS_NET_MUTEX_FAULTS_H
#define DOV0610_TESTS_NET_MUTEX_FAULTS_H

#include <atomic>
#include <pthread.h>

struct MutexFaults {
    std::atomic<pthread_mutex_t *> mutex = nullptr;
    std::atomic<int> onLock = 0;   // the mutex stays as it is
    std::atomic<int> onUnlock = 0; // the mutex is unlocked all the same
};

extern MutexFaults mutexFaults;

// The mutex that the calling thread locked last.
pthread_mutex_t *lastLockedMutex();

#endif
