// Writes a stretch of memory to the trace as a hexadecimal dump beside its characters.
#include "foundation/frame.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

constexpr int32_t BytesPerLine = 16;
constexpr char HexadecimalDigits[] = "0123456789abcdef";
constexpr char VisibleCharacters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
                                     R"(!"#$%&'()*+,-./:;<=>?@[\]^_`{|}~)";
static_assert(sizeof VisibleCharacters - 1 == 94);

char printable(int32_t c) noexcept
{
    return std::memchr(VisibleCharacters, c, sizeof VisibleCharacters - 1) != nullptr ? static_cast<char>(c)
                                                                                      : '.';
}

// One line of the dump while it is being filled.
struct DumpLine {
    char hexadecimal[3 * BytesPerLine] = {}; // terminated only where not full
    char characters[BytesPerLine] = {};
    size_t filled = 0;

    void add(unsigned char byte) noexcept
    {
        char *column = &hexadecimal[3 * filled];
        column[0] = HexadecimalDigits[byte >> 4];
        column[1] = HexadecimalDigits[byte & 0xF];
        column[2] = ' ';
        characters[filled] = printable(byte);
        ++filled;
    }

    void blankOut() noexcept
    {
        std::memset(hexadecimal, ' ', 3 * filled);
        std::memset(characters, ' ', filled);
    }

    void write(const Frame &frame, uint32_t position) const noexcept
    {
        char line[96];
        std::snprintf(line, sizeof line, "%4x |%-48.48s| |%-16.16s|", position, hexadecimal, characters);
        TRACE_ALWAYS(frame, "%s\n", line);
    }
};

} // namespace

TRACE_CONTROL("dov0pdmp", DOV0_PrintDump);
extern "C" void DOV0_PrintDump(const void *base, int32_t from, int32_t to) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (to <= from) {
        return frame.leave();
    }
    if (base == nullptr) {
        TRACE(frame, Trace::Error, "***** Input base is NULL\n");
        return frame.leave();
    }
    const auto *start = static_cast<const unsigned char *>(base) + from;
    const int64_t length = int64_t{to} - from;
    const int64_t positionOfBase = -int64_t{from};

    for (int64_t i = 0; i < length; i += BytesPerLine) {
        const auto position = static_cast<uint32_t>(i);
        DumpLine line;
        for (int64_t j = i; j < std::min(i + BytesPerLine, length); ++j) {
            // The line that holds the base is written twice, split there, even when nothing precedes it in
            // the line.
            if (from < 0 && j == positionOfBase) {
                line.write(frame, position);
                line.blankOut();
            }
            line.add(start[j]);
        }
        line.write(frame, position);
    }
    frame.leave();
}
