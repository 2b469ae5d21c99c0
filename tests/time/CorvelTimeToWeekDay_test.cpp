#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <chrono>

namespace {

constexpr char Function[] = "DOV0_CorvelTimeToWeekDay";
const std::string Names[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};

// The name that is written for a timestamp, by what changes in an area that is filled in two ways.
std::string weekDayOf(const std::string &timestamp)
{
    GuardedBuffer input(timestamp);
    std::string found[2];
    for (const unsigned fill : {0x00U, 0xFFU}) {
        GuardedBuffer out(DOV0_WEEKDAY_MAX_LENGTH, static_cast<unsigned char>(fill));
        const int32_t size = DOV0_CorvelTimeToWeekDay(input.text(), out.text());
        EXPECT_TRUE(size >= 0 && size <= DOV0_WEEKDAY_MAX_LENGTH) << size;
        const auto written = static_cast<size_t>(size);
        EXPECT_EQ(std::string(out.text() + written, out.size() - written),
                  std::string(out.size() - written, static_cast<char>(fill)));
        found[fill & 1U] = std::string(out.text(), written);
    }
    EXPECT_EQ(found[0], found[1]);
    return found[0];
}

std::string dateOf(int year, unsigned month, unsigned day)
{
    char text[64];
    std::snprintf(text, sizeof text, "%03d%02u%02u120000000", year - 1900, month, day);
    return text;
}

std::string inputRecord(const std::string &timestamp)
{
    return message(Function, "Input timestamp [%s]\n", timestamp.c_str());
}

TraceLog traceOfDate(const std::string &timestamp)
{
    char out[DOV0_WEEKDAY_MAX_LENGTH];
    return traceAt(Trace::All, [&] { DOV0_CorvelTimeToWeekDay(timestamp.c_str(), out); });
}

} // namespace

TEST(CorvelTimeToWeekDay, NamesEveryDayFrom1991To2003)
{
    using namespace std::chrono;
    for (sys_days date = 1991y / January / 1; date < sys_days(2004y / January / 1); date += days(1)) {
        const year_month_day fields(date);
        ASSERT_EQ(weekDayOf(dateOf(static_cast<int>(fields.year()), static_cast<unsigned>(fields.month()),
                                   static_cast<unsigned>(fields.day()))),
                  Names[weekday(date).c_encoding()])
            << date.time_since_epoch().count();
    }
}

TEST(CorvelTimeToWeekDay, WritesTheNameWithoutATerminator)
{
    GuardedBuffer out(6, '#');
    EXPECT_EQ(DOV0_CorvelTimeToWeekDay("1030615000000000", out.text()), 6);
    EXPECT_EQ(std::string(out.text(), 6), "Sunday");
}

TEST(CorvelTimeToWeekDay, CountsOnPastTheEndOfAMonth)
{
    using namespace std::chrono;
    for (int year = 1991; year <= 2003; ++year) {
        for (unsigned month = 1; month <= 12; ++month) {
            for (unsigned day = 1; day <= 31; ++day) {
                const sys_days date =
                    sys_days(std::chrono::year(year) / std::chrono::month(month) / 1) + days(day - 1);
                ASSERT_EQ(weekDayOf(dateOf(year, month, day)), Names[weekday(date).c_encoding()])
                    << year << "/" << month << "/" << day;
            }
        }
    }
}

TEST(CorvelTimeToWeekDay, KnowsNoOtherDate)
{
    for (int year = 1900; year <= 2899; ++year) {
        if (year < 1991 || year > 2003) {
            ASSERT_EQ(weekDayOf(dateOf(year, 6, 15)), "") << year;
        }
    }
    for (const unsigned month : {0U, 13U, 14U, 99U}) {
        EXPECT_EQ(weekDayOf(dateOf(1999, month, 15)), "") << month;
    }
    for (const unsigned day : {0U, 32U, 33U, 99U}) {
        EXPECT_EQ(weekDayOf(dateOf(1999, 5, day)), "") << day;
    }
}

TEST(CorvelTimeToWeekDay, ReadsTextsOfAnyLengthAndContent)
{
    const std::string whole = "1030615120000000";
    for (size_t length = 0; length < 5; ++length) {
        EXPECT_EQ(weekDayOf(whole.substr(0, length)), "") << length;
    }
    EXPECT_EQ(weekDayOf("103061"), "Sunday"); // the 1st
    EXPECT_EQ(weekDayOf("1030615"), "Sunday");
    EXPECT_EQ(weekDayOf("10306"), "");
    EXPECT_EQ(weekDayOf(whole + std::string(100000, '9')), "Sunday");
    EXPECT_EQ(weekDayOf("abcdefghijklmnop"), "");
    EXPECT_EQ(weekDayOf("103-615120000000"), "");
    EXPECT_EQ(weekDayOf(" 99 1 1000000000"), "Friday"); // read as numbers: 1 January 1999
    for (int character = 1; character < 256; ++character) {
        weekDayOf(std::string(16, static_cast<char>(character)));
    }
}

TEST(CorvelTimeToWeekDay, TracesItsStepsUnderTheDetailBit)
{
    const std::string timestamp = "1030615120000000";
    EXPECT_EQ(
        traceOfDate(timestamp),
        (TraceLog{entry(Function), inputRecord(timestamp), message(Function, "Year 12, Month 5, Day 14\n"),
                  message(Function, "Output week day [Sunday] size 6 index 0\n"), leave(Function, 6)}));
    char out[DOV0_WEEKDAY_MAX_LENGTH];
    const auto call = [&] { DOV0_CorvelTimeToWeekDay(timestamp.c_str(), out); };
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Detail, call), (TraceLog{entry(Function), leave(Function, 6)}));
    EXPECT_EQ(bitsThatShow(inputRecord(timestamp), call), Trace::Detail);
    EXPECT_EQ(bitsThatShow(message(Function, "Year 12, Month 5, Day 14\n"), call), Trace::Detail);
    EXPECT_EQ(bitsThatShow(message(Function, "Output week day [Sunday] size 6 index 0\n"), call),
              Trace::Detail);
}

TEST(CorvelTimeToWeekDay, TracesEachNameWithItsSize)
{
    const int sizes[] = {6, 6, 7, 9, 8, 6, 8};
    for (unsigned day = 6; day <= 12; ++day) { // 6 January 1991 was a Sunday
        const size_t index = day - 6;
        const std::string timestamp = dateOf(1991, 1, day);
        EXPECT_EQ(traceOfDate(timestamp),
                  (TraceLog{entry(Function), inputRecord(timestamp),
                            message(Function, "Year 0, Month 0, Day %d\n", static_cast<int>(day) - 1),
                            message(Function, "Output week day [%s] size %d index %d\n", Names[index].c_str(),
                                    sizes[index], static_cast<int>(index)),
                            leave(Function, sizes[index])}));
    }
}

TEST(CorvelTimeToWeekDay, TracesBlanksForAnUnknownDay)
{
    for (const std::string timestamp : {"1040615120000000", "0901231000000000", "0990015000000000", ""}) {
        EXPECT_EQ(traceOfDate(timestamp),
                  (TraceLog{entry(Function), inputRecord(timestamp),
                            message(Function, "Output week day [        ] size 0 index 7\n"),
                            leave(Function, intptr_t{0})}));
    }
}

TEST(CorvelTimeToWeekDay, RefusesNull)
{
    char out[DOV0_WEEKDAY_MAX_LENGTH] = "untouch";
    const std::string record = message(Function, "*****Timestamp or output area is NULL\n");
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_CorvelTimeToWeekDay(nullptr, out), 0); }),
              (TraceLog{entry(Function), record, leave(Function, intptr_t{0})}));
    EXPECT_STREQ(out, "untouch");
    EXPECT_EQ(
        traceAt(Trace::All, [] { EXPECT_EQ(DOV0_CorvelTimeToWeekDay("1030615120000000", nullptr), 0); }),
        (TraceLog{entry(Function), record, leave(Function, intptr_t{0})}));
    EXPECT_EQ(bitsThatShow(record, [] { DOV0_CorvelTimeToWeekDay(nullptr, nullptr); }), Trace::Error);
}
