// Makes a text record unreadable at sight; DOV0_DecipherMetaRecord with the same seed restores it.
#include "foundation/frame.h"
#include "text/substitution_alphabet.h"

TRACE_CONTROL("dov0encr", DOV0_EncipherRecord);
extern "C" char *DOV0_EncipherRecord(char *record, int32_t seed) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (record == nullptr) {
        return frame.leave(record);
    }
    SubstitutionShift shift(seed);
    for (char *next = record; *next != '\0'; ++next) {
        const uint8_t index = AlphabetIndex[static_cast<unsigned char>(*next)];
        if (index != NotInAlphabet) {
            *next = SubstitutionAlphabet[shift.forward(index)];
        }
        shift.advance();
    }
    return frame.leave(record);
}
