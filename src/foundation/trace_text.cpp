// Puts trace lines together. When storage runs out a message is cut, never lost.
#include "foundation/trace_text.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace {

struct UniversalTime {
    int year;
    int month;
    int day;
    int hour;
    int minute;
    int second;
};

// Seconds since the epoch in the Gregorian calendar. The C library's gmtime_r takes a lock, which a child
// that is forked at the wrong moment would find locked for ever. Years are counted from March here, so that
// the leap day comes last, in eras of 400 years that all have the same number of days.
UniversalTime universalTime(time_t seconds) noexcept
{
    constexpr int64_t DaysPerEra = 146097;
    constexpr int64_t DaysFromMarchOfYear0ToEpoch = 719468;
    const int64_t sinceEpoch = seconds > 0 ? static_cast<int64_t>(seconds) : 0;
    const int64_t days = sinceEpoch / 86400 + DaysFromMarchOfYear0ToEpoch;
    const int64_t dayOfEra = days % DaysPerEra;
    const int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    const int64_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    const int64_t year = days / DaysPerEra * 400 + yearOfEra + (month <= 2 ? 1 : 0);
    const auto inDay = static_cast<int>(sinceEpoch % 86400);
    return {static_cast<int>(year),
            static_cast<int>(month),
            static_cast<int>(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1),
            inDay / 3600,
            inDay / 60 % 60,
            inDay % 60};
}

} // namespace

const char *sourceFileOf(const TRC1_EntryBlock &block) noexcept
{
    if (block.unit != nullptr) {
        for (const TRC1_Tag &entry : block.unit->entries) {
            if (entry.tag == TRC1_TAG_FILE_NAME) {
                return static_cast<const char *>(entry.value);
            }
        }
    }
    return "?";
}

TraceText::~TraceText()
{
    if (text != onStack) {
        std::free(text);
    }
}

bool TraceText::reserve(size_t more) noexcept
{
    if (more <= capacity - used) {
        return true;
    }
    const size_t wanted = 2 * (used + more);
    char *larger = static_cast<char *>(std::realloc(text != onStack ? text : nullptr, wanted));
    if (larger == nullptr) {
        return false;
    }
    if (text == onStack) {
        std::memcpy(larger, onStack, used);
    }
    text = larger;
    capacity = wanted;
    return true;
}

void TraceText::beginLine(const TRC1_EntryBlock &block, int32_t line) noexcept
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    const UniversalTime utc = universalTime(now.tv_sec);
    append("%04d-%02d-%02dT%02d:%02d:%02d.%06ldZ %d:%d %s:%d %s ", utc.year, utc.month, utc.day, utc.hour,
           utc.minute, utc.second, static_cast<long>(now.tv_nsec / 1000), getpid(), gettid(),
           sourceFileOf(block), line, block.name != nullptr ? block.name : "?");
}

void TraceText::append(const char *format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const int needed = std::vsnprintf(text + used, capacity - used, format, arguments);
    va_end(arguments);
    if (needed < 0) {
        return;
    }
    const auto count = static_cast<size_t>(needed);
    if (count >= capacity - used) {
        if (!reserve(count + 1)) {
            used = capacity - 1; // cut
            return;
        }
        va_start(arguments, format);
        std::vsnprintf(text + used, capacity - used, format, arguments);
        va_end(arguments);
    }
    used += count;
}

void TraceText::appendMessage(const char *format, va_list arguments) noexcept
{
    char small[512];
    char *message = small;
    va_list again;
    va_copy(again, arguments);
    const int needed = std::vsnprintf(small, sizeof small, format, arguments);
    size_t count = needed > 0 ? static_cast<size_t>(needed) : 0;
    if (count >= sizeof small) {
        auto *large = static_cast<char *>(std::malloc(count + 1));
        if (large != nullptr) {
            std::vsnprintf(large, count + 1, format, again);
            message = large;
        } else {
            count = sizeof small - 1;
        }
    }
    va_end(again);
    if (count > 0 && message[count - 1] == '\n') {
        --count;
    }
    appendVisible(message, count);
    endLine();
    if (message != small) {
        std::free(message);
    }
}

// One message stays one line whatever its values hold, so that no value can pass for a line of its own.
void TraceText::appendVisible(const char *characters, size_t count) noexcept
{
    constexpr size_t LongestVisible = 4;
    for (size_t i = 0; i < count; ++i) {
        if (!reserve(LongestVisible + 1)) { // one for the line end
            return;
        }
        const auto byte = static_cast<unsigned char>(characters[i]);
        if (byte >= 0x20 && byte != 0x7F) {
            text[used++] = characters[i];
        } else if (byte == '\t') {
            text[used++] = '\t';
        } else {
            text[used++] = '\\';
            if (byte == '\n' || byte == '\r') {
                text[used++] = byte == '\n' ? 'n' : 'r';
            } else {
                static constexpr char Digits[] = "0123456789ABCDEF";
                text[used++] = 'x';
                text[used++] = Digits[byte >> 4];
                text[used++] = Digits[byte & 0x0F];
            }
        }
    }
}

void TraceText::endLine() noexcept
{
    text[used++] = '\n'; // all that is appended before it, cut or whole, leaves room for it
}
