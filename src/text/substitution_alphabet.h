// The substitution alphabet of record scrambling and the shift through it, which enciphering and
// deciphering must step alike. Each of the two holds a copy of its own.
#ifndef DOV0610_TEXT_SUBSTITUTION_ALPHABET_H
#define DOV0610_TEXT_SUBSTITUTION_ALPHABET_H

#include <array>
#include <cstdint>

// The key of the system: every printable character once, the blank included. Records scrambled with
// another order cannot be read back, so it never changes.
constexpr char SubstitutionAlphabet[] =
    R"(<7ZK>Sx&A2(mzs_:3D+upRG1o8ahi~e".?T`B#y,\l=qtv|k0Y)@rVNFWM9PL]*'[!Uw}fjIXHECc d-b/J$%O^54{gQ;6n)";
constexpr int32_t AlphabetLength = sizeof SubstitutionAlphabet - 1;
constexpr uint8_t NotInAlphabet = 0xFF;

// Where in the alphabet each byte value stands.
constexpr std::array<uint8_t, 256> AlphabetIndex = [] {
    std::array<uint8_t, 256> index{};
    index.fill(NotInAlphabet);
    for (int32_t i = 0; i < AlphabetLength; ++i) {
        index[static_cast<unsigned char>(SubstitutionAlphabet[i])] = static_cast<uint8_t>(i);
    }
    return index;
}();

static_assert(AlphabetLength == 95);
static_assert([] {
    for (unsigned char character = 0x20; character < 0x7F; ++character) {
        if (AlphabetIndex[character] == NotInAlphabet) {
            return false;
        }
    }
    return true;
}());

// The shift for one position of a record after the other: it starts at the seed and moves by -1, +2, -3,
// +4 and so on. Only its remainder by the alphabet's length counts, so that alone is kept, and no seed
// and no record is too large for it.
class SubstitutionShift {
public:
    explicit SubstitutionShift(int32_t seed) noexcept : shift(difference(seed % AlphabetLength, 0)) {}

    int32_t forward(int32_t index) const noexcept { return sum(index, shift); }
    int32_t back(int32_t index) const noexcept { return difference(index, shift); }

    void advance() noexcept
    {
        step = sum(step, 1);
        atOddStep = !atOddStep;
        shift = atOddStep ? difference(shift, step) : sum(shift, step);
    }

private:
    // Of numbers within the alphabet's length, and within it again.
    static int32_t sum(int32_t a, int32_t b) noexcept { return difference(a, AlphabetLength - b); }
    static int32_t difference(int32_t a, int32_t b) noexcept
    {
        return a < b ? a - b + AlphabetLength : a - b;
    }

    int32_t shift;
    int32_t step = 0;
    bool atOddStep = false;
};

#endif
