// Keeps the right-hand end of a text that is too long for its place.
#include "foundation/frame.h"

#include <cstring>

TRACE_CONTROL("dov0trfl", DOV0_TruncateFromLeft);
extern "C" void DOV0_TruncateFromLeft(char *text, int32_t currentLength, int32_t maxLength) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (maxLength < 1) {
        if (text != nullptr && *text != '\0') {
            TRACE(frame, Trace::Error,
                  "***Invalid maximum length <%d> specified, no truncation performed on input string <%s>\n",
                  maxLength, text);
        } else {
            TRACE(frame, Trace::Error, "***Invalid maximum length <%d> specified, no truncation performed\n",
                  maxLength);
        }
        return frame.leave();
    }
    if (currentLength <= maxLength) {
        TRACE(frame, Trace::Detail,
              "Input string length <%d> less than or equal to maxlen <%d>. No truncation required.\n",
              currentLength, maxLength);
        return frame.leave();
    }
    if (text == nullptr) {
        TRACE(frame, Trace::Error, "***** Input string is NULL\n");
        return frame.leave();
    }
    const int32_t delta = currentLength - maxLength;
    TRACE(frame, Trace::Detail, "Input string <%s> curLen: %d maxLen: %d deltaLen: %d\n", text, currentLength,
          maxLength, delta);
    std::memmove(text, text + delta, static_cast<size_t>(maxLength));
    text[maxLength] = '\0';
    TRACE(frame, Trace::Detail, "Output string <%s>\n", text);
    frame.leave();
}
