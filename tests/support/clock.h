// The system's clock and calendar in the hands of a test: time, gettimeofday and localtime as the library
// calls them. Left alone, they are the system's own.
#ifndef DOV0610_TESTS_CLOCK_H
#define DOV0610_TESTS_CLOCK_H

#include <ctime>
#include <sys/time.h>

// Stops the clock at this time.
void stopClock(time_t seconds, suseconds_t microseconds = 0);

// What localtime answers with from now on, in its area; null for the system's own.
void setLocalTime(tm *(*routine)(const time_t *when, tm *fields));

// Sets TZ, which the library is to read by itself.
void setTimeZone(const char *zone);

// A time_t of 32 bits reaches from December 1901 to January 2038 only.
constexpr bool TimeIsWide = sizeof(time_t) > 4;

// Seconds from the epoch to a date and time in UTC, which a time_t must be able to hold.
time_t utc(int year, unsigned month, unsigned day, int hour = 0, int minute = 0, int second = 0);

#endif
