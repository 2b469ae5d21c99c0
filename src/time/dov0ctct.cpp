// Makes the timestamp of a calendar time. Timestamps made for one second are kept apart by a sequence number.
#include "foundation/frame.h"
#include "time/local_time.h"

#include <atomic>
#include <cstdio>
#include <cstring>

namespace {

// The time of the last timestamp and its sequence number. The first timestamp is compared with time 0 like
// any other.
constinit std::atomic<time_t> PrevTime{0};
constinit std::atomic<int32_t> msec{0};

// The steps shrink so that the first calls of a second are spread over it and later ones still rise.
int32_t nextSequence(int32_t sequence) noexcept
{
    if (sequence < 100) {
        return sequence + 10;
    }
    if (sequence < 400) {
        return sequence + 5;
    }
    if (sequence < 800) {
        return sequence + 3;
    }
    return sequence < 999 ? sequence + 1 : 999;
}

// Any other second begins again at 0, an earlier one too.
int32_t sequenceOf(time_t when) noexcept
{
    if (PrevTime.exchange(when) != when) {
        msec = 0;
        return 0;
    }
    int32_t last = msec;
    while (!msec.compare_exchange_weak(last, nextSequence(last))) {
    }
    return nextSequence(last);
}

constexpr int32_t LargestYear = 999; // of three digits

// The digits of a number that has no more of them.
void putDigits(char *target, int32_t number, int32_t digits) noexcept
{
    for (int32_t i = digits - 1; i >= 0; --i) {
        target[i] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
}

// Prints a timestamp field by field to its place. The second stands at its eleventh character also when the
// year needs more than three, and a leap second is shown as 00 so that its field stays valid.
void printTimestamp(char (&text)[64], const tm &local, int32_t sequence) noexcept
{
    if (local.tm_year < 0 || local.tm_year > LargestYear) {
        std::snprintf(text, sizeof text, "%.3d%.2d%.2d%.2d%.2d", local.tm_year, local.tm_mon + 1,
                      local.tm_mday, local.tm_hour, local.tm_min);
    } else {
        putDigits(text, local.tm_year, 3);
        putDigits(text + 3, local.tm_mon + 1, 2);
        putDigits(text + 5, local.tm_mday, 2);
        putDigits(text + 7, local.tm_hour, 2);
        putDigits(text + 9, local.tm_min, 2);
    }
    putDigits(text + 11, local.tm_sec < 60 ? local.tm_sec : 0, 2);
    putDigits(text + 13, sequence, 3);
    text[DOV0_TIMESTAMP_SIZE - 1] = '\0';
}

} // namespace

TRACE_CONTROL("dov0ctct", DOV0_ConvertTimeToCorvelTime);
extern "C" char *DOV0_ConvertTimeToCorvelTime(const time_t *when, char *buffer) noexcept
{
    const Frame frame(TRC1__EPB_);

    tm local;
    if (when == nullptr) {
        TRACE(frame, Trace::Error, "*****Time to convert is NULL\n");
        return frame.leave<char *>(nullptr);
    }
    if (!breakIntoLocalTime(*when, local)) {
        TRACE(frame, Trace::Error, "*****Time %lld has no local time\n", static_cast<long long>(*when));
        return frame.leave<char *>(nullptr);
    }
    if (buffer == nullptr) {
        buffer = static_cast<char *>(DOV0_GetStorage(DOV0_TIMESTAMP_BLOCK_SIZE));
        if (buffer == nullptr) {
            return frame.leave(buffer);
        }
    }
    char timestamp[64];
    printTimestamp(timestamp, local, sequenceOf(*when));
    std::memcpy(buffer, timestamp, DOV0_TIMESTAMP_SIZE);
    TRACE(frame, Trace::Detail, "NOW->%s", buffer);
    return frame.leave(buffer);
}
