#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_EncodeRaw";

} // namespace

TEST(EncodeRaw, SplitsThreeBytesIntoFourValuesOfSixBits)
{
    std::mt19937 random(42);
    for (uint32_t i = 0; i < 100000; ++i) {
        const uint32_t bits = i < 65536 ? i * 257U & 0xFFFFFFU : static_cast<uint32_t>(random() & 0xFFFFFFU);
        const unsigned char bytes[3] = {static_cast<unsigned char>(bits / 65536),
                                        static_cast<unsigned char>(bits / 256 % 256),
                                        static_cast<unsigned char>(bits % 256)};
        unsigned char sextets[5] = {0xAA, 0xAA, 0xAA, 0xAA, 0xAA};
        DOV0_EncodeRaw(sextets, bytes);
        ASSERT_EQ(sextets[0], bits / 262144);
        ASSERT_EQ(sextets[1], bits / 4096 % 64);
        ASSERT_EQ(sextets[2], bits / 64 % 64);
        ASSERT_EQ(sextets[3], bits % 64);
        ASSERT_EQ(sextets[4], 0xAA);
    }
}

TEST(EncodeRaw, KeepsToItsBytes)
{
    GuardedBuffer sextets(4);
    GuardedBuffer bytes(3, 0xFF);
    DOV0_EncodeRaw(sextets.bytes(), bytes.bytes());
    EXPECT_EQ(std::string(sextets.text(), 4), std::string(4, 63));
}

TEST(EncodeRaw, TracesEntryAndExitOnly)
{
    unsigned char sextets[4];
    EXPECT_EQ(
        traceAt(Trace::All, [&] { DOV0_EncodeRaw(sextets, reinterpret_cast<const unsigned char *>("Man")); }),
        (TraceLog{entry(Function), leave(Function)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow,
                      [&] { DOV0_EncodeRaw(sextets, reinterpret_cast<const unsigned char *>("Man")); }),
              TraceLog{});
}

TEST(EncodeRaw, RefusesNull)
{
    unsigned char bytes[4] = {1, 2, 3, 4};
    const std::string record = message(Function, "*****Base64 group or target is NULL\n");
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_EncodeRaw(nullptr, bytes); }),
              (TraceLog{entry(Function), record, leave(Function)}));
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_EncodeRaw(bytes, nullptr); }),
              (TraceLog{entry(Function), record, leave(Function)}));
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EQ(bitsThatShow(record, [] { DOV0_EncodeRaw(nullptr, nullptr); }), Trace::Error);
}
