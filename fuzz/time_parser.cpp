// Loose dates and times as timestamps against the second reading of the rules that the tests have, trace included; and
// any text at all as a timestamp to render and to find the weekday of.
// Functions: DOV0_StringToCorvelTime DOV0_CorvelTimeToString DOV0_CorvelTimeToWeekDay
#include "fuzz_target.h"

#include "time/free_form_model.h"

#include <chrono>
#include <cstdlib>
#include <ctime>

namespace {

constexpr char Function[] = "DOV0_StringToCorvelTime";

int yearsSince1900()
{
    const time_t now = time(nullptr);
    tm fields = {};
    gmtime_r(&now, &fields);
    return fields.tm_year;
}

void parse(const std::string &text, uint32_t level)
{
    const ExactBuffer input = ExactBuffer::ofText(text);
    int yearBefore = 0;
    std::string timestamp;
    TraceLog log;
    do { // once more when a year ends meanwhile
        yearBefore = yearsSince1900();
        takeTrace();
        const Owned<char> parsed(DOV0_StringToCorvelTime(input.text()));
        log = from(Function, takeTrace());
        MUST_EQUAL(input.contents(), text + '\0');
        MUST_EQUAL(parsed.get() == nullptr, takeStorageFailure());
        if (parsed.get() == nullptr) {
            return;
        }
        timestamp = parsed.get();
        if (level != 0) {
            MUST_EQUAL(log.back(), leave(Function, parsed.get()));
            log.pop_back();
        }
    } while (yearsSince1900() != yearBefore);

    FreeFormModel model(text, yearBefore);
    MUST_EQUAL(timestamp, model.result);
    if (level != 0) {
        model.messages.insert(model.messages.begin(), entry(Function));
        MUST_EQUAL(log, model.messages);
    }
}

std::string field(const std::string &timestamp, size_t position, size_t length)
{
    return position < timestamp.size() ? timestamp.substr(position, length) : std::string();
}

std::string renderedByModel(const std::string &timestamp)
{
    std::string stamp = timestamp.substr(0, 16);
    stamp.resize(16, '\0');
    const std::string year = std::to_string(std::atoi(stamp.substr(0, 3).c_str()) + 1900);
    return year + "/" + stamp.substr(3, 2) + "/" + stamp.substr(5, 2) + " " + stamp.substr(7, 2) + ":" +
           stamp.substr(9, 2) + ":" + stamp.substr(11, 2) + " " + stamp.substr(13, 3);
}

std::string weekDayByModel(const std::string &timestamp)
{
    static const std::string names[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                        "Thursday", "Friday", "Saturday"};
    const int year = std::atoi(field(timestamp, 0, 3).c_str()) + 1900;
    const int month = std::atoi(field(timestamp, 3, 2).c_str());
    const int day = std::atoi(field(timestamp, 5, 2).c_str());
    if (year < 1991 || year > 2003 || month < 1 || month > 12 || day < 1 || day > 31) {
        return "";
    }
    using namespace std::chrono;
    const weekday first(sys_days(std::chrono::year(year) / month / 1));
    return names[(first + days(day - 1)).c_encoding()];
}

void show(const std::string &timestamp)
{
    const ExactBuffer stamp = ExactBuffer::ofText(timestamp);
    const ExactBuffer text(DOV0_TIMESTAMP_TEXT_SIZE);
    MUST_EQUAL(DOV0_CorvelTimeToString(stamp.text(), text.text()), 23);
    MUST_EQUAL(text.contents(), renderedByModel(timestamp) + '\0');

    const std::string expected = weekDayByModel(timestamp);
    const ExactBuffer name(expected.size()); // it is not terminated
    MUST_EQUAL(DOV0_CorvelTimeToWeekDay(stamp.text(), name.text()), static_cast<int32_t>(expected.size()));
    MUST_EQUAL(name.contents(), expected);
}

void refuseNull()
{
    const ExactBuffer area(DOV0_TIMESTAMP_TEXT_SIZE);
    MUST(DOV0_StringToCorvelTime(nullptr) == nullptr);
    for (const auto function : {DOV0_CorvelTimeToString, DOV0_CorvelTimeToWeekDay}) {
        MUST_EQUAL(function(nullptr, area.text()), 0);
        MUST_EQUAL(function("1030615000000000", nullptr), 0);
    }
    MUST_EQUAL(area.contents(), std::string(area.size(), '\xA5'));
}

} // namespace

void fuzzOneInput(FuzzInput &input)
{
    if (input.remaining() == 0) {
        refuseNull();
    }
    static const int timeZoneIsSet = setenv("TZ", "UTC0", 1);
    MUST_EQUAL(timeZoneIsSet, 0);
    const std::string text = input.rest().c_str();
    parse(text, input.level);
    show(text);
}
