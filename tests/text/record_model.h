// Record scrambling by its definition: a shift of unlimited range through a cycle of 95 characters.
#ifndef DOV0610_TESTS_RECORD_MODEL_H
#define DOV0610_TESTS_RECORD_MODEL_H

#include "dov0610.h"

#include <string>

// The alphabet from the blank on, around its end: the order in which one-character records show it. Where
// it begins makes no difference to scrambling.
inline std::string substitutionCycle()
{
    std::string cycle;
    for (int32_t seed = 0; seed < 95; ++seed) {
        char record[] = " ";
        cycle += DOV0_EncipherRecord(record, seed);
    }
    return cycle;
}

// direction is 1 to scramble and -1 to restore.
inline std::string shifted(std::string record, int32_t seed, int direction, const std::string &cycle)
{
    const auto n = static_cast<int64_t>(cycle.size());
    int64_t shift = seed;
    for (size_t i = 0; i < record.size(); ++i) {
        const size_t p = cycle.find(record[i]);
        if (p != std::string::npos) {
            int64_t index = (static_cast<int64_t>(p) + direction * shift) % n;
            if (index < 0) {
                index += n;
            }
            record[i] = cycle[static_cast<size_t>(index)];
        }
        const auto k = static_cast<int64_t>(i) + 1;
        shift = k % 2 == 0 ? shift + k : shift - k;
    }
    return record;
}

#endif
