// Holds the start mode for the families that set it and read it.
#include "foundation/dp_start_mode.h"

constinit std::atomic<int32_t> IndependentDPstartMode = 0;
