// Base64 both ways, whole texts and single groups, against a model that goes bit by bit.
// Functions: DOV0_EncodeBase64 DOV0_EncodeToBuffer DOV0_EncodeRaw
// Functions: DOV0_DecodeBase64 DOV0_DecodeToBuffer DOV0_DecodeRaw
#include "fuzz_target.h"

#include <vector>

namespace {

// More than the library's work buffer holds. The trace shows the result so far after each group, so that less is enough
// when it is on.
constexpr size_t LongestText = 720;
constexpr size_t LongestTracedText = 120;

const std::string Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string encodedByModel(const std::string &input)
{
    std::vector<bool> bits;
    for (const char character : input) {
        for (int bit = 7; bit >= 0; --bit) {
            bits.push_back((static_cast<unsigned char>(character) >> bit & 1) != 0);
        }
    }
    while (bits.size() % 6 != 0) {
        bits.push_back(false);
    }
    std::string result;
    for (size_t i = 0; i < bits.size(); i += 6) {
        size_t value = 0;
        for (size_t j = i; j < i + 6; ++j) {
            value = 2 * value + (bits[j] ? 1 : 0);
        }
        result += Alphabet[value];
    }
    return result + std::string((4 - result.size() % 4) % 4, '=');
}

// The value of a character: 0 to 63, 0xFF for the padding, 0xFE for any other one. The high bit does not count.
unsigned valueByModel(char character)
{
    const auto plain = static_cast<char>(character & 0x7F);
    const size_t place = plain != '\0' ? Alphabet.find(plain) : std::string::npos;
    return place != std::string::npos ? static_cast<unsigned>(place) : plain == '=' ? 0xFF : 0xFE;
}

std::string groupByModel(const unsigned (&values)[4])
{
    const unsigned bytes[] = {values[0] * 4 | (values[1] / 16 & 3), values[1] * 16 | (values[2] / 4 & 15),
                              values[2] * 64 | (values[3] & 63)};
    std::string result;
    for (const unsigned byte : bytes) {
        result += static_cast<char>(byte % 256);
    }
    return result;
}

std::string decodedByModel(const std::string &input)
{
    std::string work;
    const size_t whole = input.size() / 4 * 4;
    for (size_t i = 0; i < whole; i += 4) {
        work += groupByModel({valueByModel(input[i]), valueByModel(input[i + 1]), valueByModel(input[i + 2]),
                              valueByModel(input[i + 3])});
    }
    if (whole < input.size()) { // the values of the tail come from the beginning of the result
        unsigned values[4] = {};
        for (size_t p = 0; p < input.size() - whole; ++p) {
            const unsigned value = valueByModel(p < work.size() ? work[p] : '\0');
            values[p] = value == 0xFF ? 0 : value;
        }
        work += groupByModel(values);
    }
    return work.c_str(); // a text ends at its first NUL
}

// Converts one way, into a buffer of just the size that the manual asks for or into one that the library makes.
void convert(int32_t (*conversion)(const char *, char **), const std::string &input,
             const std::string &expected, size_t size, bool inOwnBuffer)
{
    const ExactBuffer text = ExactBuffer::ofText(input);
    const ExactBuffer area(size);
    Owned<char> made;
    char *given = area.text();
    char **output = inOwnBuffer ? &given : made.address();
    const int32_t result = conversion(text.text(), output);
    MUST_EQUAL(text.contents(), input + '\0');
    MUST_EQUAL(result, takeStorageFailure() || input.empty() ? 0 : 1);
    if (result == 0) {
        MUST_EQUAL(area.contents(), std::string(size, '\xA5'));
        MUST(made.get() == nullptr);
    } else {
        MUST_EQUAL(std::string(*output), expected);
    }
}

void convertGroup(FuzzInput &input)
{
    DOV0_Base64Group group = {};
    for (unsigned char &byte : group.data) {
        byte = input.byte();
    }
    group.count = input.number(-1, 5);

    const ExactBuffer bytes = ExactBuffer::ofBytes(std::string(reinterpret_cast<char *>(group.data), 3));
    const ExactBuffer sextets(4);
    DOV0_EncodeRaw(sextets.bytes(), bytes.bytes());
    std::string expected = encodedByModel(bytes.contents());
    for (size_t i = 0; i < 4; ++i) {
        MUST_EQUAL(Alphabet[sextets.bytes()[i] & 63], expected[i]);
        MUST(sextets.bytes()[i] < 64);
    }
    if (group.count == 1 || group.count == 2) {
        expected.replace(static_cast<size_t>(group.count) + 1, std::string::npos,
                         static_cast<size_t>(3 - group.count), '=');
    }
    const ExactBuffer encoded(4);
    DOV0_EncodeToBuffer(&group, encoded.text());
    MUST_EQUAL(encoded.contents(), expected);

    expected = groupByModel({group.data[0], group.data[1], group.data[2], group.data[3]});
    const ExactBuffer decoded(3);
    DOV0_DecodeToBuffer(&group, decoded.text());
    MUST_EQUAL(decoded.contents(), expected);
    const ExactBuffer decodedRaw(3);
    const ExactBuffer values = ExactBuffer::ofBytes(std::string(reinterpret_cast<char *>(group.data), 4));
    DOV0_DecodeRaw(decodedRaw.bytes(), values.bytes());
    MUST_EQUAL(decodedRaw.contents(), expected);
}

void refuseNull()
{
    const DOV0_Base64Group group = {};
    const ExactBuffer area(4);
    Owned<char> made;
    for (const auto conversion : {DOV0_EncodeBase64, DOV0_DecodeBase64}) {
        MUST_EQUAL(conversion(nullptr, made.address()), 0);
        MUST_EQUAL(conversion("TWFu", nullptr), 0);
    }
    for (const auto conversion : {DOV0_EncodeToBuffer, DOV0_DecodeToBuffer}) {
        conversion(nullptr, area.text());
        conversion(&group, nullptr);
    }
    for (const auto conversion : {DOV0_EncodeRaw, DOV0_DecodeRaw}) {
        conversion(area.bytes(), nullptr);
        conversion(nullptr, area.bytes());
    }
    MUST(made.get() == nullptr);
    MUST_EQUAL(area.contents(), std::string(area.size(), '\xA5'));
}

} // namespace

void fuzzOneInput(FuzzInput &input)
{
    if (input.remaining() == 0) {
        return refuseNull();
    }
    const bool inOwnBuffer = input.flag();
    convertGroup(input);
    const std::string text = input.take(input.level == 0 ? LongestText : LongestTracedText).c_str();
    const std::string encoded = encodedByModel(text);
    convert(DOV0_EncodeBase64, text, encoded, DOV0_BASE64_ENCODED_SIZE(text.size()), inOwnBuffer);
    convert(DOV0_DecodeBase64, text, decodedByModel(text), DOV0_BASE64_DECODED_SIZE(text.size()),
            inOwnBuffer);
    if (text.size() % 3 == 0) { // without padding it comes back
        convert(DOV0_DecodeBase64, encoded, text, DOV0_BASE64_DECODED_SIZE(encoded.size()), inOwnBuffer);
    }
}
