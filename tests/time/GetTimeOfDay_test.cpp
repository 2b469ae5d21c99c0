#include "support/clock.h"
#include "support/trace_recorder.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_GetTimeOfDay";

} // namespace

TEST(GetTimeOfDay, CountsMilliseconds)
{
    struct Case {
        time_t seconds;
        suseconds_t microseconds;
        int32_t expected;
    };
    for (const Case &c : {Case{0, 0, 0}, Case{0, 999, 0}, Case{0, 1000, 1}, Case{1, 999999, 1999},
                          Case{2147483, 647999, INT32_MAX}, Case{2147483, 648000, INT32_MIN},
                          Case{4294967, 295999, -1}, Case{4294967, 296000, 0}}) {
        stopClock(c.seconds, c.microseconds);
        EXPECT_EQ(DOV0_GetTimeOfDay(), c.expected) << c.seconds << "." << c.microseconds;
    }
}

TEST(GetTimeOfDay, WrapsIn32Bits)
{
    std::mt19937_64 random(3);
    for (int i = 0; i < 20000; ++i) {
        const auto seconds = static_cast<time_t>(random() >> 33);
        const auto microseconds = static_cast<suseconds_t>(random() % 1000000);
        stopClock(seconds, microseconds);
        const uint64_t milliseconds =
            static_cast<uint64_t>(seconds) * 1000 + static_cast<uint64_t>(microseconds) / 1000;
        ASSERT_EQ(static_cast<uint32_t>(DOV0_GetTimeOfDay()), milliseconds % 4294967296U) << seconds;
    }
}

TEST(GetTimeOfDay, ReportsItsValueAtExit)
{
    stopClock(2147483, 648000);
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_GetTimeOfDay(); }),
              (TraceLog{entry(Function), leave(Function, INT32_MIN)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [] { DOV0_GetTimeOfDay(); }), TraceLog{});
}
