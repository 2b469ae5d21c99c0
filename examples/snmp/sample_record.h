// Samples of a node's attributes, written as the record of typed data fields that a data collection host takes, and read
// back from it. Each sample is three fields: the name, the time, and the value by the type of its attribute.
#ifndef DOV0610_EXAMPLES_SNMP_SAMPLE_RECORD_H
#define DOV0610_EXAMPLES_SNMP_SAMPLE_RECORD_H

#include "packet.h"

#include <algorithm>

// What is asked for: its name, its object identifier and the type that its value must have.
struct Attribute {
    const char *name;
    const char *identifier;
    uint32_t tag;
};

struct Sample {
    const Attribute *attribute = nullptr;
    std::string name; // the object identifier with its instance, dotted
    std::string time; // a timestamp of the library
    uint32_t number = 0;
    std::string text; // instead of the number for octet strings and object identifiers

    bool operator==(const Sample &) const = default;
};

inline bool isText(const Sample &sample)
{
    return sample.attribute->tag == DOV0_ASN_OCTETSTRING ||
           sample.attribute->tag == DOV0_ASN_OBJECTIDENTIFIER;
}

inline bool isPrintable(const std::string &text)
{
    return std::all_of(text.begin(), text.end(), [](char byte) { return byte >= 0x20 && byte <= 0x7E; });
}

constexpr size_t LongestText = 1024; // a node must not make this process grow without bound

// The sample of a value that was received.
inline Sample sampleOf(const Attribute &attribute, const snmp::Variable &variable)
{
    if (variable.tag != attribute.tag) {
        throw snmp::Refusal(attribute.name + snmp::wrongTag(variable.tag, attribute.tag));
    }
    Sample sample;
    sample.attribute = &attribute;
    sample.name = snmp::dotted(snmp::elementsOf(variable.name));
    char time[DOV0_TIMESTAMP_SIZE];
    sample.time = DOV0_GetCorvelTime(time);
    if (attribute.tag == DOV0_ASN_OBJECTIDENTIFIER) {
        sample.text = snmp::dotted(snmp::elementsOf(variable.value));
    } else if (attribute.tag != DOV0_ASN_OCTETSTRING) {
        sample.number = snmp::numberOf(variable);
    } else if (variable.value.size() <= LongestText) {
        sample.text.assign(variable.value.begin(), variable.value.end());
    } else {
        throw snmp::Refusal(std::string(attribute.name) + " has " + std::to_string(variable.value.size()) +
                            " bytes");
    }
    return sample;
}

// The value for a person. Control characters must not reach the terminal.
inline std::string shownValue(const Sample &sample)
{
    if (sample.attribute->tag == DOV0_ASN_INTEGER) {
        return std::to_string(static_cast<int32_t>(sample.number));
    }
    if (!isText(sample)) {
        return std::to_string(sample.number);
    }
    if (sample.attribute->tag == DOV0_ASN_OBJECTIDENTIFIER) {
        return sample.text;
    }
    if (isPrintable(sample.text)) {
        return '"' + sample.text + '"';
    }
    std::string value = "0x";
    for (const char character : sample.text) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02X", static_cast<unsigned int>(character & 0xFF));
        value += pair;
    }
    return value;
}

// How a value travels.
struct FieldType {
    int32_t type;
    char attributeType;
};

inline FieldType fieldTypeOf(const Sample &sample)
{
    switch (sample.attribute->tag) {
    case snmp::Counter32:
        return {DOV0_DATA_ATTRIBUTE_81, DOV0_ATTRIBUTE_COUNTER};
    case snmp::Gauge32:
        return {DOV0_DATA_ATTRIBUTE_81, DOV0_ATTRIBUTE_GAUGE};
    case snmp::TimeTicks:
        return {DOV0_DATA_LONG_368, ' '};
    case DOV0_ASN_INTEGER:
        return {DOV0_DATA_INT_17, ' '};
    default: // a text field ends at a zero byte, which an octet string may contain
        return {isPrintable(sample.text) ? DOV0_DATA_TEXT_80 : DOV0_DATA_RAW_82, ' '};
    }
}

constexpr size_t TotalSize = 4;       // of the word before the fields
constexpr size_t FieldHeaderSize = 6; // of each field, before its data

// The record, with zeros behind it to a multiple of four bytes, which is what the checksum covers.
inline snmp::Bytes recordOf(const std::vector<Sample> &samples)
{
    size_t size = TotalSize;
    for (const Sample &sample : samples) {
        size += 3 * FieldHeaderSize + sample.name.size() + sample.time.size() +
                std::max(sample.text.size(), sizeof sample.number);
    }
    snmp::Bytes record(size + 3);
    unsigned char *next = record.data() + TotalSize;
    for (const Sample &sample : samples) {
        const FieldType type = fieldTypeOf(sample);
        const void *const value =
            isText(sample) ? static_cast<const void *>(sample.text.c_str()) : &sample.number;
        const size_t valueSize = isText(sample) ? sample.text.size() : sizeof sample.number;
        next += DOV0_FormatDataField(record.data(), next, DOV0_DATA_TEXT_80, sample.name.c_str(), 0, nullptr);
        next += DOV0_FormatDataField(record.data(), next, DOV0_DATA_TEXT_32, sample.time.c_str(), 0, nullptr);
        next += DOV0_FormatDataField(record.data(), next, type.type, value, static_cast<int32_t>(valueSize),
                                     &type.attributeType);
    }
    record.resize((static_cast<size_t>(next - record.data()) + 3) / 4 * 4);
    return record;
}

inline int32_t checkSumOf(const snmp::Bytes &record)
{
    return DOV0_ComputeCheckSum(record.data(), static_cast<int32_t>(record.size()), 1);
}

// Reads the fields of a record, which it converts to host order in place. Like the BER readers, the reader of fields does
// not know where its buffer ends.
class RecordReader {
public:
    explicit RecordReader(snmp::Bytes &record) : next(record.data()), end(next)
    {
        const size_t total = record.size() >= TotalSize ? lengthAt(next) : 0;
        if (total >= TotalSize && total <= record.size()) {
            end = next + total;
            next += TotalSize;
        }
    }

    // Whether a field of this type follows, whose data is then stored.
    bool take(FieldType wanted, std::string &data)
    {
        const auto left = static_cast<size_t>(end - next);
        if (left < FieldHeaderSize || lengthAt(next) < FieldHeaderSize || lengthAt(next) > left) {
            return false;
        }
        unsigned char *start = nullptr;
        int32_t length = 0;
        const int32_t type = DOV0_ExtractDataField(&next, &start, &length, &wanted.attributeType);
        data.assign(start, start + length);
        return type == wanted.type;
    }

    bool atEnd() const { return next == end; }

private:
    static size_t lengthAt(const unsigned char *word)
    {
        return size_t{word[0]} << 24 | size_t{word[1]} << 16 | size_t{word[2]} << 8 | word[3];
    }

    unsigned char *next;
    unsigned char *end;
};

// What the receiver of a record does: whether it is undamaged, and holds just these samples.
inline bool holds(snmp::Bytes record, int32_t checkSum, const std::vector<Sample> &samples)
{
    if (checkSumOf(record) != checkSum) {
        return false;
    }
    RecordReader reader(record);
    for (const Sample &sample : samples) {
        Sample read;
        read.attribute = sample.attribute;
        std::string value;
        if (!reader.take({DOV0_DATA_TEXT_80, ' '}, read.name) ||
            !reader.take({DOV0_DATA_TEXT_32, ' '}, read.time) || !reader.take(fieldTypeOf(sample), value)) {
            return false;
        }
        if (isText(sample)) {
            read.text = value;
        } else if (value.size() == sizeof read.number) {
            value.copy(reinterpret_cast<char *>(&read.number), sizeof read.number);
        }
        if (!(read == sample)) {
            return false;
        }
    }
    return reader.atEnd();
}

#endif
