// Forces a name into the characters that names may have: letters, digits, '_', '*' and '-'.
#include "foundation/frame.h"

#include <cctype>

TRACE_CONTROL("dov0svnc", DOV0_SubValidNameCharacter);
extern "C" void DOV0_SubValidNameCharacter(char *name) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (name == nullptr) {
        TRACE(frame, Trace::Error, "***** Input string is NULL\n");
        return frame.leave();
    }
    for (char *next = name; *next != '\0'; ++next) {
        const char character = *next;
        if (std::isalnum(static_cast<unsigned char>(character)) == 0 && character != '_' &&
            character != '*' && character != '-') {
            TRACE(frame, Trace::Detail, "Invalid name character %c replaced by _\n", character);
            *next = '_';
        }
    }
    frame.leave();
}
