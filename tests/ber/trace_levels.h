// Checks of a call's whole trace at every level: each record is said with the bits under which it appears.
#ifndef DOV0610_TESTS_BER_TRACE_LEVELS_H
#define DOV0610_TESTS_BER_TRACE_LEVELS_H

#include "support/trace_recorder.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

constexpr uint32_t Always = ~0U;

struct LeveledRecord {
    uint32_t bits;
    std::string text;
};

using LeveledTrace = std::vector<LeveledRecord>;

inline LeveledTrace operator+(LeveledTrace left, const LeveledTrace &right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// What a level shows of a trace.
inline TraceLog at(uint32_t level, const LeveledTrace &trace)
{
    TraceLog shownRecords;
    for (const LeveledRecord &record : trace) {
        if (record.bits == Always || (record.bits & level) != 0) {
            shownRecords.push_back(record.text);
        }
    }
    return shownRecords;
}

// Puts "*" for the address or the number that follows a mark.
inline void maskBehind(const std::string &mark, std::string &line)
{
    const size_t found = line.find(mark);
    if (found != std::string::npos && line.compare(found + mark.size(), 1, "*") != 0) {
        const size_t begin = found + mark.size();
        const size_t end = std::min(line.find_first_not_of("0123456789abcdefx-", begin), line.size());
        line.replace(begin, end - begin, "*");
    }
}

inline bool startsWith(const std::string &line, const char *beginning)
{
    return line.rfind(beginning, 0) == 0;
}

// A log without the accounting of working storage, and with "*" for the addresses that a caller never sees: those of
// storage and tokens that come and go inside a call, and of the reader's work area. A null result stays 0.
inline TraceLog masked(const TraceLog &log)
{
    TraceLog masks;
    for (std::string line : log) {
        if (line.find("Total Working Storage") != std::string::npos ||
            line.find("Initializing WorkingStorageCounterLock") != std::string::npos) {
            continue;
        }
        if (startsWith(line, "DOV0_GetStorage: ") || startsWith(line, "DOV0_FreeStorage: ")) {
            maskBehind("@", line);
        }
        const bool isResult =
            startsWith(line, "DOV0_GetStorage exit ") || startsWith(line, "DOV0_strtok exit ");
        if (isResult && line.find(" exit 0") == std::string::npos) {
            maskBehind(" exit ", line);
        }
        maskBehind("WorkSize @", line);
        masks.push_back(line);
    }
    return masks;
}

// What taking and giving back a block of working storage traces, masked.
inline LeveledTrace storageTaken(int32_t size)
{
    return {{Trace::Flow, "DOV0_GetStorage entry"},
            {Trace::Detail,
             "DOV0_GetStorage: Allocated storage at address @* size " + std::to_string(size) + "\n"},
            {Trace::Flow, "DOV0_GetStorage exit *"}};
}

inline LeveledTrace storageMissing(int32_t size)
{
    return {
        {Trace::Flow, "DOV0_GetStorage entry"},
        {Trace::Error, "DOV0_GetStorage: *****Unable to obtain storage, size " + std::to_string(size) + "\n"},
        {Trace::Flow, "DOV0_GetStorage exit 0"}};
}

inline LeveledTrace storageGiven()
{
    return {{Trace::Flow, "DOV0_FreeStorage entry"},
            {Trace::Detail, "DOV0_FreeStorage: Freeing storage at address @*\n"},
            {Trace::Flow, "DOV0_FreeStorage exit"}};
}

// Makes a call at level 0, at all levels, at every single bit and at all but each bit, and compares the whole masked
// trace each time. The expectation is asked for after the call, so that it may tell what the call returned.
inline void expectTrace(const std::function<void()> &call,
                        const std::function<LeveledTrace(uint32_t level)> &expected)
{
    std::vector<uint32_t> levels = {0, 0x7FFFFFFF};
    for (uint32_t bit = 1; bit <= 0x8000; bit <<= 1) {
        levels.push_back(bit);
        levels.push_back(0x7FFFFFFF & ~bit);
    }
    for (const uint32_t level : levels) {
        const TraceLog log = traceAt(level, call);
        EXPECT_EQ(masked(log), masked(at(level, expected(level)))) << "at level " << level;
    }
}

#endif
