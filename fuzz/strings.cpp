// The string utilities against plain models of what they promise.
// Functions: DOV0_ConvertStringToUpper DOV0_RemoveCRandLF DOV0_TruncateFromLeft DOV0_terminateString
// Functions: DOV0_SubValidNameCharacter
#include "fuzz_target.h"

#include <algorithm>

namespace {

bool isLetter(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

void convertToUpper(const std::string &text, int32_t copy)
{
    const ExactBuffer buffer = ExactBuffer::ofText(text);
    std::string expected = text;
    for (char &character : expected) {
        if (character >= 'a' && character <= 'z') {
            character = static_cast<char>(character - 'a' + 'A');
        }
    }
    char *const result = DOV0_ConvertStringToUpper(buffer.text(), copy);
    if (text.empty() || takeStorageFailure()) {
        MUST(result == nullptr);
        MUST_EQUAL(buffer.contents(), text + '\0');
    } else if (copy == 0) {
        MUST(result == buffer.text());
        MUST_EQUAL(buffer.contents(), expected + '\0');
    } else {
        const Owned<char> made(result);
        MUST(result != nullptr && result != buffer.text());
        MUST_EQUAL(std::string(result), expected);
        MUST_EQUAL(buffer.contents(), text + '\0');
    }
}

void removeLineEnds(const std::string &text, char mode)
{
    const ExactBuffer buffer = ExactBuffer::ofText(text);
    std::string expected = text + '\0';
    for (const char lineEnd : {'\r', '\n'}) {
        const size_t place = text.find(lineEnd);
        const bool isSelected = mode == 'B' || mode == (lineEnd == '\r' ? 'R' : 'F');
        if (isSelected && place != std::string::npos) {
            expected[place] = text.size() - place < 3 ? '\0' : ' ';
        }
    }
    DOV0_RemoveCRandLF(buffer.text(), mode);
    MUST_EQUAL(buffer.contents(), expected);
}

// The caller knows the length; one that says too much would have the text read behind its end.
void truncate(const std::string &text, int32_t currentLength, int32_t maxLength)
{
    const ExactBuffer buffer = ExactBuffer::ofText(text);
    std::string expected = text + '\0';
    if (maxLength >= 1 && currentLength > maxLength) {
        const auto kept = static_cast<size_t>(maxLength);
        expected.replace(0, kept, expected.substr(static_cast<size_t>(currentLength) - kept, kept));
        expected[kept] = '\0';
    }
    DOV0_TruncateFromLeft(buffer.text(), currentLength, maxLength);
    MUST_EQUAL(buffer.contents(), expected);
}

std::string terminatedByModel(const std::string &field, char terminator)
{
    const std::string taken = field.substr(0, DOV0_TERMINATED_STRING_SIZE - 1);
    return taken.substr(0, taken.find(terminator));
}

void terminate(const std::string &field, char terminator, int32_t cut)
{
    const ExactBuffer buffer = ExactBuffer::ofBytes(field);
    char *const result = DOV0_terminateString(buffer.text(), terminator, static_cast<int32_t>(field.size()));
    std::string expected = terminatedByModel(field, terminator);
    MUST_EQUAL(std::string(result, expected.size() + 1), expected + '\0');

    // A part of the result, cut again.
    const size_t start = std::min(static_cast<size_t>(cut), expected.size());
    char *const again =
        DOV0_terminateString(result + start, ' ', static_cast<int32_t>(expected.size() - start));
    expected = terminatedByModel(expected.substr(start), ' ');
    MUST(again == result);
    MUST_EQUAL(std::string(again, expected.size() + 1), expected + '\0');
}

void substitute(const std::string &name)
{
    const ExactBuffer buffer = ExactBuffer::ofText(name);
    std::string expected = name;
    for (char &character : expected) {
        if (!isLetter(character) && !isDigit(character) &&
            std::string("_*-").find(character) == std::string::npos) {
            character = '_';
        }
    }
    DOV0_SubValidNameCharacter(buffer.text());
    MUST_EQUAL(buffer.contents(), expected + '\0');
}

void refuseNull()
{
    MUST(DOV0_ConvertStringToUpper(nullptr, 0) == nullptr);
    DOV0_RemoveCRandLF(nullptr, DOV0_REMOVE_BOTH);
    DOV0_TruncateFromLeft(nullptr, 3, 2);
    DOV0_TruncateFromLeft(nullptr, 3, 0);
    DOV0_TruncateFromLeft(nullptr, 2, 3);
    MUST_EQUAL(std::string(DOV0_terminateString(nullptr, 'x', 7)), "");
    MUST_EQUAL(std::string(DOV0_terminateString("abc", 'x', -1)), "");
    DOV0_SubValidNameCharacter(nullptr);
}

} // namespace

void fuzzOneInput(FuzzInput &input)
{
    if (input.remaining() == 0) {
        return refuseNull();
    }
    const int32_t kind = input.number(0, 4);
    if (kind == 0) {
        const int32_t copy = input.number(-1, 1);
        convertToUpper(input.rest().c_str(), copy);
    } else if (kind == 1) {
        static constexpr char Modes[] = {'R', 'F', 'B', 'X', 'b'};
        const char mode = input.oneOf(Modes);
        removeLineEnds(input.rest().c_str(), mode);
    } else if (kind == 2) {
        const int32_t maxLength = input.number(-1, 1) * input.number(0, INT32_MAX);
        const int32_t shorter = input.number(-1, 255);
        const std::string text = std::string(input.rest().c_str());
        const auto size = static_cast<int32_t>(text.size()) + 1;
        truncate(text, size - std::max(shorter, 0), shorter < 0 ? maxLength : maxLength % (size + 2));
    } else if (kind == 3) {
        const auto terminator = static_cast<char>(input.byte());
        const int32_t cut = input.number(0, 255);
        const int32_t repeated = input.number(1, 8); // fields wider than the area
        std::string field;
        const std::string part = input.rest();
        for (int32_t i = 0; i < repeated; ++i) {
            field += part;
        }
        terminate(field, terminator, cut);
    } else {
        substitute(input.rest().c_str());
    }
}
