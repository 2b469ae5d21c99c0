#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_ConvertLongEndian";

} // namespace

TEST(ConvertLongEndian, ReversesTheBytes)
{
    GuardedBuffer buffer(4);
    std::memcpy(buffer.bytes(), "\x12\x34\x56\x78", 4);
    DOV0_ConvertLongEndian(buffer.bytes());
    EXPECT_EQ(std::string(buffer.text(), 4), "\x78\x56\x34\x12");
}

TEST(ConvertLongEndian, ReversesAtEachAlignmentAndTouchesNothingElse)
{
    std::mt19937 random(4);
    for (int round = 0; round < 1000; ++round) {
        GuardedBuffer buffer(12);
        for (size_t i = 0; i < 12; ++i) {
            buffer.bytes()[i] = static_cast<unsigned char>(random());
        }
        std::string expected(buffer.text(), 12);
        const size_t place = random() % (12 - 4 + 1);
        for (size_t i = 0; i < 4; ++i) {
            expected[place + i] = buffer.text()[place + 4 - 1 - i];
        }
        DOV0_ConvertLongEndian(buffer.bytes() + place);
        EXPECT_EQ(std::string(buffer.text(), 12), expected);
    }
}

TEST(ConvertLongEndian, TracesEventsOnly)
{
    GuardedBuffer buffer(4);
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_ConvertLongEndian(buffer.bytes()); }),
              (TraceLog{entry(Function), leave(Function)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [&] { DOV0_ConvertLongEndian(buffer.bytes()); }),
              TraceLog{});
}

TEST(ConvertLongEndian, RefusesNull)
{
    const std::string text = message(Function, "***** Input integer is NULL\n");
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_ConvertLongEndian(nullptr); }),
              (TraceLog{entry(Function), text, leave(Function)}));
    EXPECT_EQ(bitsThatShow(text, [] { DOV0_ConvertLongEndian(nullptr); }), Trace::Error);
}
