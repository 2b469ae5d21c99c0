// What the fuzz targets share. A target defines fuzzOneInput(), which takes its arguments out of the input, calls the
// library and demands what the manual promises. It is called twice for each input, with the trace off and on: messages
// read memory too.
//
// A line "// Functions: DOV0_..." in a target's source names what it aims at: coverage_floor.py holds its corpus to the
// lines of the files that these functions are in.
#ifndef DOV0610_FUZZ_FUZZ_TARGET_H
#define DOV0610_FUZZ_FUZZ_TARGET_H

#include "support/trace_recorder.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

// The bytes of one input. Texts are taken from the front, so that a seed can be written by hand; numbers and choices
// from the back. An input that is used up gives empty texts and zeros.
class FuzzInput {
public:
    FuzzInput(const uint8_t *data, size_t size, uint32_t traceLevel) noexcept
        : level(traceLevel), front(data), left(size)
    {
    }

    // The trace level in force: 0 or Trace::All.
    const uint32_t level;

    size_t remaining() const { return left; }
    uint8_t byte();
    bool flag() { return (byte() & 1) != 0; }

    // A number between the two, both included, of as many bytes as that takes.
    int32_t number(int32_t low, int32_t high);

    template <typename List> auto oneOf(const List &list)
    {
        return list[static_cast<size_t>(number(0, static_cast<int32_t>(std::size(list)) - 1))];
    }

    // At most this many bytes.
    std::string take(size_t most);

    // A part of what is left, of a length that the input chooses.
    std::string part() { return take(static_cast<size_t>(number(0, static_cast<int32_t>(left)))); }

    std::string rest() { return take(left); }

private:
    const uint8_t *front;
    size_t left;
};

void fuzzOneInput(FuzzInput &input);

// Makes the n-th request for working storage from now on fail, counted from 1; with 0 none. An input does so by its last
// byte.
void failStorageRequest(int number);

// Whether the one request for working storage that the input makes fail has failed since the last call of this function.
// Results are then as for an exhausted heap.
bool takeStorageFailure();

// A heap block of exactly this size, so that one byte too far is seen.
class ExactBuffer {
public:
    explicit ExactBuffer(size_t size, char fill = '\xA5') : length(size), block(new char[size])
    {
        std::memset(block.get(), fill, size);
    }

    // The bytes alone, or with a terminator behind them.
    static ExactBuffer ofBytes(const std::string &bytes) { return ExactBuffer(bytes, bytes.size()); }
    static ExactBuffer ofText(const std::string &text) { return ExactBuffer(text, text.size() + 1); }

    char *text() const { return block.get(); }
    unsigned char *bytes() const { return reinterpret_cast<unsigned char *>(block.get()); }
    size_t size() const { return length; }
    std::string contents() const { return std::string(block.get(), length); }

private:
    ExactBuffer(const std::string &text, size_t size) : ExactBuffer(size, '\0')
    {
        std::memcpy(block.get(), text.data(), text.size());
    }

    size_t length;
    std::unique_ptr<char[]> block;
};

// Working storage that the library gave out, given back at the end of the block.
template <typename Value> class Owned {
public:
    Owned() = default;
    explicit Owned(Value *given) : value(given) {}
    ~Owned() { DOV0_FreeStorage(&value); }
    Owned(const Owned &) = delete;
    Owned &operator=(const Owned &) = delete;

    Value **address() { return &value; }
    Value *get() const { return value; }

private:
    Value *value = nullptr;
};

// Demands. One that fails ends the process, which libFuzzer takes for a finding.
#define MUST(condition) ((condition) ? void() : demandFailed(#condition, "", "", __FILE__, __LINE__))
#define MUST_EQUAL(actual, expected) demandEqual(actual, expected, #actual, __FILE__, __LINE__)

[[noreturn]] void demandFailed(const char *what, const std::string &actual, const std::string &expected,
                               const char *file, int line);

std::string printed(const std::string &text);
inline std::string printed(const char *text)
{
    return printed(std::string(text));
}
std::string printed(const TraceLog &log);
std::string printed(const void *pointer);
template <typename Number, typename = std::enable_if_t<std::is_integral_v<Number>>>
std::string printed(Number number)
{
    return std::to_string(number);
}

template <typename Actual, typename Expected>
void demandEqual(const Actual &actual, const Expected &expected, const char *what, const char *file, int line)
{
    if (!(actual == expected)) {
        demandFailed(what, printed(actual), printed(expected), file, line);
    }
}

#endif
