// Initialises a mutex with default attributes.
#include "foundation/frame.h"

#include <cerrno>

TRACE_CONTROL("dov0imtx", DOV0_InitializeMutex);
extern "C" void DOV0_InitializeMutex(pthread_mutex_t *mutex) noexcept
{
    const Frame frame(TRC1__EPB_);

    // The steps go on after a failure; zeroed attributes are then the defaults.
    pthread_mutexattr_t attributes = {};
    int rc = pthread_mutexattr_init(&attributes);
    int error = errno;
    if (rc != 0) {
        TRACE(frame, Trace::Error, "***** pthread_mutexattr_init failed: rc=%d errno=%d\n", rc, error);
    }
    rc = mutex != nullptr ? pthread_mutex_init(mutex, &attributes) : EINVAL;
    error = errno;
    if (rc != 0) {
        TRACE(frame, Trace::Error, "***** pthread_mutex_init failed: rc=%d errno=%d\n", rc, error);
    }
    rc = pthread_mutexattr_destroy(&attributes);
    error = errno;
    if (rc != 0) {
        TRACE(frame, Trace::Error, "***** pthread_mutexattr_destroy failed: rc=%d errno=%d\n", rc, error);
    }
    frame.leave();
}
