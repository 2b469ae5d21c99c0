// The addresses that failed reverse look-up, kept for the life of the process so that none is asked for twice.
#ifndef DOV0610_NET_UNRESOLVED_HOSTS_H
#define DOV0610_NET_UNRESOLVED_HOSTS_H

#include "foundation/first_use_lock.h"

#include <cstdint>

struct UnresolvedHost {
    UnresolvedHost *next;
    uint32_t address; // host byte order
};

// Guards the list. The caller holds it for the functions below and for what they return.
extern FirstUseLock UnresolvedHostListLock;

// The head of the list, which is in ascending order of address.
extern UnresolvedHost *UnresolvedHostList;

// The first entry of this address, or null.
const UnresolvedHost *findUnresolvedHost(uint32_t address) noexcept;

// Links a new entry into its place. Returns the entry it now stands behind, or null when it is the head. An
// address that is there already is taken in a second time.
const UnresolvedHost *insertUnresolvedHost(UnresolvedHost *newHost) noexcept;

#endif
