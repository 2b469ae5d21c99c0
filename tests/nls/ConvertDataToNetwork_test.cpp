#include "nls/code_page_1047.h"
#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

namespace {

constexpr char Function[] = "DOV0_ConvertDataToNetwork";

unsigned char converted(unsigned char byte)
{
    GuardedBuffer buffer(1, byte);
    DOV0_ConvertDataToNetwork(buffer.bytes(), 1);
    return buffer.bytes()[0];
}

std::string warning(int byte)
{
    return message(Function,
                   "Warning: *src %d exceeds ascii_to_ebcdic array size, substituting question mark\n", byte);
}

} // namespace

TEST(ConvertDataToNetwork, TurnsEachCharacterIntoTheByteOfTheCodePage)
{
    for (int byte = 0; byte < 128; ++byte) {
        EXPECT_EQ(converted(static_cast<unsigned char>(byte)), ebcdicOf(static_cast<unsigned char>(byte)))
            << byte;
    }
    EXPECT_EQ(converted('['), 0xAD);
    EXPECT_EQ(converted(']'), 0xBD);
    EXPECT_EQ(converted('^'), 0x5F);
    EXPECT_EQ(converted('\n'), 0x25);
    EXPECT_EQ(converted(0x7F), 0x07);
}

TEST(ConvertDataToNetwork, TurnsOtherBytesIntoQuestionMarks)
{
    for (int byte = 128; byte < 256; ++byte) {
        EXPECT_EQ(converted(static_cast<unsigned char>(byte)), 0x6F) << byte;
    }
}

TEST(ConvertDataToNetwork, LosesFiveControlCharactersOnTheWayBack)
{
    for (int byte = 0; byte < 128; ++byte) {
        auto character = static_cast<unsigned char>(byte);
        DOV0_ConvertDataToNetwork(&character, 1);
        DOV0_ConvertDataToLocal(&character, 1);
        if ((byte >= 0x1C && byte <= 0x1F) || byte == 0x7F) {
            EXPECT_NE(character, byte);
        } else {
            EXPECT_EQ(character, byte);
        }
    }
}

TEST(ConvertDataToNetwork, ConvertsExactlyTheBytesAskedFor)
{
    for (int32_t length = 0; length <= 40; ++length) {
        GuardedBuffer buffer(40, 'A');
        DOV0_ConvertDataToNetwork(buffer.bytes(), length);
        for (int32_t i = 0; i < 40; ++i) {
            EXPECT_EQ(buffer.bytes()[i], i < length ? 0xC1 : 'A') << i << " of " << length;
        }
    }
    GuardedBuffer large(100003, 'a');
    DOV0_ConvertDataToNetwork(large.bytes(), 100003);
    EXPECT_TRUE(std::string(large.text(), large.size()) == std::string(100003, '\x81'));
}

TEST(ConvertDataToNetwork, ConvertsNothingForLengthsBelowOne)
{
    for (const int32_t length : {0, -1, INT32_MIN}) {
        unsigned char byte = 'A';
        EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_ConvertDataToNetwork(&byte, length); }),
                  (TraceLog{entry(Function), leave(Function)}));
        EXPECT_EQ(byte, 'A');
        EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_ConvertDataToNetwork(nullptr, length); }),
                  (TraceLog{entry(Function), leave(Function)}));
    }
}

TEST(ConvertDataToNetwork, WarnsOfEachByteThatIsNoCharacter)
{
    GuardedBuffer buffer(4);
    std::memcpy(buffer.bytes(),
                "\x80"
                "A\xE9\xFF",
                4);
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_ConvertDataToNetwork(buffer.bytes(), 4); }),
              (TraceLog{entry(Function), warning(128), warning(233), warning(255), leave(Function)}));
    EXPECT_EQ(std::memcmp(buffer.bytes(), "\x6F\xC1\x6F\x6F", 4), 0);
}

TEST(ConvertDataToNetwork, WarnsUnderTheDetailBitOnly)
{
    EXPECT_EQ(bitsThatShow(warning(233),
                           [] {
                               unsigned char byte = 0xE9;
                               DOV0_ConvertDataToNetwork(&byte, 1);
                           }),
              Trace::Detail);
}

TEST(ConvertDataToNetwork, TracesEventsOnlyForCharacters)
{
    GuardedBuffer buffer(4, 'A');
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_ConvertDataToNetwork(buffer.bytes(), 4); }),
              (TraceLog{entry(Function), leave(Function)}));
}

TEST(ConvertDataToNetwork, RefusesNull)
{
    const std::string text = message(Function, "***** Input buffer is NULL\n");
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_ConvertDataToNetwork(nullptr, 1); }),
              (TraceLog{entry(Function), text, leave(Function)}));
    EXPECT_EQ(bitsThatShow(text, [] { DOV0_ConvertDataToNetwork(nullptr, 1); }), Trace::Error);
}
