// Looks a host name up. Look-ups are made one at a time, because the resolver's answer is in an area that the next
// one overwrites.
#include "foundation/frame.h"

#include <cerrno>

namespace {

constexpr int32_t RecordSize = sizeof(hostent);

constinit pthread_mutex_t ghbnLock = PTHREAD_MUTEX_INITIALIZER;
constinit int32_t ghbnLockInit = 0; // below 0 once the mutex is initialised

void initializeLookUpLock(void *mutex) noexcept
{
    DOV0_InitializeMutex(static_cast<pthread_mutex_t *>(mutex));
}

const hostent *askResolver(const char *name) noexcept
{
    if (name == nullptr) {
        errno = EINVAL;
        h_errno = HOST_NOT_FOUND;
        return nullptr;
    }
    return gethostbyname(name);
}

// A copy of the resolver's record, or null. Mutex held.
hostent *lookUp(const Frame &frame, const char *name) noexcept
{
    auto *copy = static_cast<hostent *>(DOV0_GetStorage(RecordSize));
    if (copy == nullptr) {
        TRACE(frame, Trace::Error, "***** storage allocation for %d bytes failed\n", RecordSize);
        return nullptr;
    }
    TRACE(frame, Trace::Storage, "Allocated hostent buffer @%p for length %d\n", static_cast<void *>(copy),
          RecordSize);
    const hostent *record = askResolver(name);
    if (record == nullptr) {
        const int error = errno;
        const int resolverError = h_errno;
        TRACE(frame, Trace::Error, "***** gethostbyname failed, host<%s> errno=%d h_errno=%d h_errnop=%d\n",
              shown(name), error, resolverError, 0);
        TRACE(frame, Trace::Storage, "Freeing hostent buffer @%p\n", static_cast<void *>(copy));
        DOV0_FreeStorage(&copy);
        return nullptr;
    }
    *copy = *record; // the record alone: its name and lists stay the resolver's
    return copy;
}

} // namespace

TRACE_CONTROL("dov0ghbn", DOV0_GetHostByName);
extern "C" hostent *DOV0_GetHostByName(const char *name) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (__atomic_load_n(&ghbnLockInit, __ATOMIC_ACQUIRE) >= 0) {
        PLT1_InitializeOnce(&ghbnLockInit, initializeLookUpLock, &ghbnLock, TRC1__F_, __LINE__);
    }
    int rc = pthread_mutex_lock(&ghbnLock);
    if (rc != 0) {
        const int error = errno;
        TRACE(frame, Trace::Error, "***** pthread_mutex_lock failed, rc=%d errno=%d\n", rc, error);
        return frame.leave<hostent *>(nullptr);
    }
    hostent *copy = lookUp(frame, name);
    rc = pthread_mutex_unlock(&ghbnLock);
    if (rc != 0) {
        const int error = errno;
        TRACE(frame, Trace::Error, "***** pthread_mutex_unlock failed, rc=%d errno=%d\n", rc, error);
    }
    return frame.leave(copy);
}
