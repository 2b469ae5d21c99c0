#include "ber/trace_levels.h"
#include "support/guarded_buffer.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_FormatBERintegerType";
constexpr char LengthField[] = "DOV0_FormatBERlengthField";

using Bytes = std::vector<unsigned char>;

// As many of the lowest bytes as the magnitude needs, where the magnitude of the lowest integer is below zero.
Bytes fieldOf(unsigned char tag, int32_t value)
{
    int64_t magnitude = value;
    if (magnitude < 0) {
        magnitude = -magnitude;
    }
    if (magnitude == int64_t{1} << 31) {
        magnitude = -magnitude;
    }
    size_t size = 4;
    if (magnitude < 1 << 7) {
        size = 1;
    } else if (magnitude < 1 << 15) {
        size = 2;
    } else if (magnitude < 1 << 23) {
        size = 3;
    }
    Bytes field{tag, static_cast<unsigned char>(size)};
    for (size_t i = size; i > 0; --i) {
        const int64_t weight = int64_t{1} << (8 * (i - 1));
        int64_t digit = (value - ((value % weight) + weight) % weight) / weight % 256; // rounded down
        field.push_back(static_cast<unsigned char>(digit < 0 ? digit + 256 : digit));
    }
    return field;
}

void expectField(GuardedBuffer &buffer, unsigned char tag, int32_t value)
{
    const Bytes expected = fieldOf(tag, value);
    std::memset(buffer.bytes(), 0, buffer.size());
    unsigned char *const start = buffer.bytes() + buffer.size() - expected.size();
    unsigned char *cursor = start;
    ASSERT_EQ(DOV0_FormatBERintegerType(&cursor, tag, value), static_cast<int32_t>(expected.size())) << value;
    ASSERT_EQ(cursor, start + expected.size()) << value;
    ASSERT_EQ(Bytes(start, cursor), expected) << value;
}

} // namespace

TEST(FormatBERintegerType, WritesTheFormsOfTheManual)
{
    struct {
        int32_t value;
        Bytes field;
    } const cases[] = {
        {0, {0x02, 0x01, 0x00}},
        {127, {0x02, 0x01, 0x7F}},
        {128, {0x02, 0x02, 0x00, 0x80}},
        {-1, {0x02, 0x01, 0xFF}},
        {-127, {0x02, 0x01, 0x81}},
        {-128, {0x02, 0x02, 0xFF, 0x80}},
        {0x7FFF, {0x02, 0x02, 0x7F, 0xFF}},
        {0x8000, {0x02, 0x03, 0x00, 0x80, 0x00}},
        {-0x8000, {0x02, 0x03, 0xFF, 0x80, 0x00}},
        {0x7FFFFF, {0x02, 0x03, 0x7F, 0xFF, 0xFF}},
        {0x800000, {0x02, 0x04, 0x00, 0x80, 0x00, 0x00}},
        {-0x800000, {0x02, 0x04, 0xFF, 0x80, 0x00, 0x00}},
        {INT32_MAX, {0x02, 0x04, 0x7F, 0xFF, 0xFF, 0xFF}},
        {-INT32_MAX, {0x02, 0x04, 0x80, 0x00, 0x00, 0x01}},
        {INT32_MIN, {0x02, 0x01, 0x00}},
    };
    for (const auto &each : cases) {
        unsigned char buffer[8] = {};
        unsigned char *cursor = buffer;
        EXPECT_EQ(DOV0_FormatBERintegerType(&cursor, DOV0_ASN_INTEGER, each.value),
                  static_cast<int32_t>(each.field.size()));
        EXPECT_EQ(Bytes(buffer, cursor), each.field) << each.value;
        EXPECT_EQ(fieldOf(DOV0_ASN_INTEGER, each.value), each.field) << "model, " << each.value;
    }
}

TEST(FormatBERintegerType, AgreesWithTheModel)
{
    GuardedBuffer buffer(8);
    for (int32_t value = -70000; value <= 70000; ++value) {
        expectField(buffer, DOV0_ASN_INTEGER, value);
    }
    for (int power = 0; power < 32; ++power) {
        for (int64_t near = -2; near <= 2; ++near) {
            expectField(buffer, 0x41, static_cast<int32_t>((int64_t{1} << power) + near));
            expectField(buffer, 0x43, static_cast<int32_t>(-(int64_t{1} << power) + near));
        }
    }
    std::mt19937 random(2);
    for (int i = 0; i < 200000; ++i) {
        const auto bits = static_cast<int32_t>(random());
        expectField(buffer, static_cast<unsigned char>(random()), bits >> (random() % 32));
    }
}

TEST(FormatBERintegerType, CombinesTheTagWithWhatIsThere)
{
    for (int there = 0; there < 256; ++there) {
        unsigned char buffer[3] = {static_cast<unsigned char>(there), 0xFF, 0xFF};
        unsigned char *cursor = buffer;
        EXPECT_EQ(DOV0_FormatBERintegerType(&cursor, 0x42, 5), 3);
        EXPECT_EQ(Bytes(buffer, buffer + 3), (Bytes{static_cast<unsigned char>(there | 0x42), 1, 5}));
    }
}

TEST(FormatBERintegerType, TracesTheLengthWriterAndADumpOfTheField)
{
    for (const int32_t value : {5, 300, -100000, INT32_MAX, INT32_MIN}) {
        const Bytes field = fieldOf(DOV0_ASN_INTEGER, value);
        unsigned char buffer[8];
        expectTrace(
            [&] {
                unsigned char *cursor = buffer;
                buffer[0] = 0;
                DOV0_FormatBERintegerType(&cursor, DOV0_ASN_INTEGER, value);
            },
            [&](uint32_t) {
                return LeveledTrace{
                    {Trace::Flow, entry(Function)},
                    {Trace::Flow, entry(LengthField)},
                    {Trace::Detail, message(LengthField, "Input buffer pointer @%p size %d\n",
                                            static_cast<void *>(buffer + 1), field[1])},
                    {Trace::Flow, leave(LengthField, intptr_t{1})},
                    {Trace::Detail, dump(Function, field.data(), static_cast<int32_t>(field.size()))},
                    {Trace::Flow, leave(Function, static_cast<intptr_t>(field.size()))},
                };
            });
    }
}

TEST(FormatBERintegerType, RefusesANullPointer)
{
    for (const bool nullCursor : {true, false}) {
        unsigned char *cursor = nullptr;
        int32_t result = -1;
        expectTrace(
            [&] { result = DOV0_FormatBERintegerType(nullCursor ? nullptr : &cursor, DOV0_ASN_INTEGER, 7); },
            [&](uint32_t) {
                EXPECT_EQ(result, 0);
                return LeveledTrace{
                    {Trace::Flow, entry(Function)},
                    {Trace::Error, message(Function, "*****Input parameter invalid @%p\n", nullptr)},
                    {Trace::Flow, leave(Function, intptr_t{0})},
                };
            });
        EXPECT_EQ(cursor, nullptr);
    }
}
