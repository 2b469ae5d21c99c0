#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"
#include "text/record_model.h"

#include <random>

namespace {

std::string deciphered(const std::string &record, int32_t seed)
{
    GuardedBuffer buffer(record);
    EXPECT_EQ(DOV0_DecipherMetaRecord(buffer.text(), seed), buffer.text());
    return {buffer.text(), record.size()};
}

std::string enciphered(const std::string &record, int32_t seed)
{
    GuardedBuffer buffer(record);
    DOV0_EncipherRecord(buffer.text(), seed);
    return {buffer.text(), record.size()};
}

std::string randomRecord(std::mt19937 &random, size_t longest)
{
    std::string record(random() % (longest + 1), ' ');
    for (char &character : record) {
        character = static_cast<char>(random() % 255 + 1);
    }
    return record;
}

} // namespace

TEST(DecipherMetaRecord, RestoresWhatWasEnciphered)
{
    std::mt19937 random(43);
    for (int round = 0; round < 2000; ++round) {
        const std::string record = randomRecord(random, 600);
        const auto seed = static_cast<int32_t>(random());
        ASSERT_EQ(deciphered(enciphered(record, seed), seed), record) << seed;
    }
}

TEST(DecipherMetaRecord, RestoresWithEachSmallAndExtremeSeed)
{
    const std::string record = "PRODUCT_CODE=OV  # \"quoted\" \\ ~ \t end\r\n";
    for (int32_t seed = -300; seed <= 300; ++seed) {
        EXPECT_EQ(deciphered(enciphered(record, seed), seed), record) << seed;
    }
    for (const int32_t seed : {INT32_MIN, INT32_MIN + 1, INT32_MAX, INT32_MAX - 1}) {
        EXPECT_EQ(deciphered(enciphered(record, seed), seed), record) << seed;
        const std::string longRecord(100000, 'q');
        EXPECT_TRUE(deciphered(enciphered(longRecord, seed), seed) == longRecord) << seed;
    }
}

TEST(DecipherMetaRecord, DoesNotRestoreWithAnotherSeed)
{
    const std::string record = "PRODUCT_CODE=OV";
    for (int32_t seed = -94; seed <= 94; ++seed) {
        if (seed != 0) {
            EXPECT_NE(deciphered(enciphered(record, 7), 7 + seed), record) << seed;
        }
    }
}

TEST(DecipherMetaRecord, AgreesWithTheModel)
{
    const std::string cycle = substitutionCycle();
    std::mt19937 random(34);
    for (int round = 0; round < 2000; ++round) {
        const std::string record = randomRecord(random, 300);
        const auto seed = static_cast<int32_t>(random());
        ASSERT_EQ(deciphered(record, seed), shifted(record, seed, -1, cycle)) << seed;
    }
}

TEST(DecipherMetaRecord, LeavesOtherBytesAlone)
{
    EXPECT_EQ(deciphered("", 3), "");
    EXPECT_EQ(deciphered("\t\r\n\x7F\x80\xFF", 3), "\t\r\n\x7F\x80\xFF");
}

TEST(DecipherMetaRecord, ReturnsNullForNull)
{
    EXPECT_EQ(DOV0_DecipherMetaRecord(nullptr, 5), nullptr);
}

TEST(DecipherMetaRecord, TracesNoEventsButTakesUpItsLevel)
{
    GuardedBuffer buffer("KEY=VALUE");
    takeSynchronisations();
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_DecipherMetaRecord(buffer.text(), 5); }), TraceLog{});
    EXPECT_EQ(takeSynchronisations(), 1);
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_DecipherMetaRecord(nullptr, 5); }), TraceLog{});
}
