#include "nls/message_pattern.h"

#include <algorithm>
#include <unicode/messagepattern.h>

namespace {

bool takesText(UMessagePatternArgType type) noexcept
{
    return type == UMSGPAT_ARG_TYPE_NONE || type == UMSGPAT_ARG_TYPE_SELECT;
}

// A string of ICU's that got no memory holds nothing any more.
void checkMemory(const icu::UnicodeString &text, UErrorCode &status) noexcept
{
    if (U_SUCCESS(status) && text.isBogus()) {
        status = U_MEMORY_ALLOCATION_ERROR;
    }
}

} // namespace

MessagePattern::MessagePattern(const char *localeName, const char16_t *pattern, int32_t length,
                               UErrorCode &status) noexcept
    : messageFormat(icu::UnicodeString(false, icu::ConstChar16Ptr(pattern), length), icu::Locale(localeName),
                    status)
{
    if (U_SUCCESS(status)) {
        readPattern(icu::UnicodeString(false, icu::ConstChar16Ptr(pattern), length), status);
    }
}

void MessagePattern::readPattern(const icu::UnicodeString &pattern, UErrorCode &status) noexcept
{
    const icu::MessagePattern parsed(pattern, nullptr, status);
    UMessagePatternArgType type = UMSGPAT_ARG_TYPE_NONE;
    for (int32_t i = 0; U_SUCCESS(status) && i < parsed.countParts(); ++i) {
        const icu::MessagePattern::Part &part = parsed.getPart(i);
        if (part.getType() == UMSGPAT_PART_TYPE_ARG_START) {
            type = part.getArgType();
        } else if (part.getType() == UMSGPAT_PART_TYPE_ARG_NUMBER) {
            const int32_t number = part.getValue();
            if (number >= MessageParameterCount) {
                status = U_INDEX_OUTOFBOUNDS_ERROR;
            } else if (!takesText(type)) {
                status = U_ARGUMENT_TYPE_MISMATCH;
            } else {
                isAskedFor[number] = true;
                parameterCount = std::max(parameterCount, number + 1);
            }
        }
    }
}

void MessagePattern::setParameter(int32_t index, const char16_t *text, UErrorCode &status) noexcept
{
    if (isAskedFor[index]) {
        parameters[index].setString(icu::UnicodeString(text));
        checkMemory(parameters[index].getString(status), status);
    }
}

int32_t MessagePattern::format(char16_t *message, int32_t capacity, UErrorCode &status) const noexcept
{
    icu::UnicodeString text;
    icu::FieldPosition ignored(icu::FieldPosition::DONT_CARE);
    messageFormat.format(parameters, parameterCount, text, ignored, status);
    checkMemory(text, status);
    if (U_FAILURE(status)) {
        return 0;
    }
    const int32_t length = text.length();
    if (length > capacity && capacity > 0) {
        text.extract(0, capacity, message);
        status = U_BUFFER_OVERFLOW_ERROR;
        return length;
    }
    return text.extract(message, capacity, status);
}
