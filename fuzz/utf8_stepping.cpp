// Steps over texts, well-formed and not, and over terminators into what follows.
// Functions: DOV0_MoveStringPointerByChar
#include "fuzz_target.h"

#include <algorithm>

namespace {

constexpr char Function[] = "DOV0_MoveStringPointerByChar";

// The bytes of the well-formed character that a text begins with, or 0. The terminator is one.
size_t characterByModel(const std::string &text)
{
    const auto at = [&text](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    const unsigned lead = at(0);
    if (lead < 0x80) {
        return 1;
    }
    const size_t size = lead >= 0xC2 && lead <= 0xDF   ? 2
                        : lead >= 0xE0 && lead <= 0xEF ? 3
                        : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                       : 0;
    unsigned codePoint = lead & (0xFFU >> (size + 1));
    for (size_t i = 1; i < size; ++i) {
        if (at(i) < 0x80 || at(i) > 0xBF) {
            return 0;
        }
        codePoint = codePoint << 6 | (at(i) & 0x3F);
    }
    const bool isShortest = size != 3 ? size != 4 || codePoint >= 0x10000 : codePoint >= 0x800;
    const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    return isShortest && !isSurrogate && codePoint <= 0x10FFFF ? size : 0;
}

} // namespace

void fuzzOneInput(FuzzInput &input)
{
    const int32_t wanted = input.number(-1, 254);
    // What lies behind the terminator belongs to the caller as well, up to a last terminator.
    const std::string memory = input.rest();
    const ExactBuffer buffer = ExactBuffer::ofText(memory);
    if (memory.empty() || memory[0] == '\0') {
        MUST(DOV0_MoveStringPointerByChar(buffer.text(), wanted) == nullptr);
        MUST(DOV0_MoveStringPointerByChar(nullptr, wanted) == nullptr);
        return;
    }
    size_t offset = 0;
    int32_t count = 0;
    bool isMalformed = false;
    while (count < wanted && offset < memory.size() && !isMalformed) { // as many as there are
        const size_t size = characterByModel(memory.substr(offset));
        isMalformed = size == 0;
        offset += size;
        ++count;
    }
    takeTrace();
    const char *const result = DOV0_MoveStringPointerByChar(buffer.text(), std::min(wanted, count));
    const TraceLog log = takeTrace();
    MUST_EQUAL(static_cast<size_t>(result - buffer.text()), offset);
    if (input.level != 0) {
        const char *text = memory.c_str();
        TraceLog expected = {
            entry(Function),
            message(Function, "pString=<%s>, numChars=<%d>\n", text, std::min(wanted, count)),
            message(Function, "OutString <%s>\n", text + offset), leave(Function, result)};
        if (isMalformed) {
            expected.insert(
                expected.begin() + 2,
                message(Function,
                        "***** Supplied string %s does not contain %d characters or the remaining characters "
                        "are invalid UTF-8 characters.  Pointer was moved %d characters when end of string "
                        "reached.\n",
                        text, count, count));
        }
        MUST_EQUAL(log, expected);
    }
}
