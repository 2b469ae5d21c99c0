// Characters in buffers of every width and order, against a search that goes unit by unit.
// Functions: DOV0_FindChar
#include "fuzz_target.h"

#include <algorithm>
#include <vector>

namespace {

// Types that an encoding has, and some that none has.
constexpr uint16_t Types[] = {0x00, 0x02, 0x12, 0x0A, 0x04, 0x14, 0x0C, 0x06, 0x1A, 0x08, 0x01, 0x8002};

size_t widthByModel(uint16_t type)
{
    switch (type) {
    case 0x02:
    case 0x12:
    case 0x0A:
        return 2;
    case 0x04:
    case 0x14:
    case 0x0C:
        return 4;
    default:
        return 1;
    }
}

// The offset of the character, or npos.
size_t foundByModel(const std::string &text, const std::string &character, bool forward)
{
    const size_t width = character.size();
    if (width == 1) {
        return forward ? text.find(character[0]) : text.rfind(character[0]);
    }
    size_t sought = 0; // the byte most particular to the character
    while (sought < width - 1 && character[sought] == '\0') {
        ++sought;
    }
    std::vector<size_t> units;
    for (size_t i = 0; i + width <= text.size(); i += width) {
        units.push_back(i);
    }
    if (!forward) {
        std::reverse(units.begin(), units.end());
    }
    for (const size_t start : units) {
        const std::string unit = text.substr(start, width);
        // In each unit, only the first such byte in the direction of the search counts.
        const size_t hit = forward ? unit.find(character[sought]) : unit.rfind(character[sought]);
        if (hit == sought && unit == character) {
            return start;
        }
    }
    return std::string::npos;
}

} // namespace

void fuzzOneInput(FuzzInput &input)
{
    if (input.remaining() == 0) {
        MUST(DOV0_FindChar(nullptr, 1, "x", 0, 1) == nullptr);
        MUST(DOV0_FindChar("x", 1, nullptr, 0, 1) == nullptr);
        MUST(DOV0_FindChar("x", -1, "x", 0, 1) == nullptr);
    }
    const uint16_t type = input.oneOf(Types);
    const bool forward = input.flag();
    const size_t width = widthByModel(type);
    std::string character = input.take(width);
    character.resize(width, '\0');
    const std::string text = input.rest();

    const ExactBuffer buffer = ExactBuffer::ofBytes(text);
    const ExactBuffer sought = ExactBuffer::ofBytes(character);
    const char *const result =
        DOV0_FindChar(buffer.text(), static_cast<int32_t>(text.size()), sought.text(), type, forward ? 1 : 0);
    const size_t expected = foundByModel(text, character, forward);
    MUST_EQUAL(result != nullptr ? static_cast<size_t>(result - buffer.text()) : std::string::npos, expected);
}
