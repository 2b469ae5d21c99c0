// Restores a text record that DOV0_EncipherRecord scrambled with the same seed. A leaf: no flow events.
#include "foundation/frame.h"
#include "text/substitution_alphabet.h"

TRACE_CONTROL("dov0decr", DOV0_DecipherMetaRecord);
extern "C" char *DOV0_DecipherMetaRecord(char *record, int32_t seed) noexcept
{
    [[maybe_unused]] const TraceLevel level(TRC1__EPB_);

    if (record == nullptr) {
        return record;
    }
    SubstitutionShift shift(seed);
    for (char *next = record; *next != '\0'; ++next) {
        const uint8_t index = AlphabetIndex[static_cast<unsigned char>(*next)];
        if (index != NotInAlphabet) {
            *next = SubstitutionAlphabet[shift.back(index)];
        }
        shift.advance();
    }
    return record;
}
