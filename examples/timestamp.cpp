// Prints dates and times in loose forms as timestamps, with their rendering and weekday.
//
//     timestamp "JAN 15 2003" 15/01/2003       one text in each argument
//     timestamp < file                         one text in each line
#include "dov0610.h"

#include <cstdio>
#include <iostream>
#include <string>

namespace {

// Returns whether there was storage for the timestamp.
bool printTimestamp(const char *text)
{
    char *timestamp = DOV0_StringToCorvelTime(text);
    if (timestamp == nullptr) {
        return false;
    }
    char rendering[DOV0_TIMESTAMP_TEXT_SIZE];
    DOV0_CorvelTimeToString(timestamp, rendering);
    char weekday[DOV0_WEEKDAY_MAX_LENGTH + 1];
    weekday[DOV0_CorvelTimeToWeekDay(timestamp, weekday)] = '\0'; // the name comes without a terminator
    std::printf("%s | %s | %s | %s\n", text, timestamp, rendering,
                weekday[0] != '\0' ? weekday : "no weekday");
    DOV0_FreeStorage(&timestamp);
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    bool printed = true;
    for (int i = 1; i < argc; ++i) {
        printed = printTimestamp(argv[i]) && printed;
    }
    if (argc == 1) {
        for (std::string line; std::getline(std::cin, line);) {
            printed = printTimestamp(line.c_str()) && printed;
        }
    }
    return printed ? 0 : 1;
}
