#include "support/trace_recorder.h"

#include "support/heap_faults.h"

#include <cerrno>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <mutex>

#pragma GCC diagnostic ignored "-Wformat-nonliteral"

namespace {

struct Recorder {
    std::mutex lock;
    uint32_t level = 0;
    std::map<std::string, uint32_t> levelOf;
    TraceLog log;
    int synchronisations = 0;
};

Recorder &recorder()
{
    static auto *const instance = new Recorder; // outlives every static destructor that may still trace
    return *instance;
}

int32_t generation = 1;

std::string formatted(const char *format, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text(static_cast<size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, again);
    va_end(again);
    text.pop_back();
    return text;
}

void record(std::string text)
{
    const std::lock_guard<std::mutex> guard(recorder().lock);
    recorder().log.push_back(std::move(text));
}

void advanceGeneration()
{
    __atomic_fetch_add(&generation, 1, __ATOMIC_RELEASE);
}

} // namespace

extern "C" uint32_t TRC1_Sync(TRC1_EntryBlock *block)
{
    const HeapFaultPause pause;
    const std::lock_guard<std::mutex> guard(recorder().lock);
    ++recorder().synchronisations;
    const auto own = recorder().levelOf.find(block->name);
    const uint32_t level = own != recorder().levelOf.end() ? own->second : recorder().level;
    __atomic_store_n(&block->level, level, __ATOMIC_RELAXED);
    __atomic_store_n(&block->generation, __atomic_load_n(&generation, __ATOMIC_ACQUIRE), __ATOMIC_RELEASE);
    __atomic_store_n(&block->generationWord, &generation, __ATOMIC_RELEASE);
    return level;
}

extern "C" void TRC1_Event(TRC1_EntryBlock *block, int32_t line, int32_t kind, ...)
{
    const HeapFaultPause pause;
    const int savedErrno = errno;
    checkEventPlace(*block, line, kind);
    errno = savedErrno;
    if (kind == TRC1_EVENT_EXIT_VALUE) {
        va_list arguments;
        va_start(arguments, kind);
        record(leave(block->name, va_arg(arguments, intptr_t)));
        va_end(arguments);
    } else {
        record(kind == TRC1_EVENT_ENTRY ? entry(block->name) : leave(block->name));
    }
}

extern "C" void TRC1_Printf(TRC1_EntryBlock *block, int32_t /*line*/, const char *format, ...)
{
    const HeapFaultPause pause;
    va_list arguments;
    va_start(arguments, format);
    record(std::string(block->name) + ": " + formatted(format, arguments));
    va_end(arguments);
}

extern "C" void TRC1_Dump(TRC1_EntryBlock *block, int32_t /*line*/, const void *address, int32_t length,
                          const char *itemFormat)
{
    const HeapFaultPause pause;
    record(dump(block->name, address, length, itemFormat));
}

void setTraceLevel(uint32_t level)
{
    {
        const std::lock_guard<std::mutex> guard(recorder().lock);
        recorder().level = level;
        recorder().levelOf.clear();
    }
    advanceGeneration();
}

void setTraceLevel(const char *function, uint32_t level)
{
    {
        const std::lock_guard<std::mutex> guard(recorder().lock);
        recorder().levelOf[function] = level;
    }
    advanceGeneration();
}

TraceLog takeTrace()
{
    const std::lock_guard<std::mutex> guard(recorder().lock);
    TraceLog taken;
    taken.swap(recorder().log);
    return taken;
}

int takeSynchronisations()
{
    const std::lock_guard<std::mutex> guard(recorder().lock);
    const int taken = recorder().synchronisations;
    recorder().synchronisations = 0;
    return taken;
}

TraceLog traceAt(uint32_t level, const std::function<void()> &call)
{
    setTraceLevel(level);
    takeTrace();
    call();
    setTraceLevel(0);
    return takeTrace();
}

TraceLog traceOf(const char *function, uint32_t level, const std::function<void()> &call)
{
    setTraceLevel(0);
    setTraceLevel(function, level);
    takeTrace();
    call();
    setTraceLevel(0);
    return takeTrace();
}

TraceLog from(const char *function, const TraceLog &log)
{
    TraceLog own;
    for (const std::string &line : log) {
        const size_t length = std::char_traits<char>::length(function);
        if (line.compare(0, length, function) == 0 && (line[length] == ' ' || line[length] == ':')) {
            own.push_back(line);
        }
    }
    return own;
}

uint32_t bitsThatShow(const std::string &record, const std::function<void()> &call)
{
    uint32_t bits = 0;
    for (uint32_t bit = 1; bit <= 0x8000; bit <<= 1) {
        for (const std::string &line : traceAt(bit, call)) {
            if (line == record) {
                bits |= bit;
            }
        }
    }
    return bits;
}

std::string entry(const char *function)
{
    return std::string(function) + " entry";
}

std::string leave(const char *function)
{
    return std::string(function) + " exit";
}

std::string leave(const char *function, intptr_t value)
{
    return std::string(function) + " exit " + std::to_string(value);
}

std::string leave(const char *function, const void *value)
{
    return leave(function, reinterpret_cast<intptr_t>(value));
}

std::string message(const char *function, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::string text = std::string(function) + ": " + formatted(format, arguments);
    va_end(arguments);
    return text;
}

std::string dump(const char *function, const void *address, int32_t length, const char *itemFormat)
{
    std::string text = std::string(function) + " dump";
    const auto *bytes = static_cast<const unsigned char *>(address);
    for (int32_t i = 0; i < length; ++i) {
        char item[64];
        std::snprintf(item, sizeof item, itemFormat, static_cast<unsigned int>(bytes[i]));
        text += std::string(" ") + item;
    }
    return text;
}
