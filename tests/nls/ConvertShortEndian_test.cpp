#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_ConvertShortEndian";

} // namespace

TEST(ConvertShortEndian, ReversesTheBytes)
{
    GuardedBuffer buffer(2);
    std::memcpy(buffer.bytes(), "\x12\x34\x56\x78", 2);
    DOV0_ConvertShortEndian(buffer.bytes());
    EXPECT_EQ(std::string(buffer.text(), 2), "\x34\x12");
}

TEST(ConvertShortEndian, ReversesAtEachAlignmentAndTouchesNothingElse)
{
    std::mt19937 random(2);
    for (int round = 0; round < 1000; ++round) {
        GuardedBuffer buffer(12);
        for (size_t i = 0; i < 12; ++i) {
            buffer.bytes()[i] = static_cast<unsigned char>(random());
        }
        std::string expected(buffer.text(), 12);
        const size_t place = random() % (12 - 2 + 1);
        for (size_t i = 0; i < 2; ++i) {
            expected[place + i] = buffer.text()[place + 2 - 1 - i];
        }
        DOV0_ConvertShortEndian(buffer.bytes() + place);
        EXPECT_EQ(std::string(buffer.text(), 12), expected);
    }
}

TEST(ConvertShortEndian, TracesEventsOnly)
{
    GuardedBuffer buffer(2);
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_ConvertShortEndian(buffer.bytes()); }),
              (TraceLog{entry(Function), leave(Function)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [&] { DOV0_ConvertShortEndian(buffer.bytes()); }),
              TraceLog{});
}

TEST(ConvertShortEndian, RefusesNull)
{
    const std::string text = message(Function, "***** Input integer is NULL\n");
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_ConvertShortEndian(nullptr); }),
              (TraceLog{entry(Function), text, leave(Function)}));
    EXPECT_EQ(bitsThatShow(text, [] { DOV0_ConvertShortEndian(nullptr); }), Trace::Error);
}
