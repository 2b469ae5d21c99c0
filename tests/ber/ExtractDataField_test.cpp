#include "ber/trace_levels.h"
#include "support/guarded_buffer.h"

#include <random>
#include <set>

namespace {

constexpr char Function[] = "DOV0_ExtractDataField";

using Bytes = std::vector<unsigned char>;

const std::set<int32_t> ShortTypes = {16, 83, 112, 256, 257};
const std::set<int32_t> IntTypes = {17, 64, 128, 288, 352, 368};
const std::set<int32_t> OtherTypes = {0,  18, 82, 48,  32,  33,  34,  35,  36,  40,
                                      41, 80, 96, 144, 272, 304, 320, 336, 384, 400};
const std::string AttributeTypes = std::string("SCGA?#%x ") + '\0';

bool isOneOf(const std::set<int32_t> &types, int32_t type)
{
    return types.find(type) != types.end();
}

bool isKnown(int32_t type)
{
    return type == 81 || isOneOf(ShortTypes, type) || isOneOf(IntTypes, type) || isOneOf(OtherTypes, type);
}

// The size of an integer that is converted, 0 for data that stays as it is.
size_t convertedSize(int32_t type, size_t length, char attrType)
{
    size_t size = 0;
    if (isOneOf(ShortTypes, type) || (type == 81 && attrType == 'S')) {
        size = 2;
    } else if (isOneOf(IntTypes, type)) {
        size = 4;
    } else if (type == 81 && attrType != '\0' && std::string("CGA?#%").find(attrType) != std::string::npos) {
        size = length == 2 || length == 4 ? length : 0;
    }
    return size == length ? size : 0;
}

// The same integer in this host's order.
Bytes hostOrder(Bytes data)
{
    const uint16_t probe = 1;
    unsigned char firstByte = 0;
    std::memcpy(&firstByte, &probe, 1);
    if (firstByte == 1) {
        std::reverse(data.begin(), data.end());
    }
    return data;
}

Bytes fieldOf(uint32_t length, int32_t type, const Bytes &data)
{
    Bytes field;
    for (int shift = 24; shift >= 0; shift -= 8) {
        field.push_back(static_cast<unsigned char>(length >> shift));
    }
    field.push_back(static_cast<unsigned char>(type >> 8));
    field.push_back(static_cast<unsigned char>(type));
    field.insert(field.end(), data.begin(), data.end());
    return field;
}

struct Read {
    unsigned char *cursor;
    unsigned char *data = nullptr;
    int32_t length = -1;
    int32_t type = -1;

    Read(unsigned char *field, const char *attrType) : cursor(field)
    {
        type = DOV0_ExtractDataField(&cursor, &data, &length, attrType);
    }
};

void expectField(GuardedBuffer &buffer, int32_t type, const Bytes &data, const char *attrType)
{
    const Bytes bytes = fieldOf(static_cast<uint32_t>(6 + data.size()), type, data);
    unsigned char *const field = buffer.bytes() + buffer.size() - bytes.size();
    std::copy(bytes.begin(), bytes.end(), field);
    const Read read(field, attrType);
    ASSERT_EQ(read.type, type);
    ASSERT_EQ(read.data, field + 6);
    ASSERT_EQ(read.length, static_cast<int32_t>(data.size()));
    ASSERT_EQ(read.cursor, field + bytes.size());
    const size_t size = convertedSize(type, data.size(), attrType != nullptr ? *attrType : '\0');
    ASSERT_EQ(Bytes(read.data, read.cursor), size != 0 ? hostOrder(data) : data)
        << type << ", " << data.size();
    ASSERT_TRUE(std::equal(bytes.begin(), bytes.begin() + 6, field));
}

} // namespace

TEST(ExtractDataField, ReadsEveryTypeAndLength)
{
    GuardedBuffer buffer(32);
    const Bytes digits = {0x01, 0x82, 0x03, 0x84, 0x05, 0x86, 0x07, 0x88, 0x09};
    for (int32_t type = 0; type < 0x10000; type += type < 500 ? 1 : 37) {
        for (size_t length = 0; length <= digits.size(); ++length) {
            const Bytes data(digits.begin(), digits.begin() + static_cast<ptrdiff_t>(length));
            if (type == 81) {
                for (const char attrType : AttributeTypes) {
                    expectField(buffer, type, data, &attrType);
                }
            }
            expectField(buffer, type, data, nullptr);
        }
    }
    expectField(buffer, 0xFFFF, {1, 2, 3, 4}, "C");
}

TEST(ExtractDataField, ReadsWhatTheWriterWrote)
{
    std::mt19937 random(12);
    for (int i = 0; i < 2000; ++i) {
        const auto number = static_cast<int32_t>(random());
        const auto small = static_cast<int16_t>(random());
        unsigned char record[128] = {};
        unsigned char *end = record + 4;
        end += DOV0_FormatDataField(record, end, DOV0_DATA_INT_17, &number, 0, nullptr);
        end += DOV0_FormatDataField(record, end, DOV0_DATA_TEXT_80, "abc", 0, nullptr);
        end += DOV0_FormatDataField(record, end, DOV0_DATA_SHORT_16, &small, 0, nullptr);
        end += DOV0_FormatDataField(record, end, DOV0_DATA_ATTRIBUTE_81, &number, 4, "G");
        end += DOV0_FormatDataField(record, end, DOV0_DATA_ATTRIBUTE_81, &small, 2, "S");
        end += DOV0_FormatDataField(record, end, DOV0_DATA_LONG_368, &number, 0, nullptr);

        const Read first(record + 4, nullptr);
        const Read text(first.cursor, nullptr);
        const Read second(text.cursor, nullptr);
        const Read gauge(second.cursor, "G");
        const Read attribute(gauge.cursor, "S");
        const Read last(attribute.cursor, nullptr);
        for (const Read *read : {&first, &gauge, &last}) {
            ASSERT_EQ(std::memcmp(read->data, &number, 4), 0);
        }
        for (const Read *read : {&second, &attribute}) {
            ASSERT_EQ(std::memcmp(read->data, &small, 2), 0);
        }
        ASSERT_EQ(std::string(text.data, text.data + text.length), "abc");
        ASSERT_EQ(last.cursor, end);
    }
}

TEST(ExtractDataField, LeavesAFieldOfTypeZeroAlone)
{
    GuardedBuffer buffer(16);
    expectField(buffer, DOV0_DATA_NONE, {1, 2, 3, 4}, nullptr);
    Bytes field = fieldOf(10, DOV0_DATA_NONE, {1, 2, 3, 4});
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [&] { Read read(field.data(), nullptr); }), TraceLog{});
}

TEST(ExtractDataField, TakesALengthBelowTheHeadersAsAnEmptyField)
{
    for (const uint32_t length : {0U, 1U, 5U, 6U, 0x80000000U, 0x80000005U, 0x80000006U, 0xFFFFFFFFU}) {
        for (const int32_t type : {0, 16, 17, 81, 368, 80, 999}) {
            const Bytes bytes = fieldOf(length, type, {});
            GuardedBuffer buffer(bytes.size());
            std::copy(bytes.begin(), bytes.end(), buffer.bytes());
            const Read read(buffer.bytes(), "C");
            EXPECT_EQ(read.type, type);
            EXPECT_EQ(read.data, buffer.bytes() + 6);
            EXPECT_EQ(read.length, 0);
            EXPECT_EQ(read.cursor, buffer.bytes() + 6);
            EXPECT_EQ(Bytes(buffer.bytes(), buffer.bytes() + 6), bytes);
        }
    }
}

TEST(ExtractDataField, DoesNotTouchTheDataOfALengthThatIsNotTheTypes)
{
    for (const uint32_t length : {7U, 9U, 11U, 1000U, 0x7FFFFFFFU}) {
        for (const int32_t type : {16, 17, 81, 368, 80, 18, 999}) {
            const Bytes bytes = fieldOf(length, type, {});
            GuardedBuffer buffer(bytes.size());
            std::copy(bytes.begin(), bytes.end(), buffer.bytes());
            const Read read(buffer.bytes(), "C");
            EXPECT_EQ(read.length, static_cast<int32_t>(length - 6));
            EXPECT_EQ(read.cursor, buffer.bytes() + length);
        }
    }
}

TEST(ExtractDataField, TracesEventsAndTheLongValue)
{
    for (const int32_t value : {5, -5, INT32_MIN}) {
        for (const int32_t type : {16, 17, 48, 80, 81, 0, 368}) {
            const auto bits = static_cast<uint32_t>(value);
            const Bytes original =
                fieldOf(10, type,
                        {static_cast<unsigned char>(bits >> 24), static_cast<unsigned char>(bits >> 16),
                         static_cast<unsigned char>(bits >> 8), static_cast<unsigned char>(bits)});
            expectTrace(
                [&] {
                    Bytes field = original;
                    Read read(field.data(), "C");
                },
                [&](uint32_t) {
                    LeveledTrace trace{{Trace::Flow, entry(Function)}};
                    if (type == 368) {
                        trace.push_back(
                            {Trace::Detail,
                             message(Function, "Copying %d bytes from LongValue <%ld> for DCH_objectPtr\n", 4,
                                     long{value})});
                    }
                    return trace + LeveledTrace{{Trace::Flow, leave(Function, intptr_t{type})}};
                });
        }
    }
}

TEST(ExtractDataField, TracesUnknownTypesAndGoesOn)
{
    for (int32_t type = 0; type < 0x10000; type += type < 500 ? 1 : 997) {
        Bytes field = fieldOf(7, type, {0x55});
        const TraceLog log = traceAt(Trace::Detail, [&] { Read read(field.data(), nullptr); });
        EXPECT_EQ(log, isKnown(type)
                           ? TraceLog{}
                           : TraceLog{message(Function, "Received unsupported DCH data type: %d\n", type)});
    }
    Bytes field = fieldOf(7, 65535, {0x55});
    EXPECT_EQ(bitsThatShow(message(Function, "Received unsupported DCH data type: 65535\n"),
                           [&] { Read read(field.data(), nullptr); }),
              Trace::Detail);
}

TEST(ExtractDataField, RefusesANullPointer)
{
    for (const bool nullCursor : {true, false}) {
        unsigned char *cursor = nullptr;
        unsigned char other = 0;
        unsigned char *data = &other;
        int32_t length = 77;
        expectTrace(
            [&] { EXPECT_EQ(DOV0_ExtractDataField(nullCursor ? nullptr : &cursor, &data, &length, "C"), 0); },
            [&](uint32_t) {
                return LeveledTrace{
                    {Trace::Flow, entry(Function)},
                    {Trace::Error, message(Function, "***Error: received invalid field @%p\n", nullptr)},
                    {Trace::Flow, leave(Function, intptr_t{0})}};
            });
        EXPECT_EQ(data, &other);
        EXPECT_EQ(length, 77);
    }
}

TEST(ExtractDataField, LeavesOutWhatTheCallerDoesNotWant)
{
    Bytes field = fieldOf(8, 16, {0x12, 0x34});
    unsigned char *cursor = field.data();
    EXPECT_EQ(DOV0_ExtractDataField(&cursor, nullptr, nullptr, nullptr), 16);
    EXPECT_EQ(cursor, field.data() + 8);
}
