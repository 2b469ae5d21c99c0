#include "time/local_time.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>

namespace {

constinit std::atomic<uint64_t> lastZone{0};
constinit std::atomic<time_t> lastLook{-1};

// Tells values of TZ apart (FNV-1a); one that is not set differs from one that is empty.
uint64_t fingerprint(const char *zone) noexcept
{
    uint64_t hash = 0xCBF29CE484222325U;
    for (; zone != nullptr && *zone != '\0'; ++zone) {
        hash = (hash ^ static_cast<unsigned char>(*zone)) * 0x100000001B3U;
    }
    return zone != nullptr ? hash : 0;
}

// tzset looks at the system's time zone file whenever TZ is not set, which costs more than all the rest.
void lookUpTimeZone() noexcept
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const uint64_t zone = fingerprint(std::getenv("TZ"));
    if (zone != lastZone.load(std::memory_order_relaxed) ||
        now.tv_sec != lastLook.load(std::memory_order_relaxed)) {
        tzset();
        lastZone.store(zone, std::memory_order_relaxed);
        lastLook.store(now.tv_sec, std::memory_order_relaxed);
    }
}

} // namespace

bool breakIntoLocalTime(time_t when, tm &fields) noexcept
{
    lookUpTimeZone(); // the re-entrant routine may leave it unread
    return localtime_r(&when, &fields) != nullptr;
}
