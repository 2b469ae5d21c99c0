// Dumps of any stretch around a base, line by line.
// Functions: DOV0_PrintDump
#include "fuzz_target.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr char Function[] = "DOV0_PrintDump";

std::string lineByModel(uint32_t position, const std::string &hexadecimal, const std::string &characters)
{
    char line[128];
    std::snprintf(line, sizeof line, "%4x |%-48.48s| |%-16.16s|", position, hexadecimal.c_str(),
                  characters.c_str());
    return line;
}

TraceLog dumpByModel(const std::string &bytes, int32_t from)
{
    TraceLog lines;
    for (size_t i = 0; i < bytes.size(); i += 16) {
        std::string hexadecimal;
        std::string characters;
        for (size_t j = i; j < std::min(i + 16, bytes.size()); ++j) {
            if (from < 0 && j == static_cast<size_t>(-from)) { // at base the line is split
                lines.push_back(lineByModel(static_cast<uint32_t>(i), hexadecimal, characters));
                hexadecimal.assign(hexadecimal.size(), ' ');
                characters.assign(characters.size(), ' ');
            }
            char item[4];
            std::snprintf(item, sizeof item, "%02x ", static_cast<unsigned char>(bytes[j]));
            hexadecimal += item;
            characters += bytes[j] > ' ' && bytes[j] <= '~' ? bytes[j] : '.';
        }
        lines.push_back(lineByModel(static_cast<uint32_t>(i), hexadecimal, characters));
    }
    return lines;
}

} // namespace

void fuzzOneInput(FuzzInput &input)
{
    const bool noBase = input.remaining() == 0;
    const int32_t offset = input.number(0, static_cast<int32_t>(input.remaining()));
    const int32_t end = input.number(0, 255);
    const int32_t begin = input.number(0, 255);
    const std::string bytes = input.rest();
    const auto size = static_cast<int32_t>(bytes.size());
    const ExactBuffer buffer = ExactBuffer::ofBytes(bytes);
    const int32_t baseOffset = std::min(offset, size);
    const int32_t from = std::min(begin, size) - baseOffset;
    const int32_t to = (noBase ? 1 : size) - std::min(end, size) - baseOffset;

    takeTrace();
    DOV0_PrintDump(noBase ? nullptr : buffer.text() + baseOffset, from, to);
    const TraceLog log = takeTrace();

    TraceLog expected;
    if (noBase) {
        expected = {message(Function, "***** Input base is NULL\n")};
    } else if (from < to) {
        expected = dumpByModel(
            bytes.substr(static_cast<size_t>(from + baseOffset), static_cast<size_t>(to - from)), from);
        for (std::string &line : expected) {
            line = message(Function, "%s\n", line.c_str());
        }
    }
    if (input.level != 0) {
        expected.insert(expected.begin(), entry(Function));
        expected.push_back(leave(Function));
    } else if (noBase) {
        expected.clear();
    }
    MUST_EQUAL(log, expected);
}
