#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_DecodeRaw";

} // namespace

TEST(DecodeRaw, PutsFourValuesTogether)
{
    for (uint32_t i = 0; i < 65536; ++i) {
        const uint32_t bits = i * 257U & 0xFFFFFFU;
        const unsigned char sextets[4] = {
            static_cast<unsigned char>(bits / 262144), static_cast<unsigned char>(bits / 4096 % 64),
            static_cast<unsigned char>(bits / 64 % 64), static_cast<unsigned char>(bits % 64)};
        unsigned char bytes[4] = {0xAA, 0xAA, 0xAA, 0xAA};
        DOV0_DecodeRaw(bytes, sextets);
        ASSERT_EQ(uint32_t{bytes[0]} * 65536 + uint32_t{bytes[1]} * 256 + bytes[2], bits);
        ASSERT_EQ(bytes[3], 0xAA);
    }
}

TEST(DecodeRaw, CalculatesInEightBitsWithAnyValues)
{
    std::mt19937 random(421);
    for (int i = 0; i < 100000; ++i) {
        unsigned char sextets[4];
        for (unsigned char &value : sextets) {
            value = static_cast<unsigned char>(random() % 256);
        }
        unsigned char bytes[3];
        DOV0_DecodeRaw(bytes, sextets);
        ASSERT_EQ(bytes[0], sextets[0] * 4 % 256 | (sextets[1] / 16 & 3));
        ASSERT_EQ(bytes[1], sextets[1] * 16 % 256 | (sextets[2] / 4 & 15));
        ASSERT_EQ(bytes[2], sextets[2] * 64 % 256 | (sextets[3] & 63));
    }
    const unsigned char padded[4] = {16, 16, 0xFF, 0xFF}; // QQ==
    unsigned char bytes[3];
    DOV0_DecodeRaw(bytes, padded);
    EXPECT_EQ(bytes[0], 0x41);
    EXPECT_EQ(bytes[1], 0x0F);
    EXPECT_EQ(bytes[2], 0xFF);
}

TEST(DecodeRaw, KeepsToItsBytes)
{
    GuardedBuffer sextets(4, 63);
    GuardedBuffer bytes(3);
    DOV0_DecodeRaw(bytes.bytes(), sextets.bytes());
    EXPECT_EQ(std::string(bytes.text(), 3), "\xFF\xFF\xFF");
}

TEST(DecodeRaw, TracesEntryAndExitOnly)
{
    const unsigned char sextets[4] = {1, 2, 3, 4};
    unsigned char bytes[3];
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_DecodeRaw(bytes, sextets); }),
              (TraceLog{entry(Function), leave(Function)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [&] { DOV0_DecodeRaw(bytes, sextets); }), TraceLog{});
}

TEST(DecodeRaw, RefusesNull)
{
    unsigned char bytes[4] = {1, 2, 3, 4};
    const std::string record = message(Function, "*****Base64 group or target is NULL\n");
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_DecodeRaw(nullptr, bytes); }),
              (TraceLog{entry(Function), record, leave(Function)}));
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_DecodeRaw(bytes, nullptr); }),
              (TraceLog{entry(Function), record, leave(Function)}));
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EQ(bitsThatShow(record, [] { DOV0_DecodeRaw(nullptr, nullptr); }), Trace::Error);
}
