// Stands in for the library's trace facility, so that a tool can say in the library's own words what it did.
#ifndef DOV0610_TOOLS_CAPTURED_TRACE_H
#define DOV0610_TOOLS_CAPTURED_TRACE_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// The messages that one function of the library traces under these level bits while a call runs.
std::vector<std::string> messagesOf(const char *function, uint32_t level, const std::function<void()> &call);

#endif
