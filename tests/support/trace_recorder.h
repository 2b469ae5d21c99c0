// A stand-in for the trace facility: it records what the library traces, so that a test can compare whole
// sequences.
//
//     TraceLog log = traceAt(Trace::Detail, [&] { block = DOV0_GetStorage(16); });
//     EXPECT_EQ(log, (TraceLog{message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n",
//     block, 16)}));
#ifndef DOV0610_TESTS_TRACE_RECORDER_H
#define DOV0610_TESTS_TRACE_RECORDER_H

#include "dov0610.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

using TraceLog = std::vector<std::string>;

// What the recorder does about the place that each event names, defined by its user.
void checkEventPlace(const TRC1_EntryBlock &block, int32_t line, int32_t kind);

// The level bits by their short names, unsigned so that they combine without warnings.
namespace Trace {
constexpr uint32_t Detail = DOV0_TRACE_DETAIL;
constexpr uint32_t Storage = DOV0_TRACE_STORAGE;
constexpr uint32_t Dump = DOV0_TRACE_DUMP;
constexpr uint32_t State = DOV0_TRACE_STATE;
constexpr uint32_t Flow = DOV0_TRACE_FLOW;
constexpr uint32_t Error = DOV0_TRACE_ERROR;
constexpr uint32_t Configuration = DOV0_TRACE_CONFIGURATION;
constexpr uint32_t All = Detail | Storage | Dump | State | Flow | Error | Configuration;
} // namespace Trace

// Sets the level of every function, or of one (which then differs from the others); each takes it up at its
// next call.
void setTraceLevel(uint32_t level);
void setTraceLevel(const char *function, uint32_t level);

// What was recorded since the last call, oldest first.
TraceLog takeTrace();

// How often TRC1_Sync was called since the last call of this function.
int takeSynchronisations();

// What a call traces at a level. Afterwards the level is 0 again.
TraceLog traceAt(uint32_t level, const std::function<void()> &call);

// What a call traces when only this one function has a level.
TraceLog traceOf(const char *function, uint32_t level, const std::function<void()> &call);

// The part of a log that comes from one function.
TraceLog from(const char *function, const TraceLog &log);

// Each single bit under which a call traces this text, put together: "its bits, and no others".
// The call is made once for each bit.
uint32_t bitsThatShow(const std::string &record, const std::function<void()> &call);

// Records as they stand in a log.
std::string entry(const char *function);
std::string leave(const char *function);
std::string leave(const char *function, intptr_t value);
std::string leave(const char *function, const void *value);
std::string message(const char *function, const char *format, ...);
std::string dump(const char *function, const void *address, int32_t length,
                 const char *itemFormat = "%02.2X");

#endif
