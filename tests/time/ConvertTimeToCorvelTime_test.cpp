#include "support/clock.h"
#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <random>
#include <thread>

namespace {

constexpr char Function[] = "DOV0_ConvertTimeToCorvelTime";

std::string timestampOf(time_t when)
{
    GuardedBuffer buffer(DOV0_TIMESTAMP_SIZE);
    EXPECT_EQ(DOV0_ConvertTimeToCorvelTime(&when, buffer.text()), buffer.text());
    return std::string(buffer.text(), DOV0_TIMESTAMP_SIZE);
}

std::string terminated(const char *timestamp)
{
    return std::string(timestamp, DOV0_TIMESTAMP_SIZE);
}

// The sequence numbers of one second in the order in which they are given out, up to the last one.
std::vector<int> sequences()
{
    std::vector<int> all;
    for (int number = 0; number < 100; number += 10) {
        all.push_back(number);
    }
    for (int number = 100; number < 400; number += 5) {
        all.push_back(number);
    }
    for (int number = 400; number <= 799; number += 3) {
        all.push_back(number);
    }
    for (int number = 802; number <= 999; ++number) {
        all.push_back(number);
    }
    return all;
}

template <int Second> tm *leapSecond(const time_t *, tm *fields)
{
    *fields = {};
    fields->tm_year = 116;
    fields->tm_mon = 11;
    fields->tm_mday = 31;
    fields->tm_hour = 23;
    fields->tm_min = 59;
    fields->tm_sec = Second;
    return fields;
}

// The second of January in a year that not every time_t reaches.
template <int Year> tm *dateInYear(const time_t *, tm *fields)
{
    *fields = {};
    fields->tm_year = Year - 1900;
    fields->tm_mday = 2;
    fields->tm_hour = 3;
    fields->tm_min = 4;
    fields->tm_sec = 5;
    return fields;
}

} // namespace

TEST(ConvertTimeToCorvelTime, WritesSixteenCharactersAndATerminator)
{
    setTimeZone("UTC0");
    EXPECT_EQ(timestampOf(utc(2000, 1, 1)), terminated("1000101000000000"));
    EXPECT_EQ(timestampOf(utc(1999, 12, 31, 23, 59, 59)), terminated("0991231235959000"));
    EXPECT_EQ(timestampOf(utc(2026, 11, 16, 5, 58, 43)), terminated("1261116055843000"));
    EXPECT_EQ(timestampOf(utc(1901, 12, 14)), terminated("0011214000000000"));
    if (TimeIsWide) {
        EXPECT_EQ(timestampOf(utc(1900, 1, 1)), terminated("0000101000000000"));
        EXPECT_EQ(timestampOf(utc(2899, 12, 31, 23, 59, 59)), terminated("9991231235959000"));
    }
}

TEST(ConvertTimeToCorvelTime, AgreesWithTheCalendar)
{
    setTimeZone("UTC0");
    std::mt19937_64 random(20261121);
    using Limits = std::numeric_limits<time_t>;
    std::uniform_int_distribution<time_t> anyTime(TimeIsWide ? utc(1900, 1, 1) : Limits::min(),
                                                  TimeIsWide ? utc(2900, 1, 1) - 1 : Limits::max());
    std::string last;
    for (int i = 0; i < 20000; ++i) {
        const time_t when = anyTime(random);
        const std::chrono::sys_seconds point{std::chrono::seconds(when)};
        const auto midnight = std::chrono::floor<std::chrono::days>(point);
        const std::chrono::year_month_day date(midnight);
        const std::chrono::hh_mm_ss clock(point - midnight);
        char expected[64];
        std::snprintf(expected, sizeof expected, "%03d%02u%02u%02d%02d%02d000",
                      static_cast<int>(date.year()) - 1900, static_cast<unsigned>(date.month()),
                      static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                      static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()));
        ASSERT_EQ(timestampOf(when), terminated(expected)) << when;
    }
}

TEST(ConvertTimeToCorvelTime, UsesTheTimeZoneThatTzNamesAtTheCall)
{
    const time_t summer = utc(2024, 7, 1, 12, 30, 15);
    const time_t winter = utc(2024, 12, 31, 23, 30, 15);
    setTimeZone("UTC0");
    EXPECT_EQ(timestampOf(summer), terminated("1240701123015000"));
    setTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(timestampOf(winter), terminated("1250101003015000"));
    EXPECT_EQ(timestampOf(summer), terminated("1240701143015000"));
    setTimeZone("EST5EDT,M3.2.0,M11.1.0");
    EXPECT_EQ(timestampOf(winter), terminated("1241231183015000"));
    EXPECT_EQ(timestampOf(summer), terminated("1240701083015000"));
    setTimeZone("IST-5:30");
    EXPECT_EQ(timestampOf(winter), terminated("1250101050015000"));
}

TEST(ConvertTimeToCorvelTime, IsNotMisledByATimeZoneThatTheProcessUsedMeanwhile)
{
    const auto useElsewhere = [](const char *back) {
        setTimeZone("XST-9");
        tzset();
        back != nullptr ? setTimeZone(back) : static_cast<void>(unsetenv("TZ"));
    };
    const time_t when = utc(2024, 7, 1, 12, 30, 15);
    for (const char *const own : {"UTC0", static_cast<const char *>(nullptr)}) {
        useElsewhere(own);
        const time_t other = when + 1;
        const tm expected = *std::localtime(&other);
        useElsewhere(own);
        const std::string first = timestampOf(when);
        useElsewhere(own);
        const std::string second = timestampOf(other);
        char hour[3];
        std::snprintf(hour, sizeof hour, "%02d", expected.tm_hour);
        EXPECT_EQ(first.substr(7, 2), hour);
        EXPECT_EQ(second.substr(7, 2), hour);
    }
}

TEST(ConvertTimeToCorvelTime, AsksForTheLocalTimeEachTime)
{
    static int asked;
    setLocalTime([](const time_t *, tm *fields) {
        *fields = {};
        fields->tm_sec = asked++;
        return fields;
    });
    for (const char *const zone : {"UTC0", static_cast<const char *>(nullptr)}) {
        zone != nullptr ? setTimeZone(zone) : static_cast<void>(unsetenv("TZ"));
        asked = 0;
        for (int i = 0; i < 10; ++i) {
            EXPECT_EQ(timestampOf(1001).substr(11, 2), "0" + std::to_string(i));
        }
    }
}

TEST(ConvertTimeToCorvelTime, NumbersTheTimestampsOfOneSecond)
{
    setTimeZone("UTC0");
    const time_t when = utc(2024, 1, 15, 10, 20, 30);
    std::vector<int> expected = sequences();
    EXPECT_EQ(expected[1], 10);
    EXPECT_EQ(expected[10], 100);
    EXPECT_EQ(expected[11], 105);
    expected.insert(expected.end(), 500, 999);
    for (const int number : expected) {
        char text[32];
        std::snprintf(text, sizeof text, "1240115102030%03d", number);
        ASSERT_EQ(timestampOf(when), terminated(text));
    }
}

TEST(ConvertTimeToCorvelTime, BeginsAgainWithEveryOtherSecond)
{
    setTimeZone("UTC0");
    const time_t when = utc(2024, 1, 15, 10, 20, 30);
    EXPECT_EQ(timestampOf(when), terminated("1240115102030000"));
    EXPECT_EQ(timestampOf(when), terminated("1240115102030010"));
    EXPECT_EQ(timestampOf(when + 1), terminated("1240115102031000"));
    EXPECT_EQ(timestampOf(when + 1), terminated("1240115102031010"));
    EXPECT_EQ(timestampOf(when), terminated("1240115102030000")); // an earlier second, and not its 020
    EXPECT_EQ(timestampOf(when), terminated("1240115102030010"));
}

TEST(ConvertTimeToCorvelTime, TakesTheEpochForTheSecondBeforeTheFirstTimestamp)
{
    setTimeZone("UTC0");
    EXPECT_EQ(timestampOf(0), terminated("0700101000000010"));
    EXPECT_EQ(timestampOf(0), terminated("0700101000000020"));
}

TEST(ConvertTimeToCorvelTime, ShowsALeapSecondAsSecondZero)
{
    setLocalTime(leapSecond<60>);
    EXPECT_EQ(timestampOf(1), terminated("1161231235900000"));
    setLocalTime(leapSecond<61>);
    EXPECT_EQ(timestampOf(2), terminated("1161231235900000"));
    setLocalTime(leapSecond<59>);
    EXPECT_EQ(timestampOf(3), terminated("1161231235959000"));
}

TEST(ConvertTimeToCorvelTime, KeepsToItsSeventeenBytesInAnyYear)
{
    setTimeZone("UTC0");
    setLocalTime(dateInYear<2900>);
    EXPECT_EQ(timestampOf(1), terminated("10000102030"
                                         "05000"));
    setLocalTime(dateInYear<1899>);
    EXPECT_EQ(timestampOf(2), terminated("-0010102030"
                                         "05000"));
    setLocalTime(nullptr);
    if (TimeIsWide) {
        EXPECT_EQ(timestampOf(utc(2900, 1, 2, 3, 4, 5)), terminated("10000102030"
                                                                    "05000"));
        EXPECT_EQ(timestampOf(utc(1899, 12, 31, 23, 59, 58)), terminated("-0011231235"
                                                                         "58000"));
        EXPECT_EQ(timestampOf(utc(32767, 12, 31, 23, 59, 57)), terminated("30867123123"
                                                                          "57000"));
        // The last second of the last year that fits into an int of years since 1900.
        EXPECT_EQ(timestampOf(static_cast<time_t>(67768036191676799)), terminated("21474836471"
                                                                                  "59000"));
    }
}

TEST(ConvertTimeToCorvelTime, GivesOutABlockForANullBuffer)
{
    setTimeZone("UTC0");
    const time_t when = utc(2024, 1, 15, 10, 20, 30);
    char *timestamp = nullptr;
    const TraceLog log = traceAt(Trace::Flow | Trace::Detail | Trace::Storage | Trace::Error,
                                 [&] { timestamp = DOV0_ConvertTimeToCorvelTime(&when, nullptr); });
    EXPECT_STREQ(timestamp, "1240115102030000");
    EXPECT_EQ(log,
              (TraceLog{entry(Function), entry("DOV0_GetStorage"),
                        message("DOV0_GetStorage", "Allocated storage at address @%p size 20\n", timestamp),
                        leave("DOV0_GetStorage", timestamp), message(Function, "NOW->1240115102030000"),
                        leave(Function, timestamp)}));
    char *second = DOV0_ConvertTimeToCorvelTime(&when, nullptr);
    EXPECT_NE(second, timestamp);
    DOV0_FreeStorage(&timestamp);
    DOV0_FreeStorage(&second);
}

TEST(ConvertTimeToCorvelTime, TracesTheTimestampUnderTheDetailBit)
{
    setTimeZone("UTC0");
    const time_t when = utc(2024, 1, 15, 10, 20, 30);
    const time_t other = when + 1;
    GuardedBuffer buffer(DOV0_TIMESTAMP_SIZE);
    GuardedBuffer spare(DOV0_TIMESTAMP_SIZE);
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_ConvertTimeToCorvelTime(&when, buffer.text()); }),
              (TraceLog{entry(Function), message(Function, "NOW->1240115102030000"),
                        leave(Function, buffer.text())}));
    EXPECT_EQ(bitsThatShow(message(Function, "NOW->1240115102030000"),
                           [&] {
                               DOV0_ConvertTimeToCorvelTime(&other, spare.text());
                               DOV0_ConvertTimeToCorvelTime(&when, buffer.text());
                           }),
              Trace::Detail);
    EXPECT_EQ(
        traceAt(Trace::All & ~Trace::Detail, [&] { DOV0_ConvertTimeToCorvelTime(&when, buffer.text()); }),
        (TraceLog{entry(Function), leave(Function, buffer.text())}));
}

TEST(ConvertTimeToCorvelTime, RefusesANullTime)
{
    GuardedBuffer buffer(DOV0_TIMESTAMP_SIZE, 0x5A);
    const std::string text = message(Function, "*****Time to convert is NULL\n");
    EXPECT_EQ(traceAt(Trace::All,
                      [&] { EXPECT_EQ(DOV0_ConvertTimeToCorvelTime(nullptr, buffer.text()), nullptr); }),
              (TraceLog{entry(Function), text, leave(Function, nullptr)}));
    EXPECT_EQ(std::string(buffer.text(), buffer.size()), std::string(DOV0_TIMESTAMP_SIZE, 0x5A));
    EXPECT_EQ(bitsThatShow(text, [] { DOV0_ConvertTimeToCorvelTime(nullptr, nullptr); }), Trace::Error);
}

TEST(ConvertTimeToCorvelTime, RefusesATimeThatHasNoLocalTime)
{
    setLocalTime([](const time_t *, tm *) -> tm * { return nullptr; });
    const time_t when = 5;
    GuardedBuffer buffer(DOV0_TIMESTAMP_SIZE, 0x5A);
    const std::string text = message(Function, "*****Time 5 has no local time\n");
    EXPECT_EQ(
        traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_ConvertTimeToCorvelTime(&when, buffer.text()), nullptr); }),
        (TraceLog{entry(Function), text, leave(Function, nullptr)}));
    EXPECT_EQ(std::string(buffer.text(), buffer.size()), std::string(DOV0_TIMESTAMP_SIZE, 0x5A));
    EXPECT_EQ(bitsThatShow(text, [&] { DOV0_ConvertTimeToCorvelTime(&when, nullptr); }), Trace::Error);
    setLocalTime(nullptr);
    if (TimeIsWide) {
        for (const time_t extreme :
             {std::numeric_limits<time_t>::min(), std::numeric_limits<time_t>::max()}) {
            EXPECT_EQ(DOV0_ConvertTimeToCorvelTime(&extreme, buffer.text()), nullptr);
        }
    }
}

TEST(ConvertTimeToCorvelTime, ReturnsNullAndUsesNoSequenceWithoutStorage)
{
    setTimeZone("UTC0");
    const time_t when = utc(2024, 1, 15, 10, 20, 30);
    char *timestamp = &*std::string("x").begin();
    const TraceLog log = traceAt(Trace::Flow | Trace::Error | Trace::Detail, [&] {
        withoutHeap([&] { timestamp = DOV0_ConvertTimeToCorvelTime(&when, nullptr); });
    });
    EXPECT_EQ(timestamp, nullptr);
    EXPECT_EQ(log, (TraceLog{entry(Function), entry("DOV0_GetStorage"),
                             message("DOV0_GetStorage", "*****Unable to obtain storage, size 20\n"),
                             leave("DOV0_GetStorage", nullptr), leave(Function, nullptr)}));
    EXPECT_EQ(timestampOf(when), terminated("1240115102030000"));
}

TEST(ConvertTimeToCorvelTime, GivesThreadsDistinctSequencesWithinASecond)
{
    setTimeZone("UTC0");
    const time_t when = utc(2024, 1, 15, 10, 20, 30);
    timestampOf(when); // the 000, so that the second changes on no thread
    std::vector<std::vector<std::string>> made(4);
    std::vector<std::thread> threads;
    for (std::vector<std::string> &own : made) {
        threads.emplace_back([&own, when] {
            for (int i = 0; i < 50; ++i) {
                char buffer[DOV0_TIMESTAMP_SIZE];
                own.emplace_back(DOV0_ConvertTimeToCorvelTime(&when, buffer));
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    std::vector<std::string> all;
    for (const std::vector<std::string> &own : made) {
        EXPECT_TRUE(std::is_sorted(own.begin(), own.end()));
        all.insert(all.end(), own.begin(), own.end());
    }
    std::sort(all.begin(), all.end());
    std::vector<std::string> expected;
    for (const int number : sequences()) {
        char text[32];
        std::snprintf(text, sizeof text, "1240115102030%03d", number);
        expected.emplace_back(text);
    }
    EXPECT_EQ(all, std::vector<std::string>(expected.begin() + 1, expected.begin() + 201));
}
