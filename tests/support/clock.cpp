#include "support/clock.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <dlfcn.h>
#include <utility>

namespace {

std::atomic<bool> stopped{false};
std::atomic<time_t> stoppedSeconds{0};
std::atomic<suseconds_t> stoppedMicroseconds{0};
std::atomic<tm *(*)(const time_t *, tm *)> localTimeRoutine{nullptr};

template <typename Routine> Routine *next(const char *name)
{
    return reinterpret_cast<Routine *>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" time_t time(time_t *result) noexcept
{
    if (!stopped) {
        return next<time_t(time_t *)>("time")(result);
    }
    if (result != nullptr) {
        *result = stoppedSeconds;
    }
    return stoppedSeconds;
}

extern "C" int gettimeofday(timeval *result, void *zone) noexcept
{
    if (!stopped) {
        return next<int(timeval *, void *)>("gettimeofday")(result, zone);
    }
    result->tv_sec = stoppedSeconds;
    result->tv_usec = stoppedMicroseconds;
    return 0;
}

extern "C" tm *localtime(const time_t *when) noexcept
{
    static tm area;
    auto *const routine = localTimeRoutine.load();
    return routine != nullptr ? routine(when, &area) : next<tm *(const time_t *)>("localtime")(when);
}

void stopClock(time_t seconds, suseconds_t microseconds)
{
    stoppedSeconds = seconds;
    stoppedMicroseconds = microseconds;
    stopped = true;
}

void setLocalTime(tm *(*routine)(const time_t *when, tm *fields))
{
    localTimeRoutine = routine;
}

void setTimeZone(const char *zone)
{
    setenv("TZ", zone, 1);
}

time_t utc(int year, unsigned month, unsigned day, int hour, int minute, int second)
{
    using namespace std::chrono;
    const sys_days date = std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day);
    const int64_t seconds =
        int64_t{date.time_since_epoch().count()} * 86400 + hour * 3600 + minute * 60 + second;
    if (!std::in_range<time_t>(seconds)) {
        std::abort();
    }
    return static_cast<time_t>(seconds);
}
