// Stands where the agent framework has its operator messages; a process without the framework shows none.
#include "dov0610_platform.h"

extern "C" void AGF_CreateMessage(const char * /*sText*/, const char * /*cText*/, const char * /*message*/,
                                  int32_t /*reserved*/)
{
}
