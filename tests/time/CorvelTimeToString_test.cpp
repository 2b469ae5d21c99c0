#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_CorvelTimeToString";

// What is written for a timestamp that ends at a page that may not be read.
std::string rendered(const std::string &timestamp)
{
    GuardedBuffer input(timestamp);
    GuardedBuffer out(DOV0_TIMESTAMP_TEXT_SIZE);
    EXPECT_EQ(DOV0_CorvelTimeToString(input.text(), out.text()), 23);
    EXPECT_EQ(out.text()[23], '\0');
    return std::string(out.text(), 23);
}

// The rendering put together from its pieces, missing characters being NUL.
std::string model(std::string timestamp)
{
    const int year = std::atoi(timestamp.substr(0, 3).c_str()) + 1900;
    timestamp.resize(16, '\0');
    return std::string(year < 1000 ? "0" : "") + std::to_string(year) + "/" + timestamp.substr(3, 2) + "/" +
           timestamp.substr(5, 2) + " " + timestamp.substr(7, 2) + ":" + timestamp.substr(9, 2) + ":" +
           timestamp.substr(11, 2) + " " + timestamp.substr(13, 3);
}

} // namespace

TEST(CorvelTimeToString, RendersATimestamp)
{
    EXPECT_EQ(rendered("1240115102030000"), "2024/01/15 10:20:30 000");
    EXPECT_EQ(rendered("1261116055843010"), "2026/11/16 05:58:43 010");
    EXPECT_EQ(rendered("0991231235959999"), "1999/12/31 23:59:59 999");
    EXPECT_EQ(rendered("0000000000000000"), "1900/00/00 00:00:00 000");
    EXPECT_EQ(rendered("9991231235959999"), "2899/12/31 23:59:59 999");
}

TEST(CorvelTimeToString, PutsNulForEachMissingCharacter)
{
    const std::string whole = "1240115102030456";
    for (size_t length = 0; length <= 16; ++length) {
        const std::string expected = model(whole.substr(0, length));
        EXPECT_EQ(rendered(whole.substr(0, length)), expected) << length;
    }
    EXPECT_EQ(rendered("12401"), std::string("2024/01/\0\0 \0\0:\0\0:\0\0 \0\0\0", 23));
    EXPECT_EQ(rendered(""), std::string("1900/\0\0/\0\0 \0\0:\0\0:\0\0 \0\0\0", 23));
}

TEST(CorvelTimeToString, ReadsSixteenCharactersOfALongerText)
{
    EXPECT_EQ(rendered("1240115102030000999"), "2024/01/15 10:20:30 000");
    EXPECT_EQ(rendered("1240115102030000" + std::string(100000, '9')), "2024/01/15 10:20:30 000");
}

TEST(CorvelTimeToString, DoesNotCheckTheCharacters)
{
    EXPECT_EQ(rendered("abcdefghijklmnop"), "1900/de/fg hi:jk:lm nop");
    EXPECT_EQ(rendered(" 12xx%s%n////..."), "1912/xx/%s %n://:// ...");
    EXPECT_EQ(rendered("-990115102030000"), "1801/01/15 10:20:30 000");
    EXPECT_EQ(rendered("+240115102030000"), "1924/01/15 10:20:30 000");
    std::mt19937 random(32);
    for (int i = 0; i < 20000; ++i) {
        std::string timestamp(random() % 20, '\0');
        for (char &character : timestamp) {
            character = i % 2 == 0 ? "0123456789 +-a"[random() % 14] : static_cast<char>(random() % 255 + 1);
        }
        ASSERT_EQ(rendered(timestamp), model(timestamp)) << timestamp;
    }
}

TEST(CorvelTimeToString, MayWriteOverItsInput)
{
    char text[DOV0_TIMESTAMP_TEXT_SIZE] = "1240115102030000";
    EXPECT_EQ(DOV0_CorvelTimeToString(text, text), 23);
    EXPECT_STREQ(text, "2024/01/15 10:20:30 000");
}

TEST(CorvelTimeToString, TracesEntryAndExitWithTheCount)
{
    char out[DOV0_TIMESTAMP_TEXT_SIZE];
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_CorvelTimeToString("1240115102030000", out); }),
              (TraceLog{entry(Function), leave(Function, 23)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [&] { DOV0_CorvelTimeToString("1240115102030000", out); }),
              TraceLog{});
}

TEST(CorvelTimeToString, RefusesNull)
{
    GuardedBuffer out(DOV0_TIMESTAMP_TEXT_SIZE, 0x5A);
    const std::string record = message(Function, "*****Timestamp or output area is NULL\n");
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_CorvelTimeToString(nullptr, out.text()), 0); }),
              (TraceLog{entry(Function), record, leave(Function, intptr_t{0})}));
    EXPECT_EQ(std::string(out.text(), out.size()), std::string(DOV0_TIMESTAMP_TEXT_SIZE, 0x5A));
    EXPECT_EQ(traceAt(Trace::All, [] { EXPECT_EQ(DOV0_CorvelTimeToString("1240115102030000", nullptr), 0); }),
              (TraceLog{entry(Function), record, leave(Function, intptr_t{0})}));
    EXPECT_EQ(bitsThatShow(record, [] { DOV0_CorvelTimeToString(nullptr, nullptr); }), Trace::Error);
}
