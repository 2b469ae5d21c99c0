#include "support/clock.h"
#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

namespace {

constexpr char Conversion[] = "DOV0_ConvertTimeToCorvelTime";

} // namespace

TEST(GetCorvelTime, MakesTheTimestampOfThePresentMoment)
{
    setTimeZone("UTC0");
    stopClock(utc(2026, 11, 16, 5, 58, 43), 999999);
    GuardedBuffer buffer(DOV0_TIMESTAMP_SIZE);
    EXPECT_EQ(DOV0_GetCorvelTime(buffer.text()), buffer.text());
    EXPECT_STREQ(buffer.text(), "1261116055843000");
    DOV0_GetCorvelTime(buffer.text());
    EXPECT_STREQ(buffer.text(), "1261116055843010");
    stopClock(utc(2000, 1, 1));
    DOV0_GetCorvelTime(buffer.text());
    EXPECT_STREQ(buffer.text(), "1000101000000000");
}

TEST(GetCorvelTime, GivesOutABlockForANullBuffer)
{
    setTimeZone("UTC0");
    stopClock(utc(1999, 12, 31, 23, 59, 59));
    char *timestamp = DOV0_GetCorvelTime(nullptr);
    EXPECT_STREQ(timestamp, "0991231235959000");
    DOV0_FreeStorage(&timestamp);
}

TEST(GetCorvelTime, TracesNothingOfItsOwn)
{
    setTimeZone("UTC0");
    stopClock(utc(2000, 1, 1));
    GuardedBuffer buffer(DOV0_TIMESTAMP_SIZE);
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_GetCorvelTime(buffer.text()); }),
              (TraceLog{entry(Conversion), message(Conversion, "NOW->1000101000000000"),
                        leave(Conversion, buffer.text())}));
}

TEST(GetCorvelTime, SynchronisesItsTraceLevelAtItsFirstCallOnly)
{
    GuardedBuffer buffer(DOV0_TIMESTAMP_SIZE);
    takeSynchronisations();
    DOV0_GetCorvelTime(buffer.text());
    EXPECT_EQ(takeSynchronisations(), 2); // with that of the conversion
    DOV0_GetCorvelTime(buffer.text());
    EXPECT_EQ(takeSynchronisations(), 0);
}

TEST(GetCorvelTime, FollowsTheClockOfTheSystem)
{
    setTimeZone("UTC0");
    const time_t before = time(nullptr);
    char *timestamp = DOV0_GetCorvelTime(nullptr);
    const time_t after = time(nullptr);
    char *first = DOV0_ConvertTimeToCorvelTime(&before, nullptr);
    char *last = DOV0_ConvertTimeToCorvelTime(&after, nullptr);
    EXPECT_LE(std::string(first, 13), std::string(timestamp, 13));
    EXPECT_LE(std::string(timestamp, 13), std::string(last, 13));
    DOV0_FreeStorage(&timestamp);
    DOV0_FreeStorage(&first);
    DOV0_FreeStorage(&last);
}
