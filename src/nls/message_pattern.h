// Message patterns and the texts that are put into them. ICU's C interface would do the same, but takes no notice when
// it has no memory for the arguments.
#ifndef DOV0610_NLS_MESSAGE_PATTERN_H
#define DOV0610_NLS_MESSAGE_PATTERN_H

#include <cstdint>
#include <unicode/msgfmt.h>

// Messages have up to five parameters.
constexpr int32_t MessageParameterCount = 5;

class MessagePattern {
public:
    // Reads a pattern. The status of one that asks for a sixth parameter, or for a parameter as a number or a date, is a
    // failure: there is none. A name instead of a number stands for nothing, and ICU has its way with it.
    MessagePattern(const char *localeName, const char16_t *pattern, int32_t length,
                   UErrorCode &status) noexcept;

    // Takes the text of a parameter, which ends in a zero unit, if the pattern asks for it.
    void setParameter(int32_t index, const char16_t *text, UErrorCode &status) noexcept;

    // Stores the message, as much of it as there is room for, and returns its whole length. The status is a buffer
    // overflow when that is more than the capacity.
    int32_t format(char16_t *message, int32_t capacity, UErrorCode &status) const noexcept;

private:
    void readPattern(const icu::UnicodeString &pattern, UErrorCode &status) noexcept;

    icu::MessageFormat messageFormat;
    icu::Formattable parameters[MessageParameterCount];
    bool isAskedFor[MessageParameterCount] = {};
    int32_t parameterCount = 0; // one more than the largest number in the pattern
};

#endif
