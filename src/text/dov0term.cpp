// Makes a text of a fixed-width field by cutting it at a terminator character.
#include "foundation/frame.h"

#include <algorithm>
#include <cstring>

namespace {

constinit char _terminatedStr[DOV0_TERMINATED_STRING_SIZE];

} // namespace

TRACE_CONTROL("dov0term", DOV0_terminateString);
extern "C" char *DOV0_terminateString(const char *text, char terminator, int32_t length) noexcept
{
    const Frame frame(TRC1__EPB_);

    size_t kept = 0;
    if (text != nullptr && length > 0) {
        // What no longer fits into the area is left out.
        kept = std::min(static_cast<size_t>(length), sizeof _terminatedStr - 1);
        if (const void *found = std::memchr(text, static_cast<unsigned char>(terminator), kept)) {
            kept = static_cast<size_t>(static_cast<const char *>(found) - text);
        }
        // The text may be an earlier result, which lies in the area itself.
        std::memmove(_terminatedStr, text, kept);
    }
    _terminatedStr[kept] = '\0';
    return frame.leave(&_terminatedStr[0]);
}
