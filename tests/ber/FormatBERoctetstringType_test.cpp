#include "ber/trace_levels.h"
#include "support/guarded_buffer.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_FormatBERoctetstringType";
constexpr char LengthField[] = "DOV0_FormatBERlengthField";
constexpr char PointerCheck[] = "DOV0_IsValidPointer";
constexpr char BlockCheck[] = "DOV0_IsValidBlockPointer";

using Bytes = std::vector<unsigned char>;

Bytes fieldOf(unsigned char tag, const Bytes &data)
{
    Bytes field{tag};
    const size_t size = data.size();
    const size_t count = size < 128 ? 1 : size < 65536 ? 2 : size < 16777216 ? 3 : 4;
    if (size >= 128) {
        field.push_back(static_cast<unsigned char>(0x80 + count));
    }
    for (size_t i = count; i > 0; --i) {
        field.push_back(static_cast<unsigned char>(size >> (8 * (i - 1))));
    }
    field.insert(field.end(), data.begin(), data.end());
    return field;
}

Bytes randomBytes(size_t size)
{
    static std::mt19937 random(3);
    Bytes bytes(size);
    for (unsigned char &byte : bytes) {
        byte = static_cast<unsigned char>(random());
    }
    return bytes;
}

} // namespace

TEST(FormatBERoctetstringType, WritesTagLengthAndBytes)
{
    std::vector<size_t> sizes;
    for (size_t size = 1; size <= 600; ++size) {
        sizes.push_back(size);
    }
    sizes.insert(sizes.end(), {0xFFFE, 0xFFFF, 0x10000, 0x10001, 0xFFFFFF, 0x1000000});
    for (const size_t size : sizes) {
        const Bytes data = randomBytes(size);
        const auto tag = static_cast<unsigned char>(size);
        const Bytes expected = fieldOf(tag, data);
        GuardedBuffer buffer(expected.size(), 0xFF); // the tag is assigned, not combined
        GuardedBuffer source(size);
        std::memcpy(source.bytes(), data.data(), size);
        unsigned char *cursor = buffer.bytes();
        ASSERT_EQ(DOV0_FormatBERoctetstringType(&cursor, tag, source.bytes(), static_cast<int32_t>(size)),
                  static_cast<int32_t>(expected.size()));
        ASSERT_EQ(cursor, buffer.bytes() + expected.size());
        ASSERT_TRUE(Bytes(buffer.bytes(), cursor) == expected) << size;
    }
}

TEST(FormatBERoctetstringType, TakesDataThatLiesInTheBuffer)
{
    unsigned char buffer[] = {0, 0, 'a', 'b', 'c', 'd', 'e'};
    unsigned char *cursor = buffer;
    EXPECT_EQ(DOV0_FormatBERoctetstringType(&cursor, DOV0_ASN_OCTETSTRING, buffer + 3, 4), 6);
    EXPECT_EQ(Bytes(buffer, cursor), (Bytes{0x04, 4, 'b', 'c', 'd', 'e'}));
}

TEST(FormatBERoctetstringType, TracesTheChecksTheLengthWriterAndADump)
{
    for (const size_t size : {size_t{1}, size_t{200}, size_t{1000}}) {
        const Bytes data = randomBytes(size);
        const Bytes field = fieldOf(DOV0_ASN_OCTETSTRING, data);
        Bytes buffer(field.size());
        expectTrace(
            [&] {
                unsigned char *cursor = buffer.data();
                DOV0_FormatBERoctetstringType(&cursor, DOV0_ASN_OCTETSTRING, data.data(),
                                              static_cast<int32_t>(size));
            },
            [&](uint32_t) {
                const void *start = buffer.data();
                return LeveledTrace{
                    {Trace::Flow, entry(Function)},
                    {Trace::State, message(PointerCheck, "Input pointer @%p is valid\n", start)},
                    {Trace::State, message(BlockCheck, "Input block pointer @%p is valid\n", start)},
                    {Trace::Flow, entry(LengthField)},
                    {Trace::Detail,
                     message(LengthField, "Input buffer pointer @%p size %d\n",
                             static_cast<const void *>(buffer.data() + 1), static_cast<int>(size))},
                    {Trace::Flow, leave(LengthField, intptr_t{1})},
                    {Trace::Detail, dump(Function, field.data(), static_cast<int32_t>(field.size()))},
                    {Trace::Flow, leave(Function, static_cast<intptr_t>(field.size()))},
                };
            });
    }
}

TEST(FormatBERoctetstringType, RefusesLengthsOutOfRange)
{
    for (const int32_t length : {0, -1, -128, INT32_MIN, INT32_MAX, INT32_MAX - 5}) {
        unsigned char buffer[4] = {1, 2, 3, 4};
        const unsigned char data[4] = {5, 6, 7, 8};
        unsigned char *cursor = buffer;
        int32_t result = -1;
        expectTrace(
            [&] { result = DOV0_FormatBERoctetstringType(&cursor, DOV0_ASN_OCTETSTRING, data, length); },
            [&](uint32_t) {
                EXPECT_EQ(result, 0);
                const void *start = buffer;
                LeveledTrace expected{
                    {Trace::Flow, entry(Function)},
                    {Trace::State, message(PointerCheck, "Input pointer @%p is valid\n", start)}};
                if (length > 0) {
                    expected.push_back(
                        {Trace::State, message(BlockCheck, "Input block pointer @%p is valid\n", start)});
                }
                return expected + LeveledTrace{{Trace::Error,
                                                message(Function, "*****Input parameter invalid @%p @%p %d\n",
                                                        start, static_cast<const void *>(data), length)},
                                               {Trace::Flow, leave(Function, intptr_t{0})}};
            });
        EXPECT_EQ(cursor, buffer);
        EXPECT_EQ(Bytes(buffer, buffer + 4), (Bytes{1, 2, 3, 4}));
    }
}

TEST(FormatBERoctetstringType, RefusesANullPointer)
{
    for (const bool nullCursor : {true, false}) {
        unsigned char *cursor = nullptr;
        const unsigned char data[4] = {5, 6, 7, 8};
        int32_t result = -1;
        expectTrace(
            [&] {
                result = DOV0_FormatBERoctetstringType(nullCursor ? nullptr : &cursor, DOV0_ASN_OCTETSTRING,
                                                       data, 4);
            },
            [&](uint32_t) {
                EXPECT_EQ(result, 0);
                return LeveledTrace{
                    {Trace::Flow, entry(Function)},
                    {Trace::State, message(PointerCheck, "Input pointer is NULL\n")},
                    {Trace::Error, message(Function, "*****Input parameter invalid @%p @%p %d\n", nullptr,
                                           static_cast<const void *>(data), 4)},
                    {Trace::Flow, leave(Function, intptr_t{0})},
                };
            });
    }
}

TEST(FormatBERoctetstringType, RefusesNullData)
{
    unsigned char buffer[8] = {};
    unsigned char *cursor = buffer;
    EXPECT_EQ(DOV0_FormatBERoctetstringType(&cursor, DOV0_ASN_OCTETSTRING, nullptr, 4), 0);
    EXPECT_EQ(cursor, buffer);
    EXPECT_EQ(bitsThatShow(message(Function, "*****Input parameter invalid @%p @%p %d\n",
                                   static_cast<void *>(buffer), nullptr, 4),
                           [&] { DOV0_FormatBERoctetstringType(&cursor, DOV0_ASN_OCTETSTRING, nullptr, 4); }),
              Trace::Error);
}
