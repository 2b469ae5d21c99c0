// Finds a character in a buffer of single bytes or of UTF-16 or UTF-32 units, without being fooled by a matching byte
// inside another character.
#include "foundation/frame.h"
#include "nls/encoding_type.h"

#include <cstring>

namespace {

const char *findByte(const char *begin, const char *end, char byte, bool forward) noexcept
{
    const auto count = static_cast<size_t>(end - begin);
    const int sought = static_cast<unsigned char>(byte);
    return static_cast<const char *>(forward ? std::memchr(begin, sought, count)
                                             : memrchr(begin, sought, count));
}

// The position in the character of the byte that is searched for: the one most particular to it, whatever the order.
int32_t searchableIndex(const char *character, int32_t width) noexcept
{
    for (int32_t i = 0; i < width - 1; ++i) {
        if (character[i] != '\0') {
            return i;
        }
    }
    return width - 1;
}

const char *findUnit(const Frame &frame, const char *buffer, int32_t length, const char *character,
                     int32_t width, bool forward) noexcept
{
    const int32_t searchableCharIndex = searchableIndex(character, width);
    TRACE(frame, Trace::Detail, "searchableCharIndex = %d.\n", searchableCharIndex);
    const char sought[] = {character[searchableCharIndex], '\0'};
    int32_t begin = 0;
    int32_t end = length;
    for (;;) {
        const char *hit = findByte(buffer + begin, buffer + end, sought[0], forward);
        if (hit == nullptr) {
            TRACE(frame, Trace::Detail, "Did not find character in supplied buffer.\n");
            return nullptr;
        }
        const auto offset = static_cast<int32_t>(hit - buffer);
        TRACE(frame, Trace::Detail, "Character <%s> found, charOffset is now %d.\n", sought, offset);
        const int32_t unit = offset - offset % width;
        if (offset % width == searchableCharIndex &&
            std::memcmp(buffer + unit, character, static_cast<size_t>(width)) == 0) {
            return buffer + unit;
        }
        // The whole unit is left behind, even when the byte stands in it a second time, where it would belong.
        if (forward) {
            begin = unit + width;
        } else {
            end = unit;
        }
        if (begin >= end) {
            TRACE(frame, Trace::Detail, "The character found was invalid, end of buffer reached.\n");
            return nullptr;
        }
        TRACE(frame, Trace::Detail, "The character found was invalid, continuing search.\n");
    }
}

} // namespace

TRACE_CONTROL("dov0fchr", DOV0_FindChar);
extern "C" char *DOV0_FindChar(const char *buffer, int32_t length, const char *character, uint16_t type,
                               int32_t forward) noexcept
{
    const Frame frame(TRC1__EPB_);

    TRACE(frame, Trace::Detail, "bufferLength is %d, utfEncodingType is %d.\n", length, type);
    if (buffer == nullptr || character == nullptr || length < 0) {
        return frame.leave<char *>(nullptr);
    }
    const char *found = nullptr;
    if (!isFixedWidth(
            type)) { // of a type that no encoding has, only one byte of the character is sure to be there
        found = findByte(buffer, buffer + length, character[0], forward != 0);
    } else {
        const int32_t width = unitWidth(type);
        DUMP(frame, Trace::Detail, character, width, "character = %c");
        const int32_t wholeUnits = length - length % width;
        if (wholeUnits != length) {
            // The two numbers change places in this text.
            TRACE(frame, Trace::Detail,
                  "bufferLength is not a multiple of %d.  Changing bufferLength to %d.\n", wholeUnits, width);
        }
        found = findUnit(frame, buffer, wholeUnits, character, width, forward != 0);
    }
    return frame.leave(const_cast<char *>(found));
}
