// Steps a pointer over a number of UTF-8 characters.
#include "foundation/frame.h"

#include <algorithm>
#include <cstring>
#include <unicode/utf8.h>

namespace {

constexpr int8_t NegativeForInvalid =
    -1; // the strictness at which ICU reports an invalid sequence by a negative value

// The bytes of the character at an offset, or 0 when they are none. The terminator counts as a character, so that
// the offset may lie behind it; ICU takes a negative length for "up to a terminator".
size_t characterLength(const char *text, size_t offset, size_t length) noexcept
{
    const auto *character = reinterpret_cast<const uint8_t *>(text) + offset;
    const uint8_t lead = *character;
    if (lead < 0x80) {
        return 1;
    }
    if (lead < 0xC0 || lead > 0xFD) {
        return 0;
    }
    const int32_t left =
        offset < length ? static_cast<int32_t>(std::min<size_t>(length - offset, U8_MAX_LENGTH + 1)) : -1;
    int32_t next = 1;
    return utf8_nextCharSafeBody(character, &next, left, lead, NegativeForInvalid) < 0
               ? 0
               : static_cast<size_t>(next);
}

} // namespace

TRACE_CONTROL("dov0mspc", DOV0_MoveStringPointerByChar);
extern "C" const char *DOV0_MoveStringPointerByChar(const char *text, int32_t count) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (text == nullptr || text[0] == '\0') {
        TRACE(frame, Trace::Error, "***** Input string is NULL\n");
        return frame.leave<const char *>(nullptr);
    }
    TRACE(frame, Trace::Detail, "pString=<%s>, numChars=<%d>\n", text, count);
    const size_t length = std::strlen(text);
    size_t offset = 0;
    for (int32_t steps = 0; steps < count; ++steps) {
        const size_t bytes = characterLength(text, offset, length);
        if (bytes == 0) {
            TRACE(frame, Trace::Error,
                  "***** Supplied string %s does not contain %d characters or the remaining characters are "
                  "invalid "
                  "UTF-8 characters.  Pointer was moved %d characters when end of string reached.\n",
                  text, count, steps + 1);
            break;
        }
        offset +=
            bytes; // a count beyond the text steps over its terminator: callers ask for what the text holds
    }
    TRACE(frame, Trace::Detail, "OutString <%s>\n", text + offset);
    return frame.leave(text + offset);
}
