// A calendar time in the fields of local time, as every function of this family wants it.
#ifndef DOV0610_TIME_LOCAL_TIME_H
#define DOV0610_TIME_LOCAL_TIME_H

#include <ctime>

// Breaks a time into local time by localtime, and tells whether that can be done: a year must fit into an int.
bool breakIntoLocalTime(time_t when, tm &fields) noexcept;

#endif
