// Prints the tree of one BER message, for example of an SNMP packet.
//
//     ber_dump 300302012a          hexadecimal text, in any number of arguments
//     ber_dump packet.hex          a file of hexadecimal text
//     ber_dump packet.bin          a file with the message itself
//
// It ends with 0 when the message was printed, with 1 when it is not well formed and with 2 when there is none.
#include "ber_flaw.h"
#include "dov0610.h"

#include <cctype>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int DeepestLevel = 64;

constexpr uint32_t Constructed = 0x20; // a bit of a tag

std::string hexadecimal(const unsigned char *bytes, size_t count)
{
    std::string text = "0x";
    for (size_t i = 0; i < count; ++i) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02X", static_cast<unsigned int>(bytes[i]));
        text += pair;
    }
    return text;
}

std::string quotedText(const unsigned char *bytes, size_t count)
{
    for (size_t i = 0; i < count; ++i) {
        if (bytes[i] < 0x20 || bytes[i] > 0x7E) {
            return hexadecimal(bytes, count);
        }
    }
    return '"' + std::string(bytes, bytes + count) + '"';
}

std::string dotted(const unsigned char *content, uint32_t length)
{
    int32_t count = 0;
    uint32_t *elements = DOV0_DecodeOIDfromBER(content, static_cast<int32_t>(length), &count);
    std::string text = hexadecimal(content, length);
    if (count > 0) {
        char *oid = DOV0_ConvertOIDtoString(elements, count);
        text = oid != nullptr ? oid : text;
        DOV0_FreeStorage(&oid);
    }
    DOV0_FreeStorage(&elements);
    return text;
}

// The library reads integers of up to four bytes, and those of fewer than four without their sign.
std::string integerAt(unsigned char *field, const unsigned char *content, uint32_t length)
{
    int32_t value = 0;
    return DOV0_ExtractBERinteger(&field, &value) == 1 ? std::to_string(value) : hexadecimal(content, length);
}

class Dump {
public:
    explicit Dump(Bytes &bytes) : message(bytes.data()) {}

    // Prints the fields between two places, and what they hold.
    bool print(unsigned char *next, unsigned char *end, int level) const
    {
        while (next < end) {
            unsigned char *const field = next;
            const char *flaw = level > DeepestLevel ? "is nested too deep" : flawOf(field, end);
            if (flaw != nullptr) {
                std::fflush(stdout);
                std::fprintf(stderr, "ber_dump: the field at byte %td %s\n", field - message, flaw);
                return false;
            }
            uint32_t length = 0;
            unsigned char *value = nullptr; // stays null when the length is 0
            const uint32_t tag = DOV0_ExtractBERfield(&next, &length, &value);

            std::printf("%*s%s", 2 * level, "", DOV0_GetASN1typeString(static_cast<int32_t>(tag)));
            if ((tag & Constructed) != 0) {
                std::printf(tag == DOV0_ASN_SEQUENCE ? "\n" : " 0x%02X\n", tag);
                if (length > 0 && !print(value, next, level + 1)) {
                    return false;
                }
            } else if (tag == DOV0_ASN_INTEGER) {
                std::printf(" %s\n", integerAt(field, value, length).c_str());
            } else if (tag == DOV0_ASN_OCTETSTRING) {
                std::printf(" %s\n", quotedText(value, length).c_str());
            } else if (tag == DOV0_ASN_OBJECTIDENTIFIER) {
                std::printf(" %s\n", dotted(value, length).c_str());
            } else if (tag == DOV0_ASN_NULL && length == 0) {
                std::printf("\n");
            } else {
                std::printf(" 0x%02X %s\n", tag, hexadecimal(value, length).c_str());
            }
        }
        return true;
    }

private:
    const unsigned char *const message;
};

std::optional<Bytes> bytesOfHexadecimal(const std::string &text)
{
    Bytes bytes;
    std::string digits;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (std::isxdigit(byte) != 0) {
            digits += character;
        } else if (std::isspace(byte) == 0) {
            return std::nullopt;
        }
    }
    if (digits.size() % 2 != 0) {
        return std::nullopt;
    }
    for (size_t i = 0; i < digits.size(); i += 2) {
        bytes.push_back(static_cast<unsigned char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

// The message that the arguments name or are.
std::optional<Bytes> messageOf(const std::vector<std::string> &arguments)
{
    std::FILE *const file = arguments.size() == 1 ? std::fopen(arguments[0].c_str(), "rb") : nullptr;
    if (file != nullptr) {
        std::string content;
        char piece[4096];
        for (size_t count = 0; (count = std::fread(piece, 1, sizeof piece, file)) > 0;) {
            content.append(piece, count);
        }
        std::fclose(file);
        const std::optional<Bytes> bytes = bytesOfHexadecimal(content);
        return bytes ? bytes : Bytes(content.begin(), content.end());
    }
    std::string text;
    for (const std::string &argument : arguments) {
        text += argument;
    }
    return bytesOfHexadecimal(text);
}

} // namespace

int main(int argc, char **argv)
{
    std::optional<Bytes> message = messageOf({argv + 1, argv + argc});
    if (!message || message->empty()) {
        std::fprintf(stderr, "usage: ber_dump HEXADECIMAL... | FILE\n");
        return 2;
    }
    unsigned char *const start = message->data();
    return Dump(*message).print(start, start + message->size(), 0) ? 0 : 1;
}
