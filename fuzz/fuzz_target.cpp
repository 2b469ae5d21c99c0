#include "fuzz_target.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

uint8_t FuzzInput::byte()
{
    return left > 0 ? front[--left] : 0;
}

int32_t FuzzInput::number(int32_t low, int32_t high)
{
    const auto span = static_cast<uint32_t>(high) - static_cast<uint32_t>(low);
    uint32_t value = 0;
    for (uint32_t bytes = span; bytes > 0; bytes >>= 8) {
        value = value << 8 | byte();
    }
    return static_cast<int32_t>(static_cast<uint32_t>(low) +
                                (span < UINT32_MAX ? value % (span + 1) : value));
}

std::string FuzzInput::take(size_t most)
{
    const size_t count = std::min(most, left);
    std::string taken(reinterpret_cast<const char *>(front), count);
    front += count;
    left -= count;
    return taken;
}

void demandFailed(const char *what, const std::string &actual, const std::string &expected, const char *file,
                  int line)
{
    std::fprintf(stderr, "%s:%d: not as it must be: %s\n", file, line, what);
    if (!actual.empty() || !expected.empty()) {
        std::fprintf(stderr, "  is:      %s\n  must be: %s\n", actual.c_str(), expected.c_str());
    }
    std::abort();
}

std::string printed(const std::string &text)
{
    std::string result = "\"";
    for (const char character : text) {
        if (character >= ' ' && character <= '~') {
            result += character;
        } else {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(character));
            result += escape;
        }
    }
    return result + "\"";
}

std::string printed(const TraceLog &log)
{
    std::string result;
    for (const std::string &line : log) {
        result += "\n    " + printed(line);
    }
    return result;
}

std::string printed(const void *pointer)
{
    char text[32];
    std::snprintf(text, sizeof text, "%p", pointer);
    return text;
}
