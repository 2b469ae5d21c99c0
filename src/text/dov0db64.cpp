// Decodes a Base64 text.
#include "foundation/frame.h"
#include "text/base64_alphabet.h"
#include "text/base64_work_buffer.h"

#include <array>
#include <cstring>

namespace {

constexpr unsigned char InvalidCharacter = 0xFE;
constexpr unsigned char PaddingCharacter = 0xFF;

// The value of each character; one with its high bit set counts like the same one without it.
consteval std::array<unsigned char, 256> buildReverseTable()
{
    std::array<unsigned char, 256> table{};
    table.fill(InvalidCharacter);
    for (unsigned char value = 0; value < 64; ++value) {
        const auto character = static_cast<unsigned char>(Base64Alphabet[value]);
        table[character] = value;
        table[character | 0x80U] = value;
    }
    table[static_cast<unsigned char>(Base64Padding)] = PaddingCharacter;
    table[static_cast<unsigned char>(Base64Padding) | 0x80U] = PaddingCharacter;
    return table;
}

constexpr auto ReverseTable = buildReverseTable();

unsigned char valueOf(char character) noexcept
{
    return ReverseTable[static_cast<unsigned char>(character)];
}

} // namespace

TRACE_CONTROL("dov0db64", DOV0_DecodeBase64);
extern "C" int32_t DOV0_DecodeBase64(const char *input, char **output) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (input == nullptr || *input == '\0') {
        TRACE(frame, Trace::Error, "No input string was provided");
        return frame.leave<int32_t>(0);
    }
    if (output == nullptr) {
        TRACE(frame, Trace::Error, "*****Address of Base64 output is NULL\n");
        return frame.leave<int32_t>(0);
    }
    TRACE(frame, Trace::Detail, "Converting input string <%s> from Base64", input);
    const size_t length = std::strlen(input);
    const size_t resultSize = DOV0_BASE64_DECODED_SIZE(length);
    auto *buffer = static_cast<char *>(DOV0_GetStorage(base64WorkBufferSize(resultSize)));
    if (buffer == nullptr) {
        return frame.leave<int32_t>(0);
    }
    auto *group = static_cast<DOV0_Base64Group *>(DOV0_GetStorage(sizeof(DOV0_Base64Group)));
    if (group == nullptr) {
        DOV0_FreeStorage(&buffer);
        return frame.leave<int32_t>(0);
    }

    char *target = buffer;
    size_t position = 0;
    for (; length - position >= 4; position += 4) {
        for (size_t i = 0; i < 4; ++i) {
            group->data[i] = valueOf(input[position + i]);
        }
        group->count = 4;
        DOV0_DecodeToBuffer(group, target);
        target += 3;
        TRACE(frame, Trace::Detail, "pDecodeBuffer <%s>", buffer);
    }
    if (position < length) {
        // The tail takes its values from the beginning of the result, not from the input. That is kept.
        *group = {};
        for (size_t i = 0; i < length - position; ++i) {
            const unsigned char value = valueOf(buffer[i]);
            group->data[i] = value == PaddingCharacter ? 0 : value;
            ++group->count;
        }
        DOV0_DecodeToBuffer(group, target);
    }

    if (*output == nullptr) {
        *output = static_cast<char *>(DOV0_GetStorage(blockSize(resultSize)));
    }
    const int32_t done = *output != nullptr ? 1 : 0;
    if (done != 0) {
        // The result is a text: a NUL among the decoded bytes ends it.
        std::memcpy(*output, buffer, std::strlen(buffer) + 1);
    }
    DOV0_FreeStorage(&buffer);
    DOV0_FreeStorage(&group);
    return frame.leave<int32_t>(done);
}
