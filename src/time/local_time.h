// A calendar time in the fields of local time, as every function of this family wants it.
#ifndef DOV0610_TIME_LOCAL_TIME_H
#define DOV0610_TIME_LOCAL_TIME_H

#include <ctime>

// Breaks a time into local time and tells whether that can be done: a year must fit into an int. The
// re-entrant routine may leave TZ unread, hence tzset, so that a change of TZ counts at once.
inline bool breakIntoLocalTime(time_t when, tm &fields) noexcept
{
    tzset();
    return localtime_r(&when, &fields) != nullptr;
}

#endif
