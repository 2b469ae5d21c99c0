// Takes the line end off a text that was read from a file or a peer.
#include "foundation/frame.h"

#include <cstring>

namespace {

// A line end within the last two characters is cut off; one further inside becomes a blank, so that the rest
// is kept.
void removeLineEnd(char *found, const char *end) noexcept
{
    *found = end - found < 3 ? '\0' : ' ';
}

} // namespace

TRACE_CONTROL("dov0rcrl", DOV0_RemoveCRandLF);
extern "C" void DOV0_RemoveCRandLF(char *text, char mode) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (text == nullptr) {
        TRACE(frame, Trace::Error, "***** Input string is NULL\n");
        return frame.leave();
    }
    // Both are looked for before either is replaced: a cut at the one must not hide the other.
    const char *end = text + std::strlen(text);
    char *carriageReturn = std::strchr(text, '\r');
    char *lineFeed = std::strchr(text, '\n');

    if (carriageReturn != nullptr && (mode == DOV0_REMOVE_CR || mode == DOV0_REMOVE_BOTH)) {
        removeLineEnd(carriageReturn, end);
        TRACE(frame, Trace::Detail, "CR character removed from input buffer <%s>\n", text);
    }
    if (lineFeed != nullptr && (mode == DOV0_REMOVE_LF || mode == DOV0_REMOVE_BOTH)) {
        removeLineEnd(lineFeed, end);
        TRACE(frame, Trace::Detail, "LineFeed character removed from input buffer <%s>\n", text);
    }
    frame.leave();
}
