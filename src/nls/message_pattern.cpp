#include "nls/message_pattern.h"

#include <unicode/messagepattern.h>

namespace {

UErrorCode checkPart(const icu::MessagePattern::Part &part) noexcept
{
    switch (part.getType()) {
    case UMSGPAT_PART_TYPE_ARG_START:
        return part.getArgType() == UMSGPAT_ARG_TYPE_NONE || part.getArgType() == UMSGPAT_ARG_TYPE_SELECT
                   ? U_ZERO_ERROR
                   : U_ARGUMENT_TYPE_MISMATCH;
    case UMSGPAT_PART_TYPE_ARG_NUMBER:
        return part.getValue() < MessageParameterCount ? U_ZERO_ERROR : U_INDEX_OUTOFBOUNDS_ERROR;
    case UMSGPAT_PART_TYPE_ARG_NAME:
        return U_ARGUMENT_TYPE_MISMATCH;
    default:
        return U_ZERO_ERROR;
    }
}

void checkPattern(const icu::UnicodeString &pattern, UErrorCode &status) noexcept
{
    const icu::MessagePattern parsed(pattern, nullptr, status);
    for (int32_t i = 0; U_SUCCESS(status) && i < parsed.countParts(); ++i) {
        status = checkPart(parsed.getPart(i));
    }
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
        checkPattern(icu::UnicodeString(false, icu::ConstChar16Ptr(pattern), length), status);
    }
}

void MessagePattern::setParameter(int32_t index, const char16_t *text, UErrorCode &status) noexcept
{
    parameters[index].setString(icu::UnicodeString(text));
    checkMemory(parameters[index].getString(status), status);
}

int32_t MessagePattern::format(char16_t *message, int32_t capacity, UErrorCode &status) const noexcept
{
    icu::UnicodeString text;
    icu::FieldPosition ignored(icu::FieldPosition::DONT_CARE);
    messageFormat.format(parameters, MessageParameterCount, text, ignored, status);
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
