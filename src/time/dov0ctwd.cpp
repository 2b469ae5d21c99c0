// Names the day of the week of a timestamp's date, from a calendar of its own that needs no time zone.
#include "foundation/frame.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

constexpr int32_t UnknownWeekDay = 7;

constexpr const char *WeekDayName[] = {"Sunday",   "Monday", "Tuesday",  "Wednesday",
                                       "Thursday", "Friday", "Saturday", "        "};

// How much of each name is copied: nothing of the unknown day's blanks.
constexpr int32_t WeekDayNameSize[] = {6, 6, 7, 9, 8, 6, 8, 0};

constexpr int32_t FirstYear = 1991;
constexpr int32_t LastYear = 2009;
using YearRow = std::array<int32_t, 12>;

constexpr bool isLeapYear(int32_t year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

// The day of the week, 0 for Sunday, of the first day of each month.
consteval std::array<YearRow, LastYear - FirstYear + 1> buildWeekDayYearArray()
{
    constexpr int32_t DaysInMonth[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    std::array<YearRow, LastYear - FirstYear + 1> rows{};
    int32_t weekDay = 2; // 1 January 1991 was a Tuesday
    for (int32_t year = FirstYear; year <= LastYear; ++year) {
        for (size_t month = 0; month < 12; ++month) {
            rows[static_cast<size_t>(year - FirstYear)][month] = weekDay;
            weekDay = (weekDay + DaysInMonth[month] + (month == 1 && isLeapYear(year) ? 1 : 0)) % 7;
        }
    }
    return rows;
}

constexpr auto WeekDayYearArray = buildWeekDayYearArray();
static_assert(WeekDayYearArray[0] == YearRow{2, 5, 5, 1, 3, 6, 1, 4, 0, 2, 5, 0});

// The table reaches 2009, but dates are accepted to 2003 only, and that limit is kept.
constexpr int32_t LastYearIndex = 12;

int32_t numberOf(std::string_view digits) noexcept
{
    char text[4] = {};
    digits.copy(text, sizeof text - 1);
    return std::atoi(text);
}

} // namespace

TRACE_CONTROL("dov0ctwd", DOV0_CorvelTimeToWeekDay);
extern "C" int32_t DOV0_CorvelTimeToWeekDay(const char *timestamp, char *out) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (timestamp == nullptr || out == nullptr) {
        TRACE(frame, Trace::Error, "*****Timestamp or output area is NULL\n");
        return frame.leave<int32_t>(0);
    }
    TRACE(frame, Trace::Detail, "Input timestamp [%s]\n", timestamp);
    char stamp[DOV0_TIMESTAMP_SIZE] = {};
    std::memcpy(stamp, timestamp, strnlen(timestamp, DOV0_TIMESTAMP_LENGTH));
    const std::string_view fields(stamp, sizeof stamp);
    const int32_t month = numberOf(fields.substr(3, 2)) - 1;
    const int32_t day = numberOf(fields.substr(5, 2)) - 1;
    const int32_t year = numberOf(fields.substr(0, 3)) + 1900 - FirstYear;

    int32_t weekDay = UnknownWeekDay;
    // The day is not checked against its month: 31 February follows 28 February by three days.
    if (year >= 0 && year <= LastYearIndex && month >= 0 && month <= 11 && day >= 0 && day <= 30) {
        TRACE(frame, Trace::Detail, "Year %d, Month %d, Day %d\n", year, month, day);
        weekDay = WeekDayYearArray[static_cast<size_t>(year)][static_cast<size_t>(month)] + day % 7;
        if (weekDay > 6) {
            weekDay -= 7;
        }
    }
    const int32_t size = WeekDayNameSize[weekDay];
    std::memcpy(out, WeekDayName[weekDay], static_cast<size_t>(size)); // without a terminator
    TRACE(frame, Trace::Detail, "Output week day [%s] size %d index %d\n", WeekDayName[weekDay], size,
          weekDay);
    return frame.leave<int32_t>(size);
}
