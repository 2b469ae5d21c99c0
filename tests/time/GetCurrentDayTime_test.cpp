#include "support/clock.h"
#include "support/trace_recorder.h"

#include <limits>

namespace {

constexpr char Function[] = "DOV0_GetCurrentDayTime";

std::string textOf(time_t when)
{
    return DOV0_GetCurrentDayTime(&when);
}

tm *leapSecond(const time_t *, tm *fields)
{
    *fields = {};
    fields->tm_year = 116;
    fields->tm_mon = 11;
    fields->tm_mday = 31;
    fields->tm_hour = 23;
    fields->tm_min = 59;
    fields->tm_sec = 60;
    return fields;
}

// The last second that the fields of local time can hold.
tm *lastSecond(const time_t *, tm *fields)
{
    *fields = {};
    fields->tm_year = std::numeric_limits<int>::max();
    fields->tm_mon = 11;
    fields->tm_mday = 31;
    fields->tm_hour = 23;
    fields->tm_min = 59;
    fields->tm_sec = 59;
    return fields;
}

} // namespace

TEST(GetCurrentDayTime, ShowsTheTimeGiven)
{
    setTimeZone("UTC0");
    EXPECT_EQ(textOf(utc(2026, 11, 16, 5, 58, 43)), "126/11/16-05:58:43");
    EXPECT_EQ(textOf(utc(1999, 12, 31, 23, 59, 59)), "99/12/31-23:59:59");
    EXPECT_EQ(textOf(utc(2000, 1, 1)), "100/01/01-00:00:00");
    EXPECT_EQ(textOf(utc(1905, 2, 3, 4, 5, 6)), "05/02/03-04:05:06");
    if (TimeIsWide) {
        EXPECT_EQ(textOf(utc(1895, 2, 3, 4, 5, 6)), "-05/02/03-04:05:06");
    }
}

TEST(GetCurrentDayTime, ShowsThePresentTimeForNull)
{
    setTimeZone("UTC0");
    stopClock(utc(2026, 3, 4, 5, 6, 7));
    EXPECT_STREQ(DOV0_GetCurrentDayTime(nullptr), "126/03/04-05:06:07");
}

TEST(GetCurrentDayTime, UsesTheTimeZoneThatTzNamesAtTheCall)
{
    setTimeZone("UTC0");
    EXPECT_EQ(textOf(utc(2024, 12, 31, 23, 30, 15)), "124/12/31-23:30:15");
    setTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(textOf(utc(2024, 12, 31, 23, 30, 15)), "125/01/01-00:30:15");
}

TEST(GetCurrentDayTime, ShowsALeapSecondAsItIs)
{
    setLocalTime(leapSecond);
    EXPECT_EQ(textOf(1), "116/12/31-23:59:60");
}

TEST(GetCurrentDayTime, OverwritesOneStaticText)
{
    setTimeZone("UTC0");
    const time_t first = utc(2026, 11, 16, 5, 58, 43);
    const time_t second = utc(1999, 12, 31, 23, 59, 59);
    char *const text = DOV0_GetCurrentDayTime(&first);
    EXPECT_EQ(text[18], '\0');
    EXPECT_EQ(DOV0_GetCurrentDayTime(&second), text);
    EXPECT_STREQ(text, "99/12/31-23:59:59");
    EXPECT_EQ(text[18], '\0');
}

TEST(GetCurrentDayTime, HasRoomForAnyYear)
{
    setLocalTime(lastSecond);
    EXPECT_EQ(textOf(1), "2147483647/12/31-23:59:59");
    setLocalTime(nullptr);
    if (TimeIsWide) {
        setTimeZone("UTC0");
        EXPECT_EQ(textOf(static_cast<time_t>(67768036191676799)), "2147483647/12/31-23:59:59");
    }
}

TEST(GetCurrentDayTime, ReportsATimeThatHasNoLocalTime)
{
    setTimeZone("UTC0");
    char *const text = DOV0_GetCurrentDayTime(nullptr);
    setLocalTime([](const time_t *, tm *) -> tm * { return nullptr; });
    const time_t when = 5;
    const std::string record = message(Function, "*****Time 5 has no local time\n");
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_STREQ(DOV0_GetCurrentDayTime(&when), ""); }),
              (TraceLog{entry(Function), record, leave(Function, text)}));
    EXPECT_EQ(bitsThatShow(record, [&] { DOV0_GetCurrentDayTime(&when); }), Trace::Error);
}

TEST(GetCurrentDayTime, TracesEntryAndExitOnly)
{
    const time_t when = 1000000000;
    char *text = nullptr;
    const TraceLog log = traceAt(Trace::All, [&] { text = DOV0_GetCurrentDayTime(&when); });
    EXPECT_EQ(log, (TraceLog{entry(Function), leave(Function, text)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [&] { DOV0_GetCurrentDayTime(&when); }), TraceLog{});
}
