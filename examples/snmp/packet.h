// SNMP packets of version 2c: requests put together with the library's BER writers, answers taken apart with its
// readers. Nothing that came from the network is used before it has been checked.
#ifndef DOV0610_EXAMPLES_SNMP_PACKET_H
#define DOV0610_EXAMPLES_SNMP_PACKET_H

#include "../ber_flaw.h"
#include "dov0610.h"

#include <cstdio>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

namespace snmp {

using Bytes = std::vector<unsigned char>;

// The tags of SNMP that BER itself does not have.
constexpr unsigned char Counter32 = 0x41;
constexpr unsigned char Gauge32 = 0x42;
constexpr unsigned char TimeTicks = 0x43;
constexpr unsigned char NoSuchObject = 0x80;
constexpr unsigned char NoSuchInstance = 0x81;
constexpr unsigned char EndOfMibView = 0x82;
constexpr unsigned char GetRequest = 0xA0;
constexpr unsigned char GetNextRequest = 0xA1;
constexpr unsigned char Response = 0xA2;

constexpr int32_t Version2c = 1;

// Why an answer is not used.
class Refusal : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Variable {
    Bytes name; // the content of an object identifier
    uint32_t tag = 0;
    Bytes value;
};

struct Answer {
    std::string community;
    int32_t requestId = 0;
    int32_t errorStatus = 0;
    int32_t errorIndex = 0;
    std::vector<Variable> variables;
};

// --- Writing -----------------------------------------------------------------------------------------------------

// One field. The octet string writer takes any tag, so that it also puts a sequence around what is in it.
inline Bytes field(unsigned char tag, const Bytes &content)
{
    Bytes bytes(content.size() + 6); // at most a tag and five length bytes before the content
    unsigned char *end = bytes.data();
    if (content.empty()) {
        *end++ = tag; // which the writer refuses
        *end++ = 0;
    } else {
        DOV0_FormatBERoctetstringType(&end, tag, content.data(), static_cast<int32_t>(content.size()));
    }
    bytes.resize(static_cast<size_t>(end - bytes.data()));
    return bytes;
}

inline Bytes integer(int32_t value)
{
    Bytes bytes(6); // zeroed: the writer combines the tag with what is there
    unsigned char *end = bytes.data();
    DOV0_FormatBERintegerType(&end, DOV0_ASN_INTEGER, value);
    bytes.resize(static_cast<size_t>(end - bytes.data()));
    return bytes;
}

inline Bytes null()
{
    Bytes bytes(2);
    unsigned char *end = bytes.data();
    DOV0_FormatBERnullType(&end);
    return bytes;
}

inline Bytes joined(std::initializer_list<Bytes> parts)
{
    Bytes whole;
    for (const Bytes &part : parts) {
        whole.insert(whole.end(), part.begin(), part.end());
    }
    return whole;
}

// The name of a variable, from its dotted form.
inline Bytes nameOf(const std::string &dotted)
{
    unsigned char *block = nullptr;
    int32_t size = 0;
    if (DOV0_FormatOIDfromString(dotted.c_str(), &block, &size) == 0) {
        throw std::invalid_argument(dotted + " is no object identifier");
    }
    unsigned char *next = block;
    unsigned char *content = nullptr;
    uint32_t length = 0;
    DOV0_ExtractBERfield(&next, &length, &content);
    Bytes name(content, content + length);
    DOV0_FreeStorage(&block);
    return name;
}

inline Bytes request(unsigned char type, const std::string &community, int32_t id,
                     const std::vector<Bytes> &names)
{
    Bytes variables;
    for (const Bytes &name : names) {
        const Bytes pair = joined({field(DOV0_ASN_OBJECTIDENTIFIER, name), null()});
        variables = joined({variables, field(DOV0_ASN_SEQUENCE, pair)});
    }
    const Bytes noError = joined({integer(0), integer(0)});
    const Bytes body = joined({integer(id), noError, field(DOV0_ASN_SEQUENCE, variables)});
    const Bytes name = field(DOV0_ASN_OCTETSTRING, {community.begin(), community.end()});
    return field(DOV0_ASN_SEQUENCE, joined({integer(Version2c), name, field(type, body)}));
}

// --- Reading -----------------------------------------------------------------------------------------------------

inline std::string wrongTag(uint32_t tag, uint32_t wanted)
{
    char text[64];
    std::snprintf(text, sizeof text, " has the tag 0x%02X instead of 0x%02X", tag, wanted);
    return text;
}

// Takes the fields between two places of a packet one by one.
class Fields {
public:
    explicit Fields(Bytes &packet) : start(packet.data()), next(start), end(start + packet.size()) {}

    bool atEnd() const { return next == end; }

    struct Field {
        uint32_t tag;
        unsigned char *value;
        uint32_t length;
    };

    Field take(const char *what)
    {
        const char *flaw = atEnd() ? "is missing" : flawOf(next, end);
        if (flaw != nullptr) {
            throw Refusal(std::string(what) + " at byte " + std::to_string(next - start) + " " + flaw);
        }
        Field field = {};
        field.tag = DOV0_ExtractBERfield(&next, &field.length, &field.value);
        return field;
    }

    Field take(const char *what, uint32_t tag)
    {
        const Field field = take(what);
        if (field.tag != tag) {
            throw Refusal(std::string(what) + wrongTag(field.tag, tag));
        }
        return field;
    }

    // What is in a field of fields.
    Fields enter(const char *what, uint32_t tag)
    {
        const Field field = take(what, tag);
        return field.length > 0 ? Fields(start, field.value, next) : Fields(start, next, next);
    }

    int32_t takeInteger(const char *what)
    {
        unsigned char *const field = next;
        const uint32_t length = take(what, DOV0_ASN_INTEGER).length;
        next = field;
        int32_t value = 0;
        if (length == 0 || DOV0_ExtractBERinteger(&next, &value) == 0) {
            throw Refusal(std::string(what) + " is an integer of " + std::to_string(length) + " bytes");
        }
        return value;
    }

    void expectEnd(const char *what) const
    {
        if (!atEnd()) {
            throw Refusal(std::string(what) + " is followed by " + std::to_string(end - next) +
                          " more bytes");
        }
    }

private:
    Fields(unsigned char *packet, unsigned char *first, unsigned char *last)
        : start(packet), next(first), end(last)
    {
    }

    unsigned char *start;
    unsigned char *next;
    unsigned char *end;
};

inline Bytes bytesOf(const Fields::Field &field)
{
    return field.length > 0 ? Bytes(field.value, field.value + field.length) : Bytes();
}

inline Answer answerIn(Bytes &packet)
{
    Fields datagram(packet);
    Fields message = datagram.enter("the message", DOV0_ASN_SEQUENCE);
    datagram.expectEnd("the message");
    if (message.takeInteger("the version") != Version2c) {
        throw Refusal("it is of another version than 2c");
    }
    Answer answer;
    const Bytes community = bytesOf(message.take("the community", DOV0_ASN_OCTETSTRING));
    answer.community.assign(community.begin(), community.end());
    Fields response = message.enter("the response", Response);
    message.expectEnd("the response");

    answer.requestId = response.takeInteger("the request id");
    answer.errorStatus = response.takeInteger("the error status");
    answer.errorIndex = response.takeInteger("the error index");
    Fields list = response.enter("the list of variables", DOV0_ASN_SEQUENCE);
    response.expectEnd("the list of variables");
    while (!list.atEnd()) {
        Fields pair = list.enter("a variable", DOV0_ASN_SEQUENCE);
        Variable variable;
        variable.name = bytesOf(pair.take("a name", DOV0_ASN_OBJECTIDENTIFIER));
        const Fields::Field value = pair.take("a value");
        variable.tag = value.tag;
        variable.value = bytesOf(value);
        pair.expectEnd("a value");
        answer.variables.push_back(variable);
    }
    return answer;
}

// The value of an integer of any tag, a negative one by its bits. The library's reader takes the tag INTEGER only, at
// most four bytes, where an unsigned number can have five, and short ones without their sign.
inline uint32_t numberOf(const Variable &variable)
{
    const Bytes &value = variable.value;
    const bool isSigned = variable.tag == DOV0_ASN_INTEGER;
    const size_t largest = !isSigned && value.size() == 5 && value[0] == 0 ? 5 : 4;
    if (value.empty() || value.size() > largest) {
        throw Refusal("a value is a number of " + std::to_string(value.size()) + " bytes");
    }
    uint32_t number = isSigned && value[0] >= 0x80 ? UINT32_MAX : 0;
    for (const unsigned char byte : value) {
        number = number << 8 | byte;
    }
    return number;
}

// The elements of a name, to be compared in the order of names.
inline std::vector<uint32_t> elementsOf(const Bytes &name)
{
    if (name.size() > DOV0_OID_LARGEST_CONTENT) {
        throw Refusal("a name has " + std::to_string(name.size()) + " bytes");
    }
    int32_t count = 0;
    uint32_t *array = DOV0_DecodeOIDfromBER(name.data(), static_cast<int32_t>(name.size()), &count);
    std::vector<uint32_t> elements(array, array + count);
    DOV0_FreeStorage(&array);
    if (elements.empty()) {
        throw Refusal("a name cannot be decoded");
    }
    return elements;
}

// Unlike DOV0_ConvertOIDtoString(), which takes elements of 2^31 and more for negative numbers.
inline std::string dotted(const std::vector<uint32_t> &elements)
{
    std::string text;
    for (const uint32_t element : elements) {
        text += (text.empty() ? "" : ".") + std::to_string(element);
    }
    return text;
}

} // namespace snmp

#endif
