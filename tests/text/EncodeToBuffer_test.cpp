#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_EncodeToBuffer";
const std::string Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string encoded(const DOV0_Base64Group &group)
{
    GuardedBuffer target(4);
    DOV0_EncodeToBuffer(&group, target.text());
    return std::string(target.text(), 4);
}

} // namespace

TEST(EncodeToBuffer, WritesFourCharacters)
{
    EXPECT_EQ(encoded({{'M', 'a', 'n', 0}, 3}), "TWFu");
    EXPECT_EQ(encoded({{'M', 'a', 0, 0}, 2}), "TWE=");
    EXPECT_EQ(encoded({{'M', 0, 0, 0}, 1}), "TQ==");
    for (uint32_t value = 0; value < 64; ++value) {
        const std::string expected(4, Alphabet[value]);
        const uint32_t bits = value * 0x41041U;
        EXPECT_EQ(encoded({{static_cast<unsigned char>(bits >> 16 & 0xFF),
                            static_cast<unsigned char>(bits >> 8 & 0xFF),
                            static_cast<unsigned char>(bits & 0xFF), 0xEE},
                           3}),
                  expected);
    }
}

TEST(EncodeToBuffer, PadsByTheCountAlone)
{
    EXPECT_EQ(encoded({{'M', 'a', 'n', 0}, 1}), "TW==");
    EXPECT_EQ(encoded({{'M', 'a', 'n', 0}, 2}), "TWF=");
    for (const int32_t count : {0, -1, 4, INT32_MAX}) {
        EXPECT_EQ(encoded({{'M', 'a', 'n', 0}, count}), "TWFu") << count;
    }
}

TEST(EncodeToBuffer, TracesEventsOnlyWithThoseOfTheRawOperationInside)
{
    const DOV0_Base64Group group = {{'M', 'a', 'n', 0}, 3};
    char target[4];
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_EncodeToBuffer(&group, target); }),
              (TraceLog{entry(Function), entry("DOV0_EncodeRaw"), leave("DOV0_EncodeRaw"), leave(Function)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [&] { DOV0_EncodeToBuffer(&group, target); }), TraceLog{});
}

TEST(EncodeToBuffer, RefusesNull)
{
    const DOV0_Base64Group group = {{'M', 'a', 'n', 0}, 3};
    char target[] = "####";
    const std::string record = message(Function, "*****Base64 group or target is NULL\n");
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_EncodeToBuffer(nullptr, target); }),
              (TraceLog{entry(Function), record, leave(Function)}));
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_EncodeToBuffer(&group, nullptr); }),
              (TraceLog{entry(Function), record, leave(Function)}));
    EXPECT_STREQ(target, "####");
    EXPECT_EQ(bitsThatShow(record, [] { DOV0_EncodeToBuffer(nullptr, nullptr); }), Trace::Error);
}
