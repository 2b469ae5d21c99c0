#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <gtest/gtest.h>
#include <random>

namespace {

constexpr char Function[] = "DOV0_MoveStringPointerByChar";

std::string starting(const char *text, int count)
{
    return message(Function, "pString=<%s>, numChars=<%d>\n", text, count);
}

std::string complaint(const char *text, int count, int steps)
{
    return message(
        Function,
        "***** Supplied string %s does not contain %d characters or the remaining characters are invalid "
        "UTF-8 characters.  Pointer was moved %d characters when end of string reached.\n",
        text, count, steps);
}

std::string ending(const char *text)
{
    return message(Function, "OutString <%s>\n", text);
}

// The bytes of a well-formed character by the table of the Unicode standard, or 0.
size_t wellFormed(const std::string &text, size_t offset)
{
    const auto byte = [&](size_t i) {
        return offset + i < text.size() ? static_cast<unsigned char>(text[offset + i]) : 0U;
    };
    const auto within = [&](size_t i, unsigned int low, unsigned int high) {
        return byte(i) >= low && byte(i) <= high;
    };
    const unsigned int lead = byte(0);
    if (lead < 0x80) {
        return 1;
    }
    if (lead >= 0xC2 && lead <= 0xDF) {
        return within(1, 0x80, 0xBF) ? 2 : 0;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        const bool second = within(1, lead == 0xE0 ? 0xA0 : 0x80, lead == 0xED ? 0x9F : 0xBF);
        return second && within(2, 0x80, 0xBF) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const bool second = within(1, lead == 0xF0 ? 0x90 : 0x80, lead == 0xF4 ? 0x8F : 0xBF);
        return second && within(2, 0x80, 0xBF) && within(3, 0x80, 0xBF) ? 4 : 0;
    }
    return 0;
}

} // namespace

TEST(MoveStringPointerByChar, StepsOverCharacters)
{
    const char text[] = "a\xC3\xA9 b\xE2\x82\xAC\xF0\x9F\x98\x80!";
    const int offsets[] = {0, 1, 3, 4, 5, 8, 12, 13};
    for (int count = 0; count < 8; ++count) {
        const char *moved = nullptr;
        const TraceLog log = traceAt(Trace::All, [&] { moved = DOV0_MoveStringPointerByChar(text, count); });
        EXPECT_EQ(moved, text + offsets[count]);
        EXPECT_EQ(log,
                  (TraceLog{entry(Function), starting(text, count), ending(moved), leave(Function, moved)}));
    }
    EXPECT_EQ(DOV0_MoveStringPointerByChar(text, -3), text);
    EXPECT_EQ(
        traceAt(Trace::All & ~(Trace::Detail | Trace::Flow), [&] { DOV0_MoveStringPointerByChar(text, 2); }),
        TraceLog{});
    EXPECT_EQ(bitsThatShow(starting(text, 2), [&] { DOV0_MoveStringPointerByChar(text, 2); }), Trace::Detail);
    EXPECT_EQ(bitsThatShow(ending(text + 3), [&] { DOV0_MoveStringPointerByChar(text, 2); }), Trace::Detail);
}

TEST(MoveStringPointerByChar, RefusesAnEmptyText)
{
    const std::string refused = message(Function, "***** Input string is NULL\n");
    for (const char *text : {static_cast<const char *>(nullptr), ""}) {
        const char *moved = "x";
        EXPECT_EQ(traceAt(Trace::All, [&] { moved = DOV0_MoveStringPointerByChar(text, 1); }),
                  (TraceLog{entry(Function), refused, leave(Function, nullptr)}));
        EXPECT_EQ(moved, nullptr);
        EXPECT_EQ(bitsThatShow(refused, [&] { DOV0_MoveStringPointerByChar(text, 1); }), Trace::Error);
    }
}

TEST(MoveStringPointerByChar, StopsAtAMalformedSequence)
{
    const struct {
        const char *text;
        int good; // characters before the sequence
        int offset;
    } cases[] = {
        {"ab\x80"
         "cd",
         2, 2},
        {"\xBF", 0, 0},
        {"a\xC3", 1, 1},
        {"a\xC3"
         "b",
         1, 1},
        {"a\xC0\x80", 1, 1},
        {"a\xC1\xBF", 1, 1},
        {"\xE2\x82", 0, 0},
        {"\xE0\x80\x80", 0, 0},
        {"x\xED\xA0\x80", 1, 1},
        {"\xF0\x9F\x98", 0, 0},
        {"\xF4\x90\x80\x80", 0, 0},
        {"\xF5\x80\x80\x80", 0, 0},
        {"\xF8\x88\x80\x80\x80", 0, 0},
        {"\xFC\x84\x80\x80\x80\x80", 0, 0},
        {"\xC3\xA9\xFE", 1, 2},
        {"\xC3\xA9\xFF", 1, 2},
    };
    for (const auto &c : cases) {
        GuardedBuffer buffer{std::string(c.text)};
        const char *text = buffer.text();
        const char *moved = nullptr;
        const TraceLog log = traceAt(Trace::All, [&] { moved = DOV0_MoveStringPointerByChar(text, 9); });
        EXPECT_EQ(moved, text + c.offset);
        EXPECT_EQ(log, (TraceLog{entry(Function), starting(text, 9), complaint(text, 9, c.good + 1),
                                 ending(moved), leave(Function, moved)}));
        EXPECT_EQ(DOV0_MoveStringPointerByChar(text, c.good), text + c.offset);
    }
    EXPECT_EQ(bitsThatShow(complaint("\xFF", 1, 1), [] { DOV0_MoveStringPointerByChar("\xFF", 1); }),
              Trace::Error);
}

TEST(MoveStringPointerByChar, StepsOverTheTerminatorWhenAskedTo)
{
    const char text[] = "ab\0\xC3\xA9"
                        "d";
    EXPECT_EQ(DOV0_MoveStringPointerByChar(text, 2), text + 2);
    EXPECT_EQ(DOV0_MoveStringPointerByChar(text, 3), text + 3);
    EXPECT_EQ(DOV0_MoveStringPointerByChar(text, 4), text + 5);
    EXPECT_EQ(DOV0_MoveStringPointerByChar(text, 5), text + 6);
}

TEST(MoveStringPointerByChar, AgreesWithTheTableOfWellFormedBytes)
{
    std::mt19937 random(64);
    for (int round = 0; round < 5000; ++round) {
        std::string text;
        while (text.size() < 12) {
            const auto kind = random() % 8;
            if (kind == 0) {
                text += static_cast<char>(random() % 255 + 1);
            } else if (kind < 4) {
                text += static_cast<char>(random() % 0x7F + 1);
            } else if (kind < 6) {
                text += "\xE2\x82\xAC";
            } else {
                text += "\xF0\x9F\x98\x80";
            }
        }
        GuardedBuffer buffer(text);
        size_t offset = 0;
        int count = 0;
        while (offset < text.size() && wellFormed(text, offset) != 0) {
            offset += wellFormed(text, offset);
            ++count;
            ASSERT_EQ(DOV0_MoveStringPointerByChar(buffer.text(), count), buffer.text() + offset);
        }
        if (offset < text.size()) {
            ASSERT_EQ(DOV0_MoveStringPointerByChar(buffer.text(), 100), buffer.text() + offset);
        }
    }
}
