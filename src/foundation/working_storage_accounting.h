// The record of live working storage that is kept while the state bit of the trace level is on.
#ifndef DOV0610_FOUNDATION_WORKING_STORAGE_ACCOUNTING_H
#define DOV0610_FOUNDATION_WORKING_STORAGE_ACCOUNTING_H

#include "foundation/first_use_lock.h"

#include <atomic>
#include <cstdint>

// Guards the record, from the look-up to the report of its result.
extern FirstUseLock WorkingStorageCounterLock;

// 0 until the lock's initialisation has been announced.
extern std::atomic<int32_t> WorkingStorageCounterInitialized;

// Bytes of all recorded blocks.
extern double TotalWorkingStorage;

// Records a new block. Returns the position of its slot, counted from 1, or 0 when there was no storage for
// another page of slots: the block is good all the same, only its record is missing. Lock held.
int32_t recordBlock(const void *block, int32_t size) noexcept;

// Forgets a freed block, if it was recorded. Returns the number of slots visited. The block is named by the
// number of its address, because a pointer to freed storage must not be used. Lock held.
int32_t forgetBlock(uintptr_t address) noexcept;

#endif
