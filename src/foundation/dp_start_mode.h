// How data providers are started. The agent's console messages depend on it.
#ifndef DOV0610_FOUNDATION_DP_START_MODE_H
#define DOV0610_FOUNDATION_DP_START_MODE_H

#include <atomic>
#include <cstdint>

// What DOV0_SetDPstartMode stored last; 0 at start.
extern std::atomic<int32_t> IndependentDPstartMode;

#endif
