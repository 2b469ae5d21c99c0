#include "ber/trace_levels.h"
#include "support/guarded_buffer.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_FormatBERlengthField";

// One byte up to 127, else a count and that many bytes; never a count of 1.
std::string fieldOf(uint32_t length)
{
    if (length < 128) {
        return std::string(1, static_cast<char>(length));
    }
    std::string digits;
    for (uint64_t left = length; left > 0; left /= 256) {
        digits.insert(digits.begin(), static_cast<char>(left % 256));
    }
    if (digits.size() == 1) {
        digits.insert(digits.begin(), '\0');
    }
    return static_cast<char>(128 + digits.size()) + digits;
}

// Writes a length into the end of a buffer behind which nothing may be touched.
void expectField(GuardedBuffer &buffer, uint32_t length)
{
    const std::string expected = fieldOf(length);
    std::memset(buffer.bytes(), 0xA5, buffer.size());
    unsigned char *const start = buffer.bytes() + buffer.size() - expected.size();
    unsigned char *cursor = start;
    ASSERT_EQ(DOV0_FormatBERlengthField(&cursor, length), 1) << length;
    ASSERT_EQ(cursor, start + expected.size()) << length;
    ASSERT_EQ(std::memcmp(start, expected.data(), expected.size()), 0) << length;
    for (const unsigned char *before = buffer.bytes(); before < start; ++before) {
        ASSERT_EQ(*before, 0xA5) << length;
    }
}

} // namespace

TEST(FormatBERlengthField, WritesTheFormsOfTheManual)
{
    struct {
        uint32_t length;
        std::vector<unsigned char> field;
    } const cases[] = {
        {1, {0x01}},
        {127, {0x7F}},
        {128, {0x82, 0x00, 0x80}},
        {255, {0x82, 0x00, 0xFF}},
        {256, {0x82, 0x01, 0x00}},
        {0xFFFF, {0x82, 0xFF, 0xFF}},
        {0x10000, {0x83, 0x01, 0x00, 0x00}},
        {0xFFFFFF, {0x83, 0xFF, 0xFF, 0xFF}},
        {0x1000000, {0x84, 0x01, 0x00, 0x00, 0x00}},
        {0x7FFFFFFF, {0x84, 0x7F, 0xFF, 0xFF, 0xFF}},
        {0x80000000, {0x84, 0x80, 0x00, 0x00, 0x00}},
        {0xFFFFFFFF, {0x84, 0xFF, 0xFF, 0xFF, 0xFF}},
    };
    for (const auto &each : cases) {
        unsigned char buffer[8] = {};
        unsigned char *cursor = buffer;
        EXPECT_EQ(DOV0_FormatBERlengthField(&cursor, each.length), 1);
        EXPECT_EQ(std::vector<unsigned char>(buffer, cursor), each.field) << each.length;
    }
}

TEST(FormatBERlengthField, AgreesWithTheModel)
{
    GuardedBuffer buffer(8);
    for (uint32_t length = 1; length <= 70000; ++length) {
        expectField(buffer, length);
    }
    std::mt19937 random(1);
    for (int i = 0; i < 200000; ++i) {
        const uint32_t length = static_cast<uint32_t>(random()) >> (random() % 32);
        if (length != 0) {
            expectField(buffer, length);
        }
    }
}

TEST(FormatBERlengthField, WritesNothingForLengthZero)
{
    unsigned char buffer[4] = {1, 2, 3, 4};
    unsigned char *cursor = buffer;
    EXPECT_EQ(DOV0_FormatBERlengthField(&cursor, 0), 0);
    EXPECT_EQ(cursor, buffer);
    EXPECT_EQ(std::vector<unsigned char>(buffer, buffer + 4), (std::vector<unsigned char>{1, 2, 3, 4}));
}

TEST(FormatBERlengthField, TracesTheLengthBeforeItLooksAtIt)
{
    unsigned char buffer[8];
    for (const uint32_t length : {0U, 5U, 300U, 0xFFFFFFFFU}) {
        expectTrace(
            [&] {
                unsigned char *cursor = buffer;
                DOV0_FormatBERlengthField(&cursor, length);
            },
            [&](uint32_t) {
                return LeveledTrace{
                    {Trace::Flow, entry(Function)},
                    {Trace::Detail, message(Function, "Input buffer pointer @%p size %d\n",
                                            static_cast<void *>(buffer), static_cast<int>(length))},
                    {Trace::Flow, leave(Function, intptr_t{length == 0 ? 0 : 1})},
                };
            });
    }
}

TEST(FormatBERlengthField, RefusesANullPointer)
{
    for (const bool nullCursor : {true, false}) {
        unsigned char *cursor = nullptr;
        int32_t result = -1;
        expectTrace(
            [&] { result = DOV0_FormatBERlengthField(nullCursor ? nullptr : &cursor, 7); },
            [&](uint32_t) {
                EXPECT_EQ(result, 0);
                return LeveledTrace{
                    {Trace::Flow, entry(Function)},
                    {Trace::Detail, message(Function, "Input buffer pointer @%p size %d\n", nullptr, 7)},
                    {Trace::Error, message(Function, "*****Input parameter invalid @%p\n", nullptr)},
                    {Trace::Flow, leave(Function, intptr_t{0})},
                };
            });
        EXPECT_EQ(cursor, nullptr);
        EXPECT_EQ(DOV0_FormatBERlengthField(nullCursor ? nullptr : &cursor, 0), 0);
    }
}
