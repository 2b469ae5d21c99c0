// What the writers produce, read by another implementation of the encoding rules.
#include "dov0610.h"
#include "support/command.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

// A field as the other side prints it: its name, its length and its value.
struct Parsed {
    std::string name;
    size_t length;
    std::string value;
};

bool operator==(const Parsed &left, const Parsed &right)
{
    return left.name == right.name && left.length == right.length && left.value == right.value;
}

void PrintTo(const Parsed &parsed, std::ostream *out)
{
    *out << parsed.name << ", length " << parsed.length << ", value " << parsed.value;
}

// Lines are like "   23:d=1  hl=2 l=   1 prim: INTEGER           :2A".
std::vector<Parsed> parse(const Bytes &message)
{
    std::string path = testing::TempDir() + "/dov0610_XXXXXX";
    const int file = mkstemp(path.data());
    EXPECT_EQ(write(file, message.data(), message.size()), static_cast<ssize_t>(message.size()));
    close(file);
    const Outcome outcome = run("openssl asn1parse -inform DER -in " + path);
    std::remove(path.c_str());
    EXPECT_EQ(outcome.status, 0) << outcome.output;

    std::vector<Parsed> fields;
    size_t begin = 0;
    while (begin < outcome.output.size()) {
        const size_t end = outcome.output.find('\n', begin);
        const std::string text = outcome.output.substr(begin, end - begin);
        size_t length = 0;
        char name[32] = "";
        int behindName = 0;
        EXPECT_EQ(
            std::sscanf(text.c_str(), "%*d:d=%*d hl=%*d l=%zu %*5s %31[A-Z ]%n", &length, name, &behindName),
            2)
            << text;
        const std::string value = text.substr(static_cast<size_t>(behindName));
        fields.push_back({std::string(name).substr(0, std::string(name).find_last_not_of(' ') + 1), length,
                          value.empty() ? value : value.substr(1)});
        begin = end + 1;
    }
    return fields;
}

// A sequence around fields that were written already.
Bytes sequenceOf(const Bytes &content)
{
    Bytes message(content.size() + 6);
    unsigned char *cursor = message.data();
    *cursor++ = DOV0_ASN_SEQUENCE;
    EXPECT_EQ(DOV0_FormatBERlengthField(&cursor, static_cast<uint32_t>(content.size())), 1);
    cursor = std::copy(content.begin(), content.end(), cursor);
    message.resize(static_cast<size_t>(cursor - message.data()));
    return message;
}

// An integer as the other side prints it. Some negative ones have a byte more than they need, which it tells.
std::string shownInteger(int32_t value)
{
    char text[20];
    if (value == -0x80 || value == -0x8000 || value == -0x800000) {
        std::snprintf(text, sizeof text, "FF%X", static_cast<unsigned int>(-value));
        return std::string("BAD INTEGER:[") + text + "]";
    }
    std::snprintf(text, sizeof text, "%X", static_cast<unsigned int>(std::abs(value)));
    std::string digits = text;
    if (digits.size() % 2 != 0) {
        digits.insert(digits.begin(), '0');
    }
    return (value < 0 ? "-" : "") + digits;
}

} // namespace

TEST(WritersAgainstOpenssl, Integers)
{
    std::vector<int32_t> values = {0, 1, -1};
    for (int power = 1; power < 31; ++power) {
        for (const int32_t near : {-1, 0, 1}) {
            values.push_back((int32_t{1} << power) + near);
            values.push_back(-(int32_t{1} << power) + near);
        }
    }
    values.insert(values.end(), {INT32_MAX, -INT32_MAX});
    Bytes content(values.size() * 6);
    unsigned char *cursor = content.data();
    for (const int32_t value : values) {
        DOV0_FormatBERintegerType(&cursor, DOV0_ASN_INTEGER, value);
    }
    content.resize(static_cast<size_t>(cursor - content.data()));
    const std::vector<Parsed> fields = parse(sequenceOf(content));
    ASSERT_EQ(fields.size(), values.size() + 1);
    EXPECT_EQ(fields[0], (Parsed{"SEQUENCE", content.size(), ""}));
    for (size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(fields[i + 1].name, "INTEGER");
        EXPECT_EQ(fields[i + 1].value, shownInteger(values[i])) << values[i];
    }
}

TEST(WritersAgainstOpenssl, OctetStringsAndNull)
{
    for (const int32_t size : {1, 5, 127, 128, 129, 255, 256, 65535, 65536}) {
        const Bytes data(static_cast<size_t>(size), 'x');
        Bytes content(data.size() + 8);
        unsigned char *cursor = content.data();
        DOV0_FormatBERoctetstringType(&cursor, DOV0_ASN_OCTETSTRING, data.data(), size);
        DOV0_FormatBERnullType(&cursor);
        content.resize(static_cast<size_t>(cursor - content.data()));
        EXPECT_EQ(parse(sequenceOf(content)),
                  (std::vector<Parsed>{{"SEQUENCE", content.size(), ""},
                                       {"OCTET STRING", data.size(), std::string(data.begin(), data.end())},
                                       {"NULL", 0, ""}}));
    }
}

TEST(WritersAgainstOpenssl, ObjectIdentifiers)
{
    std::vector<std::string> texts = {
        "1.3.6.1.4.1.99999.127.128.16383.16384.2097151.2097152.268435455.268435456",
        "1.3.6.1.4.1.99999.2147483647.2147483648.4294967295.34359738367.0", "0.39.1", "2.39.1",
        "1.3.6.1.2.1.1.1.0"};
    std::string longText = "1.3.6.1.4.1.99999";
    for (int i = 0; i < 93; ++i) {
        longText += "." + std::to_string(i);
    }
    texts.push_back(longText);
    for (const std::string &text : texts) {
        unsigned char *field = nullptr;
        int32_t size = 0;
        ASSERT_EQ(DOV0_FormatOIDfromString(text.c_str(), &field, &size), 1);
        const std::vector<Parsed> fields = parse(Bytes(field, field + size));
        DOV0_FreeStorage(&field);
        ASSERT_EQ(fields.size(), 1U);
        EXPECT_EQ(fields[0].name, "OBJECT");
        EXPECT_EQ(fields[0].value, text);
    }
}

TEST(WritersAgainstOpenssl, AWholeMessage)
{
    Bytes content(128);
    unsigned char *cursor = content.data();
    const std::string community = "public";
    DOV0_FormatBERintegerType(&cursor, DOV0_ASN_INTEGER, 1);
    DOV0_FormatBERoctetstringType(&cursor, DOV0_ASN_OCTETSTRING,
                                  reinterpret_cast<const unsigned char *>(community.data()), 6);
    unsigned char *field = nullptr;
    int32_t size = 0;
    ASSERT_EQ(DOV0_FormatOIDfromString("1.3.6.1.2.1.1.3.0", &field, &size), 1);
    cursor = std::copy(field, field + size, cursor);
    DOV0_FreeStorage(&field);
    DOV0_FormatBERnullType(&cursor);
    content.resize(static_cast<size_t>(cursor - content.data()));
    EXPECT_EQ(parse(sequenceOf(content)), (std::vector<Parsed>{{"SEQUENCE", content.size(), ""},
                                                               {"INTEGER", 1, "01"},
                                                               {"OCTET STRING", 6, "public"},
                                                               {"OBJECT", 8, "1.3.6.1.2.1.1.3.0"},
                                                               {"NULL", 0, ""}}));
}
