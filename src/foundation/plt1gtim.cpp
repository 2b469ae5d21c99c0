// Reads the wall clock, as the absolute deadline of a timed wait needs it.
#include "dov0610_platform.h"

extern "C" void PLT1_GetTime(struct timespec *timeOut)
{
    clock_gettime(CLOCK_REALTIME, timeOut);
}
