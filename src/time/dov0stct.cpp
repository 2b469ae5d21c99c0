// Makes a timestamp of a date and time that a human wrote in one of many loose forms. It works on a copy of
// the text and blanks each piece that it recognises, so that later steps see only what is left. The order of
// the steps, the thresholds and the tie-breaks are the behaviour, weaknesses included: nothing is checked for
// its range.
#include "foundation/frame.h"
#include "time/local_time.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace {

constexpr const char *MonthName[] = {"JANUARY", "FEBRUARY", "MARCH",     "APRIL",   "MAY",      "JUNE",
                                     "JULY",    "AUGUST",   "SEPTEMBER", "OCTOBER", "NOVEMBER", "DECEMBER"};
constexpr const char *WeekDays[] = {"SUNDAY",   "MONDAY", "TUESDAY", "WEDNESDAY",
                                    "THURSDAY", "FRIDAY", "SATURDAY"};

// A number above this one is a year wherever a day could stand as well.
constexpr int32_t LargestNonYear = 90;

struct DateAndTime {
    int32_t year, month, day, hour, minute, second;
};

bool isDigit(char character) noexcept
{
    return character >= '0' && character <= '9';
}

// atoi, but a number that is too large becomes the largest one.
int32_t numberAt(const char *text) noexcept
{
    return static_cast<int32_t>(std::clamp<long>(std::strtol(text, nullptr, 10), INT32_MIN, INT32_MAX));
}

int32_t countOf(char character, const char *text) noexcept
{
    return static_cast<int32_t>(std::count(text, text + std::strlen(text), character));
}

char *skipSpaces(char *position) noexcept
{
    while (*position == ' ') {
        ++position;
    }
    return position;
}

char *skipDigits(char *position) noexcept
{
    while (isDigit(*position)) {
        ++position;
    }
    return position;
}

void blank(char *first, char *end) noexcept
{
    std::fill(first, end, ' ');
}

// The clock time of a text with two colons, by position: HH:MM:SS with an hour of two characters, which
// nothing checks.
void takeClockTimeByPosition(char *copy, DateAndTime &found) noexcept
{
    const size_t length = std::strlen(copy);
    const auto colon = static_cast<size_t>(std::strchr(copy, ':') - copy);
    const size_t first = colon < 2 ? 0 : colon - 2;
    found.hour = numberAt(copy + first);
    found.minute = numberAt(copy + colon + 1);
    found.second = numberAt(copy + std::min(colon + 4, length));
    blank(copy + first, copy + std::min(colon + 6, length));
}

// The number after the last colon. Blanks the colon and the digits next to it, and tells where it stood.
char *takeLastColon(char *copy, int32_t &number) noexcept
{
    char *colon = std::strrchr(copy, ':');
    *colon = ' ';
    number = numberAt(colon + 1);
    blank(colon + 1, skipDigits(colon + 1));
    return colon;
}

// The clock time of a text with more than two colons, of which only the last two count.
void takeClockTimeBeforeLastColons(char *copy, DateAndTime &found) noexcept
{
    takeLastColon(copy, found.second);
    char *const colon = takeLastColon(copy, found.minute);
    char *hour = colon;
    while (hour > copy && isDigit(hour[-1])) {
        --hour;
    }
    if (hour < colon) {
        found.hour = numberAt(hour);
        blank(hour, colon);
    }
}

bool namesWeekday(const char *word) noexcept
{
    return std::any_of(std::begin(WeekDays), std::end(WeekDays),
                       [word](const char *name) { return std::strstr(name, word) != nullptr; });
}

// The month that a word of the text names, or 0. Unlike LookUpMonthByString it takes what begins like a
// month.
int32_t monthNamedBy(const char *word) noexcept
{
    const bool mayBePart = std::strlen(word) > 3;
    for (int32_t month = 1; month <= 12; ++month) {
        const char *name = MonthName[month - 1];
        if ((mayBePart && std::strstr(name, word) != nullptr) || std::strncmp(name, word, 3) == 0) {
            return month;
        }
    }
    return 0;
}

// The first month whose name contains this text anywhere, or 0. An empty text is in every name.
int32_t LookUpMonthByString(const char *word) noexcept
{
    for (int32_t month = 1; month <= 12; ++month) {
        if (std::strstr(MonthName[month - 1], word) != nullptr) {
            return month;
        }
    }
    return 0;
}

// The words of a text without slashes: takes weekday, month, and the day after a month, and blanks every
// word.
void takeWords(const Frame &frame, char *start, DateAndTime &found) noexcept
{
    char *const textEnd = start + std::strlen(start);
    char *word = start;
    for (;;) {
        while (isDigit(*word) || *word == '/' || *word == '.' || *word == ':' || *word == ' ') {
            ++word;
        }
        if (word == textEnd) {
            return;
        }
        char *const space = std::strchr(word, ' ');
        char *const wordEnd = space != nullptr ? space : textEnd;
        *wordEnd = '\0';
        if (namesWeekday(word)) {
            TRACE(frame, Trace::State, "Found Weekday %s\n", word);
            blank(word, wordEnd);
        } else if (const int32_t month = monthNamedBy(word); month != 0) {
            TRACE(frame, Trace::State, "Found Month name %s\n", word);
            if (isDigit(word[3])) {
                TRACE(frame, Trace::State, "Assuming MMMDD format [%s]\n", word);
                blank(word, word + 3);
            } else {
                // With the space after it, so that the day is seen; the end of the text stays where it is.
                blank(word, wordEnd == textEnd ? wordEnd : wordEnd + 1);
            }
            char *const day = skipSpaces(word);
            char *const dayEnd = skipDigits(day);
            if (dayEnd - day == 1 || dayEnd - day == 2) {
                found.day = numberAt(day);
                blank(day, dayEnd);
                TRACE(frame, Trace::State, "Found Day %d after Month name\n", found.day);
            }
            found.month = month;
        } else {
            TRACE(frame, Trace::State, "Remove unrecognized text [%s]\n", word);
            blank(word, wordEnd);
        }
        if (wordEnd != textEnd) {
            *wordEnd = ' ';
        }
    }
}

// The year after the words: what begins the rest when that is large enough, or the current one when there is
// no rest.
void takeYear(const Frame &frame, char *rest, DateAndTime &found) noexcept
{
    if (*rest != '\0') {
        const int32_t number = numberAt(rest);
        if (number > LargestNonYear) {
            found.year = number;
            TRACE(frame, Trace::State, "Found Year %d after Month and Day\n", found.year);
            blank(rest, skipDigits(rest));
        }
    } else if (found.month > 0 && found.day > 0) {
        tm local;
        if (breakIntoLocalTime(time(nullptr), local)) {
            TRACE(frame, Trace::State, "Obtained current year %d\n", local.tm_year);
            found.year = local.tm_year + 1900;
        }
    }
}

// A date of three fields with the same separator between them, one of which may be a month name.
void takeNumericDate(const Frame &frame, char *start, DateAndTime &found) noexcept
{
    char *firstEnd = std::strchr(start, '/');
    if (firstEnd == nullptr) {
        firstEnd = std::strchr(start, '\\');
    }
    if (firstEnd == nullptr) {
        firstEnd = std::strchr(start, '.');
    }
    if (firstEnd == nullptr) {
        return;
    }
    TRACE(frame, Trace::Detail, "Decoding 1 %s\n", start);
    char *const second = firstEnd + 1;
    char *const secondEnd = std::strchr(second, *firstEnd);
    if (secondEnd == nullptr) {
        return; // a lone slash in a text with two dots
    }
    char *const third = secondEnd + 1;
    *firstEnd = '\0';
    *secondEnd = '\0';
    const int32_t i = numberAt(start);
    const int32_t j = numberAt(second);
    const int32_t k = numberAt(third);
    TRACE(frame, Trace::Detail, "i=%d j=%d k=%d\n", i, j, k);

    if (i == 0) {
        found.month = LookUpMonthByString(start);
        found.day = j;
        found.year = k;
    } else if (j == 0) {
        found.month = LookUpMonthByString(second);
        found.day = i <= LargestNonYear ? i : k;
        found.year = i <= LargestNonYear ? k : i;
    } else if (k == 0) {
        found.month = LookUpMonthByString(third);
        found.year = i;
        found.day = k; // 0: the day of a year-day-month text is lost, and that is kept
    }
    // Nothing reads the copy from here on, so the date is not blanked in it.
    if (found.month == 0 && found.day == 0 && found.year == 0) {
        if (i > LargestNonYear) {
            found.year = i;
            found.month = j;
            found.day = k;
        } else {
            const bool dayFirst = i > 12;
            found.year = k;
            found.month = dayFirst ? j : i;
            found.day = dayFirst ? i : j;
        }
    }
    TRACE(frame, Trace::State, "Year=%d Month=%d Day=%d\n", found.year, found.month, found.day);
}

// Fields of more digits than usual make the text longer; it is cut off where the block ends.
void printTimestamp(const DateAndTime &found, char *timestamp) noexcept
{
    char text[128];
    std::snprintf(text, sizeof text, "%.3d%.2d%.2d%.2d%.2d%.2d000", found.year, found.month, found.day,
                  found.hour, found.minute, found.second);
    std::memcpy(timestamp, text, strnlen(text, DOV0_TIMESTAMP_BLOCK_SIZE - 1)); // the block is zero-filled
}

} // namespace

TRACE_CONTROL("dov0stct", DOV0_StringToCorvelTime);
extern "C" char *DOV0_StringToCorvelTime(const char *text) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (text == nullptr) {
        return frame.leave<char *>(nullptr);
    }
    auto *timestamp = static_cast<char *>(DOV0_GetStorage(DOV0_TIMESTAMP_BLOCK_SIZE));
    if (timestamp == nullptr) {
        return frame.leave(timestamp);
    }
    // Only the copy is written to. An empty text has none.
    char *copy = DOV0_ConvertStringToUpper(const_cast<char *>(text), 1);
    if (copy == nullptr && *text != '\0') {
        DOV0_FreeStorage(&timestamp);
        return frame.leave(timestamp);
    }
    TRACE(frame, Trace::Detail, "Input time string [%s]\n", text);
    char nothing[] = "";
    char *start = skipSpaces(copy != nullptr ? copy : nothing);

    const int32_t dots = countOf('.', start);
    const int32_t colons = countOf(':', start);
    int32_t slashes = countOf('/', start);
    if (slashes == 0) {
        slashes = countOf('\\', start);
    }
    TRACE(frame, Trace::State, "DotCount %d ColCount %d SlashCount %d\n", dots, colons, slashes);

    DateAndTime found = {};
    if (colons >= 2) {
        if (colons == 2) {
            takeClockTimeByPosition(copy, found);
        } else {
            takeClockTimeBeforeLastColons(copy, found);
        }
        TRACE(frame, Trace::State, "Hour=%d Minute=%d Second=%d\n", found.hour, found.minute, found.second);
    }
    if (slashes == 0) {
        takeWords(frame, start, found);
        start = skipSpaces(start);
        takeYear(frame, start, found);
    }
    if (found.month == 0 && (slashes == 2 || dots == 2)) {
        takeNumericDate(frame, start, found);
    }
    DOV0_FreeStorage(&copy);

    if (found.year > 1900) {
        found.year -= 1900;
    }
    printTimestamp(found, timestamp);
    TRACE(frame, Trace::State, "Formatted TimeStamp [%s]\n", timestamp);
    return frame.leave(timestamp);
}
