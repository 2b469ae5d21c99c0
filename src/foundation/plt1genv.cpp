// Looks a variable up in the process environment.
#include "dov0610_platform.h"

#include <cstdlib>

extern "C" const char *PLT1_GetEnv(const char *name, int32_t /*reserved*/)
{
    return std::getenv(name);
}
