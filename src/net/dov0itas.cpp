// Tells by its shape whether a text is a dotted IPv4 address, without checking its numbers.
#include "foundation/frame.h"

#include <cstring>

namespace {

bool isDigit(char character) noexcept
{
    return character >= '0' && character <= '9';
}

// The dots that are followed by a digit, up to three. What stands between them and behind the third is not
// looked at.
int32_t dotsBeforeDigits(const char *text) noexcept
{
    if (!isDigit(*text)) {
        return 0;
    }
    for (int32_t dots = 0; dots < DOV0_ADDRESS_DOTS; ++dots) {
        const char *dot = std::strchr(text, '.');
        if (dot == nullptr) {
            return dots;
        }
        text = dot + 1;
        if (!isDigit(*text)) {
            return 0;
        }
    }
    return DOV0_ADDRESS_DOTS;
}

} // namespace

TRACE_CONTROL("dov0itas", DOV0_IsThisAddressString);
extern "C" int32_t DOV0_IsThisAddressString(const char *text) noexcept
{
    const Frame frame(TRC1__EPB_);

    TRACE(frame, Trace::Detail, "Examining input address <%s>\n", shown(text));
    return frame.leave<int32_t>(text != nullptr ? dotsBeforeDigits(text) : 0);
}
