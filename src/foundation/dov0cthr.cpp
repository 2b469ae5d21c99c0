// Creates a thread, joinable or detached.
#include "foundation/frame.h"

#include <cerrno>

TRACE_CONTROL("dov0cthr", DOV0_CreateThread);
extern "C" int32_t DOV0_CreateThread(void *(*start)(void *), void *argument, int32_t detachState,
                                     pthread_t *thread) noexcept
{
    const Frame frame(TRC1__EPB_);

    int32_t result = 0;
    if (detachState == DOV0_THREAD_JOINABLE) {
        TRACE(frame, Trace::Detail, "Received PTHREAD_CREATE_JOINABLE\n");
    } else if (detachState == DOV0_THREAD_DETACHED) {
        TRACE(frame, Trace::Detail, "Received PTHREAD_CREATE_DETACHED\n");
    } else { // reported as a failure, yet the thread is created, and detached
        TRACE(frame, Trace::Error, "Error: Invalid pthread detach state %d\n", detachState);
        result = -1;
    }

    // Without attributes of its own a thread is joinable too.
    pthread_attr_t threadAttr = {};
    const bool hasAttributes = pthread_attr_init(&threadAttr) == 0;
    if (hasAttributes) {
        pthread_attr_setdetachstate(&threadAttr, PTHREAD_CREATE_JOINABLE);
    }
    pthread_t unwanted = {};
    pthread_t *identity = thread != nullptr ? thread : &unwanted;
    const int code = start != nullptr
                         ? pthread_create(identity, hasAttributes ? &threadAttr : nullptr, start, argument)
                         : EINVAL;
    if (code != 0) {
        errno = code;
        TRACE(frame, Trace::Error, "Error: thread not started: errno=%d\n", code);
        result = -1;
    } else if (detachState != DOV0_THREAD_JOINABLE) {
        pthread_detach(*identity);
    }

    if (hasAttributes) {
        TRACE(frame, Trace::Storage, "Destroying threadAttr @%p\n", static_cast<void *>(&threadAttr));
        const int rc = pthread_attr_destroy(&threadAttr);
        const int error = errno;
        if (rc != 0) { // the thread runs all the same, so the result stays
            TRACE(frame, Trace::Error, "Error: pthread_attr_destroy returned %d, errno=%d\n", rc, error);
        }
    }
    return frame.leave<int32_t>(result);
}
