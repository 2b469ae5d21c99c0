// A second reading of the rules for free-form dates, for the tests to compare with: on one text that it edits by
// position, with a log of the messages that the rules ask for.
#ifndef DOV0610_TESTS_FREE_FORM_MODEL_H
#define DOV0610_TESTS_FREE_FORM_MODEL_H

#include "support/trace_recorder.h"

#include <cctype>

class FreeFormModel {
public:
    FreeFormModel(const std::string &input, int yearsSince1900) : currentYear(yearsSince1900)
    {
        for (const char character : input) {
            text += static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
        }
        say("Input time string [" + input + "]\n");
        start = firstNot(" ", 0);
        const size_t dots = occurrences('.');
        const size_t colons = occurrences(':');
        size_t slashes = occurrences('/');
        if (slashes == 0) {
            slashes = occurrences('\\');
        }
        say("DotCount " + std::to_string(dots) + " ColCount " + std::to_string(colons) + " SlashCount " +
            std::to_string(slashes) + "\n");
        if (colons == 2) {
            clockOfTwoColons();
        } else if (colons > 2) {
            clockOfManyColons();
        }
        if (colons >= 2) {
            say("Hour=" + std::to_string(hour) + " Minute=" + std::to_string(minute) +
                " Second=" + std::to_string(second) + "\n");
        }
        if (slashes == 0) {
            words();
        }
        if (month == 0 && (slashes == 2 || dots == 2)) {
            numericDate();
        }
        if (year > 1900) {
            year -= 1900;
        }
        result = (digits(year, 3) + digits(month, 2) + digits(day, 2) + digits(hour, 2) + digits(minute, 2) +
                  digits(second, 2) + "000")
                     .substr(0, 19);
        say("Formatted TimeStamp [" + result + "]\n");
    }

    std::string result;
    TraceLog messages;

private:
    static constexpr const char *Months[] = {"JANUARY",   "FEBRUARY", "MARCH",    "APRIL",
                                             "MAY",       "JUNE",     "JULY",     "AUGUST",
                                             "SEPTEMBER", "OCTOBER",  "NOVEMBER", "DECEMBER"};
    static constexpr const char *Days[] = {"SUNDAY",   "MONDAY", "TUESDAY", "WEDNESDAY",
                                           "THURSDAY", "FRIDAY", "SATURDAY"};

    void say(const std::string &line) { messages.push_back("DOV0_StringToCorvelTime: " + line); }

    // A number of at least this many digits, its sign apart.
    static std::string digits(long long number, size_t count)
    {
        std::string shown = std::to_string(number < 0 ? -number : number);
        while (shown.size() < count) {
            shown = "0" + shown;
        }
        return (number < 0 ? "-" : "") + shown;
    }

    // The first position from here on whose character is none of these; the length of the text when there is none.
    size_t firstNot(const char *characters, size_t from) const
    {
        return std::min(text.find_first_not_of(characters, from), text.size());
    }

    size_t occurrences(char character) const
    {
        size_t found = 0;
        for (size_t i = start; i < text.size(); ++i) {
            found += text[i] == character ? 1U : 0U;
        }
        return found;
    }

    static bool isDecimal(char character) { return character >= '0' && character <= '9'; }

    // White space, a sign and digits, as the C library reads a number; held at the ends of 32 bits.
    static int number(const std::string &from)
    {
        size_t i = from.find_first_not_of(" \t\n\v\f\r");
        if (i == std::string::npos) {
            return 0;
        }
        const bool negative = from[i] == '-';
        if (from[i] == '-' || from[i] == '+') {
            ++i;
        }
        long long value = 0;
        for (; i < from.size() && isDecimal(from[i]); ++i) {
            value = std::min(value * 10 + (from[i] - '0'), 1LL << 40);
        }
        return static_cast<int>(negative ? std::max(-value, -2147483648LL) : std::min(value, 2147483647LL));
    }

    int numberFrom(size_t position) const
    {
        return position < text.size() ? number(text.substr(position)) : 0;
    }

    void blankRange(size_t from, size_t to)
    {
        for (size_t i = from; i < to && i < text.size(); ++i) {
            text[i] = ' ';
        }
    }

    void blankDigitsAt(size_t position) { blankRange(position, firstNot("0123456789", position)); }

    void clockOfTwoColons()
    {
        const size_t p = text.find(':');
        const size_t from = p >= 2 ? p - 2 : 0;
        hour = numberFrom(from);
        minute = numberFrom(p + 1);
        second = numberFrom(p + 4);
        blankRange(from, p + 6);
    }

    void clockOfManyColons()
    {
        size_t p = text.rfind(':');
        text[p] = ' ';
        second = numberFrom(p + 1);
        blankDigitsAt(p + 1);
        p = text.rfind(':');
        text[p] = ' ';
        minute = numberFrom(p + 1);
        blankDigitsAt(p + 1);
        size_t first = p;
        while (first > 0 && isDecimal(text[first - 1])) {
            --first;
        }
        hour = number(text.substr(first, p - first));
        blankRange(first, p);
    }

    void words()
    {
        for (size_t at = start;;) {
            at = firstNot("0123456789/.: ", at);
            if (at >= text.size()) {
                break;
            }
            const size_t end = std::min(text.find(' ', at), text.size());
            at = word(at, end);
        }
        start = firstNot(" ", start);
        if (start < text.size()) {
            const int leading = numberFrom(start);
            if (leading > 90) {
                year = leading;
                say("Found Year " + std::to_string(year) + " after Month and Day\n");
                blankDigitsAt(start);
            }
        } else if (month > 0 && day > 0) {
            say("Obtained current year " + std::to_string(currentYear) + "\n");
            year = currentYear + 1900;
        }
    }

    // One word of the text; tells where to go on.
    size_t word(size_t at, size_t end)
    {
        const std::string name = text.substr(at, end - at);
        for (const std::string weekday : Days) {
            if (weekday.find(name) != std::string::npos) {
                say("Found Weekday " + name + "\n");
                blankRange(at, end);
                return end;
            }
        }
        int entry = 0;
        for (const std::string candidate : Months) {
            ++entry;
            const bool contained = name.size() > 3 && candidate.find(name) != std::string::npos;
            const bool begun = name.size() >= 3 && candidate.substr(0, 3) == name.substr(0, 3);
            if (!contained && !begun) {
                continue;
            }
            say("Found Month name " + name + "\n");
            size_t next = 0;
            if (name.size() > 3 && isDecimal(name[3])) {
                say("Assuming MMMDD format [" + name + "]\n");
                blankRange(at, at + 3);
                next = at + 3;
            } else {
                blankRange(at, end + 1);
                next = end;
            }
            next = firstNot(" ", next);
            const size_t digitsEnd = firstNot("0123456789", next);
            if (digitsEnd - next == 1 || digitsEnd - next == 2) {
                day = number(text.substr(next, digitsEnd - next));
                blankRange(next, digitsEnd);
                say("Found Day " + std::to_string(day) + " after Month name\n");
            }
            month = entry;
            return next;
        }
        say("Remove unrecognized text [" + name + "]\n");
        blankRange(at, end);
        return end;
    }

    static int monthContaining(const std::string &piece)
    {
        for (int i = 0; i < 12; ++i) {
            if (std::string(Months[i]).find(piece) != std::string::npos) {
                return i + 1;
            }
        }
        return 0;
    }

    void numericDate()
    {
        const std::string rest = text.substr(start);
        size_t firstSeparator = std::string::npos;
        for (const char separator : {'/', '\\', '.'}) {
            firstSeparator = rest.find(separator);
            if (firstSeparator != std::string::npos) {
                break;
            }
        }
        if (firstSeparator == std::string::npos) {
            return;
        }
        say("Decoding 1 " + rest + "\n");
        const size_t secondSeparator = rest.find(rest[firstSeparator], firstSeparator + 1);
        if (secondSeparator == std::string::npos) {
            return;
        }
        const std::string fields[] = {rest.substr(0, firstSeparator),
                                      rest.substr(firstSeparator + 1, secondSeparator - firstSeparator - 1),
                                      rest.substr(secondSeparator + 1)};
        const int i = number(fields[0]);
        const int j = number(fields[1]);
        const int k = number(fields[2]);
        say("i=" + std::to_string(i) + " j=" + std::to_string(j) + " k=" + std::to_string(k) + "\n");
        if (i == 0) {
            month = monthContaining(fields[0]);
            day = j;
            year = k;
        } else if (j == 0) {
            month = monthContaining(fields[1]);
            if (i <= 90) {
                day = i;
                year = k;
            } else {
                year = i;
                day = k;
            }
        } else if (k == 0) {
            month = monthContaining(fields[2]);
            year = i;
            day = 0;
        }
        if (month == 0 && day == 0 && year == 0) {
            if (i > 90) {
                year = i;
                month = j;
                day = k;
            } else {
                year = k;
                if (i > 12) {
                    day = i;
                    month = j;
                } else {
                    month = i;
                    day = j;
                }
            }
        }
        say("Year=" + std::to_string(year) + " Month=" + std::to_string(month) +
            " Day=" + std::to_string(day) + "\n");
    }

    const int currentYear;
    std::string text;
    size_t start = 0;
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

#endif
