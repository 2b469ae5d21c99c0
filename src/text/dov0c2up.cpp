// Turns the letters of a text into upper case, in place or in a copy.
#include "foundation/frame.h"
#include "text/block_size.h"

#include <cctype>
#include <cstring>

TRACE_CONTROL("dov0c2up", DOV0_ConvertStringToUpper);
extern "C" char *DOV0_ConvertStringToUpper(char *text, int32_t copy) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (text == nullptr || *text == '\0') {
        TRACE(frame, Trace::Error, "***** Input string is NULL\n");
        return frame.leave<char *>(nullptr);
    }
    const size_t length = std::strlen(text);
    char *target = text;
    if (copy != 0) {
        target = static_cast<char *>(DOV0_GetStorage(blockSize(length + 1)));
        if (target == nullptr) {
            return frame.leave(target);
        }
    }
    TRACE(frame, Trace::Detail, "InString <%s>\n", text);
    for (size_t i = 0; i < length; ++i) {
        target[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[i])));
    }
    TRACE(frame, Trace::Detail, "OutString <%s>\n", target);
    return frame.leave(target);
}
