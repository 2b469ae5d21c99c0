#include "ber/trace_levels.h"
#include "support/guarded_buffer.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_ExtractBERinteger";

using Bytes = std::vector<unsigned char>;

// The unsigned reading of up to four bytes, as the 32 bits that it is.
int32_t valueOf(const Bytes &digits)
{
    uint64_t value = 0;
    for (const unsigned char digit : digits) {
        value = value * 256 + digit;
    }
    return value < uint64_t{1} << 31 ? static_cast<int32_t>(value)
                                     : static_cast<int32_t>(static_cast<int64_t>(value) - (int64_t{1} << 32));
}

// Reads a field right before a guard page.
void expectValue(GuardedBuffer &buffer, const Bytes &digits)
{
    unsigned char *const start = buffer.bytes() + buffer.size() - 2 - digits.size();
    start[0] = DOV0_ASN_INTEGER;
    start[1] = static_cast<unsigned char>(digits.size());
    std::copy(digits.begin(), digits.end(), start + 2);
    unsigned char *cursor = start;
    int32_t value = 12345678;
    ASSERT_EQ(DOV0_ExtractBERinteger(&cursor, &value), 1);
    ASSERT_EQ(value, valueOf(digits));
    ASSERT_EQ(cursor, start + 2 + digits.size());
}

} // namespace

TEST(ExtractBERinteger, ReadsTheFormsOfTheManual)
{
    struct {
        Bytes field;
        int32_t value;
    } const cases[] = {
        {{0x02, 0x01, 0x00}, 0},
        {{0x02, 0x01, 0x7F}, 127},
        {{0x02, 0x01, 0xFF}, 255},
        {{0x02, 0x02, 0xFF, 0x80}, 65408},
        {{0x02, 0x03, 0xFF, 0xFF, 0xFF}, 0xFFFFFF},
        {{0x02, 0x04, 0x80, 0x00, 0x00, 0x00}, INT32_MIN},
        {{0x02, 0x04, 0xFF, 0xFF, 0xFF, 0xFF}, -1},
        {{0x02, 0x04, 0x7F, 0xFF, 0xFF, 0xFF}, INT32_MAX},
        {{0x02, 0x81, 0x01, 0x2A}, 42},
        {{0x02, 0x00}, 0},
        {{0x02, 0x80}, 0},
    };
    for (const auto &each : cases) {
        Bytes field = each.field;
        unsigned char *cursor = field.data();
        int32_t value = 12345678;
        EXPECT_EQ(DOV0_ExtractBERinteger(&cursor, &value), 1);
        EXPECT_EQ(value, each.value);
        EXPECT_EQ(cursor, field.data() + field.size());
    }
}

TEST(ExtractBERinteger, AgreesWithTheModel)
{
    GuardedBuffer buffer(8);
    expectValue(buffer, {});
    for (uint32_t value = 0; value < 0x10000; ++value) {
        const auto high = static_cast<unsigned char>(value >> 8);
        const auto low = static_cast<unsigned char>(value);
        if (high == 0) {
            expectValue(buffer, {low});
        }
        expectValue(buffer, {high, low});
    }
    std::mt19937 random(6);
    for (int i = 0; i < 100000; ++i) {
        Bytes digits(3 + random() % 2);
        for (unsigned char &digit : digits) {
            digit = static_cast<unsigned char>(random());
        }
        expectValue(buffer, digits);
    }
}

TEST(ExtractBERinteger, ReadsWhatTheWriterWroteOfValuesFromZero)
{
    for (int power = 0; power < 31; ++power) {
        for (const int32_t value : {(int32_t{1} << power) - 1, int32_t{1} << power}) {
            unsigned char buffer[8] = {};
            unsigned char *end = buffer;
            DOV0_FormatBERintegerType(&end, DOV0_ASN_INTEGER, value);
            unsigned char *cursor = buffer;
            int32_t read = -1;
            EXPECT_EQ(DOV0_ExtractBERinteger(&cursor, &read), 1);
            EXPECT_EQ(read, value);
            EXPECT_EQ(cursor, end);
        }
    }
}

TEST(ExtractBERinteger, RefusesEveryOtherTagAndGoesBack)
{
    for (int tag = 0; tag < 256; ++tag) {
        if (tag == DOV0_ASN_INTEGER) {
            continue;
        }
        unsigned char field[] = {static_cast<unsigned char>(tag), 0x01, 0x05};
        unsigned char *cursor = field;
        int32_t value = 77;
        int32_t result = -1;
        const TraceLog log = traceOf(Function, Trace::All & ~Trace::Flow,
                                     [&] { result = DOV0_ExtractBERinteger(&cursor, &value); });
        EXPECT_EQ(result, 0);
        EXPECT_EQ(value, 77);
        EXPECT_EQ(cursor, field);
        EXPECT_EQ(log,
                  (TraceLog{message(Function, "*****current BER field %x in buffer is not integer type\n",
                                    static_cast<unsigned int>(tag))}));
    }
}

TEST(ExtractBERinteger, RefusesLongIntegersAndStaysBehindThem)
{
    for (unsigned char length = 5; length < 128; ++length) {
        GuardedBuffer field(2);
        field.bytes()[0] = DOV0_ASN_INTEGER;
        field.bytes()[1] = length;
        unsigned char *cursor = field.bytes();
        int32_t value = 77;
        int32_t result = -1;
        const TraceLog log = traceOf(Function, Trace::All & ~Trace::Flow,
                                     [&] { result = DOV0_ExtractBERinteger(&cursor, &value); });
        EXPECT_EQ(result, 0);
        EXPECT_EQ(value, 77);
        EXPECT_EQ(cursor, field.bytes() + 2 + length);
        EXPECT_EQ(log,
                  (TraceLog{message(Function, "*****unsupported BER integer size %d too large\n", length)}));
    }
}

TEST(ExtractBERinteger, TakesAnUnsupportedLengthFieldAsTheReaderDoes)
{
    unsigned char field[] = {DOV0_ASN_INTEGER, 0x85, 1, 2, 3, 4, 5};
    unsigned char *cursor = field;
    int32_t value = 77;
    EXPECT_EQ(DOV0_ExtractBERinteger(&cursor, &value), 1);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(cursor, field + sizeof field);
}

TEST(ExtractBERinteger, TracesTheReaderAndTheValue)
{
    unsigned char field[] = {DOV0_ASN_INTEGER, 0x02, 0xFF, 0x80};
    const auto read = [&] {
        unsigned char *cursor = field;
        int32_t value = 0;
        DOV0_ExtractBERinteger(&cursor, &value);
    };
    expectTrace(read, [&](uint32_t level) {
        const LeveledTrace reader{
            {Trace::Flow, entry(Function)},
            {Trace::Flow, entry("DOV0_ExtractBERfield")},
            {Trace::Detail, message("DOV0_ExtractBERfield", "Assigned i = 1\n")},
            {Trace::Detail,
             message("DOV0_ExtractBERfield", "Copying ASNfieldPtr @%p to WorkSize @0x0 + 3 for length 1\n",
                     static_cast<void *>(field + 1))}};
        const LeveledTrace rendering =
            storageTaken(5) +
            LeveledTrace{
                {Trace::Detail, message("DOV0_ExtractBERfield", "ASN1 type 02, Length 2, value <FF80>\n")}} +
            storageGiven();
        const LeveledTrace rest{{Trace::Flow, leave("DOV0_ExtractBERfield", intptr_t{2})},
                                {Trace::Detail, message(Function, "Extracted BER integer value is 65408\n")},
                                {Trace::Flow, leave(Function, intptr_t{1})}};
        return (level & Trace::Detail) != 0 ? reader + rendering + rest : reader + rest;
    });
}

TEST(ExtractBERinteger, ReportsItsFailuresUnderTheErrorBit)
{
    unsigned char text[] = {DOV0_ASN_OCTETSTRING, 0x01, 'x'};
    unsigned char number[] = {DOV0_ASN_INTEGER, 0x05, 1, 2, 3, 4, 5};
    const auto readFrom = [](unsigned char *field) {
        int32_t value = 0;
        DOV0_ExtractBERinteger(&field, &value);
    };
    EXPECT_EQ(bitsThatShow(message(Function, "*****current BER field 4 in buffer is not integer type\n"),
                           [&] { readFrom(text); }),
              Trace::Error);
    EXPECT_EQ(bitsThatShow(message(Function, "*****unsupported BER integer size 5 too large\n"),
                           [&] { readFrom(number); }),
              Trace::Error);
    EXPECT_EQ(bitsThatShow(leave(Function, intptr_t{0}), [&] { readFrom(number); }), Trace::Flow);
}

TEST(ExtractBERinteger, RefusesANullPointer)
{
    for (const bool nullCursor : {true, false}) {
        unsigned char *cursor = nullptr;
        int32_t value = 77;
        int32_t result = -1;
        void *const shownCursor = nullCursor ? nullptr : &cursor;
        expectTrace(
            [&] { result = DOV0_ExtractBERinteger(nullCursor ? nullptr : &cursor, &value); },
            [&](uint32_t) {
                EXPECT_EQ(result, 0);
                return LeveledTrace{
                    {Trace::Flow, entry(Function)},
                    {Trace::Flow, entry("DOV0_ExtractBERfield")},
                    {Trace::Error,
                     message("DOV0_ExtractBERfield",
                             "*****Input BER data buffer pointer invalid, DataBuffer @%p ASNfieldPtr @%p\n",
                             shownCursor, nullptr)},
                    {Trace::Flow, leave("DOV0_ExtractBERfield", intptr_t{0})},
                    {Trace::Error,
                     message(Function, "*****current BER field 0 in buffer is not integer type\n")},
                    {Trace::Flow, leave(Function, intptr_t{0})},
                };
            });
        EXPECT_EQ(value, 77);
        EXPECT_EQ(cursor, nullptr);
    }
}

TEST(ExtractBERinteger, LeavesOutAValueThatTheCallerDoesNotWant)
{
    unsigned char field[] = {DOV0_ASN_INTEGER, 0x01, 0x05};
    unsigned char *cursor = field;
    EXPECT_EQ(DOV0_ExtractBERinteger(&cursor, nullptr), 1);
    EXPECT_EQ(cursor, field + 3);
}
