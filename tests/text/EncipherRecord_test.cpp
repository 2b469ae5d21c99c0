#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"
#include "text/record_model.h"

#include <algorithm>
#include <random>

namespace {

constexpr char Function[] = "DOV0_EncipherRecord";

std::string enciphered(const std::string &record, int32_t seed)
{
    GuardedBuffer buffer(record);
    EXPECT_EQ(DOV0_EncipherRecord(buffer.text(), seed), buffer.text());
    return {buffer.text(), record.size()};
}

} // namespace

TEST(EncipherRecord, HasAnAlphabetOfThe95PrintableCharacters)
{
    std::string characters = substitutionCycle();
    EXPECT_FALSE(std::is_sorted(characters.begin(), characters.end()));
    std::sort(characters.begin(), characters.end());
    std::string printable;
    for (char character = ' '; character <= '~'; ++character) {
        printable.push_back(character);
    }
    EXPECT_EQ(characters, printable);
}

TEST(EncipherRecord, KeepsItsKey)
{
    // Records enciphered by one version of the library are read by all later ones.
    const std::string key =
        R"(<7ZK>Sx&A2(mzs_:3D+upRG1o8ahi~e".?T`B#y,\l=qtv|k0Y)@rVNFWM9PL]*'[!Uw}fjIXHECc d-b/J$%O^54{gQ;6n)";
    const size_t blank = key.find(' ');
    EXPECT_EQ(substitutionCycle(), key.substr(blank) + key.substr(0, blank));
}

TEST(EncipherRecord, MovesTheShiftByOneMoreEachTimeToAndFro)
{
    const std::string cycle = substitutionCycle();
    const auto at = [&](int shift) { return cycle[static_cast<size_t>((shift + 95) % 95)]; };
    // From seed 10 the shift goes -1, +2, -3, +4, -5, +6.
    EXPECT_EQ(enciphered("       ", 10), (std::string{at(10), at(9), at(11), at(8), at(12), at(7), at(13)}));
    EXPECT_EQ(enciphered("    ", -1), (std::string{at(-1), at(-2), at(0), at(-3)}));
}

TEST(EncipherRecord, MovesTheShiftPastCharactersThatStay)
{
    const std::string cycle = substitutionCycle();
    EXPECT_EQ(enciphered("\t\x80 ", 10), (std::string{'\t', '\x80', cycle[11]}));
}

TEST(EncipherRecord, LeavesOtherBytesAlone)
{
    std::string others;
    for (int value = 1; value < 256; ++value) {
        if (value < 0x20 || value > 0x7E) {
            others.push_back(static_cast<char>(value));
        }
    }
    for (const int32_t seed : {0, 1, -7, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(enciphered(others, seed), others);
        EXPECT_EQ(enciphered("", seed), "");
    }
}

TEST(EncipherRecord, AgreesWithTheModelOnRandomRecords)
{
    const std::string cycle = substitutionCycle();
    std::mt19937 random(610);
    for (int round = 0; round < 2000; ++round) {
        std::string record(random() % 600, ' ');
        for (char &character : record) {
            character = static_cast<char>(random() % 255 + 1);
        }
        const auto seed = static_cast<int32_t>(random());
        ASSERT_EQ(enciphered(record, seed), shifted(record, seed, 1, cycle)) << seed;
    }
}

TEST(EncipherRecord, AgreesWithTheModelForEachSmallAndExtremeSeed)
{
    const std::string cycle = substitutionCycle();
    std::vector<int32_t> seeds = {INT32_MIN, INT32_MIN + 1, INT32_MIN + 94, INT32_MIN + 95,
                                  INT32_MAX, INT32_MAX - 1, INT32_MAX - 94, INT32_MAX - 95};
    for (int32_t seed = -300; seed <= 300; ++seed) {
        seeds.push_back(seed);
    }
    for (const int32_t seed : seeds) {
        ASSERT_EQ(enciphered(cycle + cycle, seed), shifted(cycle + cycle, seed, 1, cycle)) << seed;
    }
}

TEST(EncipherRecord, TakesLongRecords)
{
    const std::string cycle = substitutionCycle();
    const std::string record(200000, 'x');
    for (const int32_t seed : {0, INT32_MAX, INT32_MIN}) {
        EXPECT_TRUE(enciphered(record, seed) == shifted(record, seed, 1, cycle)) << seed;
    }
}

TEST(EncipherRecord, ReturnsNullForNull)
{
    EXPECT_EQ(traceAt(Trace::All, [] { EXPECT_EQ(DOV0_EncipherRecord(nullptr, 5), nullptr); }),
              (TraceLog{entry(Function), leave(Function, nullptr)}));
}

TEST(EncipherRecord, TracesEventsOnly)
{
    GuardedBuffer buffer("KEY=VALUE");
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_EncipherRecord(buffer.text(), 5); }),
              (TraceLog{entry(Function), leave(Function, static_cast<const void *>(buffer.text()))}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [&] { DOV0_EncipherRecord(buffer.text(), 5); }), TraceLog{});
}
