// Waits on a condition variable for a number of seconds at most.
#include "foundation/frame.h"

#include <cerrno>
#include <limits>

namespace {

// A deadline that time_t cannot hold becomes the last or first one that it can.
time_t later(time_t now, int32_t seconds) noexcept
{
    time_t deadline = 0;
    if (!__builtin_add_overflow(now, seconds, &deadline)) {
        return deadline;
    }
    return seconds > 0 ? std::numeric_limits<time_t>::max() : std::numeric_limits<time_t>::min();
}

} // namespace

TRACE_CONTROL("dov0ctwt", DOV0_ConditionTimedWait);
extern "C" int32_t DOV0_ConditionTimedWait(pthread_cond_t *condVar, pthread_mutex_t *mutex,
                                           int32_t seconds) noexcept
{
    const Frame frame(TRC1__EPB_);

    timespec timeOut = {};
    PLT1_GetTime(&timeOut);
    timeOut.tv_sec = later(timeOut.tv_sec, seconds);
    TRACE(frame, Trace::Detail, "Calling pthread_cond_timedwait for %d seconds, condVar @%p mutex @%p\n",
          seconds, static_cast<void *>(condVar), static_cast<void *>(mutex));
    if (condVar == nullptr || mutex == nullptr) {
        return frame.leave<int32_t>(EINVAL);
    }
    const int32_t rc = pthread_cond_timedwait(condVar, mutex, &timeOut);
    const int error = errno;
    if (rc < 0) { // error numbers are positive, so this is never met; the test is kept
        TRACE(frame, Trace::Error, "conditional timed wait rc = %d, errno = %d\n", rc, error);
    }
    return frame.leave<int32_t>(rc);
}
