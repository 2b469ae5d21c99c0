#include "time/local_time.h"

#include <cstdlib>
#include <pthread.h>

namespace {

// Guards the area that localtime answers in, as far as this library is concerned, and the last answer.
constinit pthread_mutex_t localTimeLock = PTHREAD_MUTEX_INITIALIZER;

struct Answer {
    bool isKnown;
    time_t when;
    time_t second; // of the monotonic clock
    tm fields;
};

constinit Answer lastAnswer = {};

// Without TZ each localtime looks at the system's time zone file, which costs more than all the rest of a timestamp.
// Within a second the answer to the same question is kept.
bool answerFromSystemZone(time_t when, tm &fields) noexcept
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    if (!lastAnswer.isKnown || lastAnswer.when != when || lastAnswer.second != now.tv_sec) {
        const tm *local = localtime(&when);
        lastAnswer = {local != nullptr, when, now.tv_sec, local != nullptr ? *local : tm{}};
    }
    fields = lastAnswer.fields;
    return lastAnswer.isKnown;
}

} // namespace

bool breakIntoLocalTime(time_t when, tm &fields) noexcept
{
    pthread_mutex_lock(&localTimeLock);
    bool isKnown = false;
    if (std::getenv("TZ") == nullptr) {
        isKnown = answerFromSystemZone(when, fields);
    } else if (const tm *local = localtime(&when)) {
        fields = *local;
        isKnown = true;
    }
    pthread_mutex_unlock(&localTimeLock);
    return isKnown;
}
