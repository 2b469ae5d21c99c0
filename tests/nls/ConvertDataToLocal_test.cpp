#include "nls/code_page_1047.h"
#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

namespace {

constexpr char Function[] = "DOV0_ConvertDataToLocal";

unsigned char converted(unsigned char byte)
{
    GuardedBuffer buffer(1, byte);
    DOV0_ConvertDataToLocal(buffer.bytes(), 1);
    return buffer.bytes()[0];
}

} // namespace

TEST(ConvertDataToLocal, TurnsEachByteIntoTheCharacterOfTheCodePage)
{
    for (int byte = 0; byte < 256; ++byte) {
        EXPECT_EQ(converted(static_cast<unsigned char>(byte)), asciiOf(static_cast<unsigned char>(byte)))
            << byte;
    }
}

TEST(ConvertDataToLocal, KeepsTheDeliberateExceptions)
{
    EXPECT_EQ(converted(0x07), 0x10);
    EXPECT_EQ(converted(0xFA), '|');
    EXPECT_EQ(converted(0x4F), '|');
    EXPECT_EQ(converted(0x15), '?');
    EXPECT_EQ(converted(0x25), '\n');
    EXPECT_EQ(converted(0x5F), '^');
    EXPECT_EQ(converted(0xAD), '[');
    EXPECT_EQ(converted(0xBD), ']');
    for (const int byte : {0xB0, 0xBA, 0xBB, 0x4A, 0x1C, 0x1D, 0x1E, 0x1F}) {
        EXPECT_EQ(converted(static_cast<unsigned char>(byte)), '?') << byte;
    }
}

TEST(ConvertDataToLocal, NeverGivesCertainCharacters)
{
    for (int byte = 0; byte < 256; ++byte) {
        const unsigned char ascii = converted(static_cast<unsigned char>(byte));
        EXPECT_LT(ascii, 0x7F) << byte;
        EXPECT_NE(ascii, 0x1D) << byte;
        EXPECT_NE(ascii, 0x1F) << byte;
    }
}

TEST(ConvertDataToLocal, ConvertsExactlyTheBytesAskedFor)
{
    for (int32_t length = 0; length <= 40; ++length) {
        GuardedBuffer buffer(40, 0xC1);
        DOV0_ConvertDataToLocal(buffer.bytes(), length);
        for (int32_t i = 0; i < 40; ++i) {
            EXPECT_EQ(buffer.bytes()[i], i < length ? 'A' : 0xC1) << i << " of " << length;
        }
    }
    GuardedBuffer large(100003, 0x81);
    DOV0_ConvertDataToLocal(large.bytes(), 100003);
    EXPECT_TRUE(std::string(large.text(), large.size()) == std::string(100003, 'a'));
}

TEST(ConvertDataToLocal, ConvertsNothingForLengthsBelowOne)
{
    for (const int32_t length : {0, -1, INT32_MIN}) {
        unsigned char byte = 0xC1;
        EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_ConvertDataToLocal(&byte, length); }),
                  (TraceLog{entry(Function), leave(Function)}));
        EXPECT_EQ(byte, 0xC1);
        EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_ConvertDataToLocal(nullptr, length); }),
                  (TraceLog{entry(Function), leave(Function)}));
    }
}

TEST(ConvertDataToLocal, TracesEventsOnly)
{
    GuardedBuffer buffer(4, 0xC1);
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_ConvertDataToLocal(buffer.bytes(), 4); }),
              (TraceLog{entry(Function), leave(Function)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [&] { DOV0_ConvertDataToLocal(buffer.bytes(), 4); }),
              TraceLog{});
}

TEST(ConvertDataToLocal, RefusesNull)
{
    const std::string text = message(Function, "***** Input buffer is NULL\n");
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_ConvertDataToLocal(nullptr, 1); }),
              (TraceLog{entry(Function), text, leave(Function)}));
    EXPECT_EQ(bitsThatShow(text, [] { DOV0_ConvertDataToLocal(nullptr, 1); }), Trace::Error);
}
