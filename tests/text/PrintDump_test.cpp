#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <cstdio>

namespace {

constexpr char Function[] = "DOV0_PrintDump";

std::string line(const char *text)
{
    return message(Function, "%s\n", text);
}

std::string formattedLine(int64_t position, const std::string &hexadecimal, const std::string &characters)
{
    char text[512];
    std::snprintf(text, sizeof text, "%4x |%-48.48s| |%-16.16s|", static_cast<unsigned int>(position),
                  hexadecimal.c_str(), characters.c_str());
    return line(text);
}

// The dump of bytes that begin at base + from, by the rule: start is their first byte.
TraceLog expected(const unsigned char *start, int64_t from, int64_t to)
{
    TraceLog log;
    const int64_t length = to - from;
    for (int64_t i = 0; i < length; i += 16) {
        std::string hexadecimal;
        std::string characters;
        for (int64_t j = 0; j < 16 && i + j < length; ++j) {
            if (from < 0 && i + j == -from) {
                log.push_back(formattedLine(i, hexadecimal, characters));
                hexadecimal.assign(hexadecimal.size(), ' ');
                characters.assign(characters.size(), ' ');
            }
            const int byte = start[i + j];
            char item[4];
            std::snprintf(item, sizeof item, "%02x ", static_cast<unsigned int>(byte));
            hexadecimal += item;
            characters += byte >= 33 && byte <= 126 ? static_cast<char>(byte) : '.';
        }
        log.push_back(formattedLine(i, hexadecimal, characters));
    }
    return log;
}

// A buffer whose bytes differ from each other in a simple way.
void fill(GuardedBuffer &buffer)
{
    for (size_t i = 0; i < buffer.size(); ++i) {
        buffer.bytes()[i] = static_cast<unsigned char>(i * 7 + 3);
    }
}

} // namespace

TEST(PrintDump, WritesSixteenBytesALine)
{
    GuardedBuffer buffer(20);
    std::memcpy(buffer.bytes(), "ABCDEFGH ~!0123\x7Fxyz\x80", 20);
    EXPECT_EQ(traceAt(0, [&] { DOV0_PrintDump(buffer.bytes(), 0, 20); }),
              (TraceLog{line("   0 |41 42 43 44 45 46 47 48 20 7e 21 30 31 32 33 7f | |ABCDEFGH.~!0123.|"),
                        line("  10 |78 79 7a 80                                     | |xyz.            |")}));
}

TEST(PrintDump, ShowsTheVisibleCharactersAsTheyAre)
{
    unsigned char bytes[256];
    std::string characters;
    for (int value = 0; value < 256; ++value) {
        bytes[value] = static_cast<unsigned char>(value);
        characters.push_back(value > ' ' && value < 0x7F ? static_cast<char>(value) : '.');
    }
    const TraceLog log = traceAt(0, [&] { DOV0_PrintDump(bytes, 0, 256); });
    ASSERT_EQ(log.size(), 16U);
    std::string shownCharacters;
    for (const std::string &record : log) {
        shownCharacters += record.substr(record.rfind(" |") + 2, 16);
    }
    EXPECT_EQ(shownCharacters, characters);
}

TEST(PrintDump, WritesNothingForNoBytes)
{
    const unsigned char byte = 1;
    const std::vector<std::pair<int32_t, int32_t>> limits = {{0, 0},
                                                             {5, 5},
                                                             {-5, -5},
                                                             {1, 0},
                                                             {0, -1},
                                                             {INT32_MAX, INT32_MIN},
                                                             {INT32_MIN, INT32_MIN},
                                                             {INT32_MAX, INT32_MAX}};
    for (const auto &[from, to] : limits) {
        EXPECT_EQ(traceAt(Trace::All, [&, from = from, to = to] { DOV0_PrintDump(&byte, from, to); }),
                  (TraceLog{entry(Function), leave(Function)}));
        EXPECT_EQ(traceAt(Trace::All, [from = from, to = to] { DOV0_PrintDump(nullptr, from, to); }),
                  (TraceLog{entry(Function), leave(Function)}));
    }
}

TEST(PrintDump, SplitsTheLineThatHoldsTheBase)
{
    GuardedBuffer buffer(10);
    std::memcpy(buffer.bytes(), "beforeBASE", 10);
    EXPECT_EQ(traceAt(0, [&] { DOV0_PrintDump(buffer.bytes() + 6, -4, 4); }),
              (TraceLog{line("   0 |66 6f 72 65                                     | |fore            |"),
                        line("   0 |            42 41 53 45                         | |    BASE        |")}));
}

TEST(PrintDump, SplitsALineWithNothingBeforeTheBase)
{
    GuardedBuffer buffer(18);
    std::memcpy(buffer.bytes(), "0123456789abcdefXY", 18);
    EXPECT_EQ(traceAt(0, [&] { DOV0_PrintDump(buffer.bytes() + 16, -16, 2); }),
              (TraceLog{line("   0 |30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66 | |0123456789abcdef|"),
                        line("  10 |                                                | |                |"),
                        line("  10 |58 59                                           | |XY              |")}));
}

TEST(PrintDump, DoesNotSplitWhatEndsAtTheBase)
{
    GuardedBuffer buffer(16);
    std::memcpy(buffer.bytes(), "0123456789abcdef", 16);
    EXPECT_EQ(traceAt(0, [&] { DOV0_PrintDump(buffer.bytes() + 16, -4, 0); }),
              (TraceLog{line("   0 |63 64 65 66                                     | |cdef            |")}));
    EXPECT_EQ(traceAt(0, [&] { DOV0_PrintDump(buffer.bytes() + 16, -16, -12); }),
              (TraceLog{line("   0 |30 31 32 33                                     | |0123            |")}));
}

TEST(PrintDump, AgreesWithTheModelForAllLimitsAroundTheBase)
{
    setTraceLevel(0);
    for (int32_t from = -50; from <= 50; ++from) {
        for (int32_t to = from; to <= 51; ++to) {
            // Not a byte before or behind the limits may be read; before them only a sanitizer would tell.
            GuardedBuffer buffer(static_cast<size_t>(to - from));
            fill(buffer);
            DOV0_PrintDump(reinterpret_cast<const void *>(reinterpret_cast<intptr_t>(buffer.bytes()) - from),
                           from, to);
            ASSERT_EQ(takeTrace(), expected(buffer.bytes(), from, to)) << from << " to " << to;
        }
    }
}

TEST(PrintDump, TakesExtremeLimits)
{
    GuardedBuffer buffer(40);
    fill(buffer);
    const auto address = reinterpret_cast<intptr_t>(buffer.bytes());
    const std::vector<std::pair<int32_t, int32_t>> limits = {
        {INT32_MIN, INT32_MIN + 40}, {INT32_MIN + 1, INT32_MIN + 41}, {INT32_MAX - 40, INT32_MAX}};
    for (const auto &[from, to] : limits) {
        const auto *base = reinterpret_cast<const void *>(address - from);
        EXPECT_EQ(traceAt(0, [&, from = from, to = to] { DOV0_PrintDump(base, from, to); }),
                  expected(buffer.bytes(), from, to));
    }
}

TEST(PrintDump, WidensThePositionOfALongDump)
{
    GuardedBuffer buffer(0x10010);
    fill(buffer);
    const TraceLog log = traceAt(0, [&] { DOV0_PrintDump(buffer.bytes(), 0, 0x10010); });
    EXPECT_TRUE(log == expected(buffer.bytes(), 0, 0x10010));
    ASSERT_EQ(log.size(), 0x1001U);
    EXPECT_EQ(log.back().substr(0, log.back().find('|')), message(Function, "10000 "));
}

TEST(PrintDump, WritesItsLinesWhateverTheLevel)
{
    const unsigned char byte = 'A';
    const std::string record =
        line("   0 |41                                              | |A               |");
    for (const uint32_t level :
         {0U, Trace::Detail, Trace::Dump, Trace::Error, Trace::State, Trace::Storage}) {
        EXPECT_EQ(traceAt(level, [&] { DOV0_PrintDump(&byte, 0, 1); }), (TraceLog{record}));
    }
    EXPECT_EQ(traceAt(Trace::Flow, [&] { DOV0_PrintDump(&byte, 0, 1); }),
              (TraceLog{entry(Function), record, leave(Function)}));
}

TEST(PrintDump, RefusesNull)
{
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_PrintDump(nullptr, 0, 16); }),
              (TraceLog{entry(Function), message(Function, "***** Input base is NULL\n"), leave(Function)}));
    EXPECT_EQ(
        bitsThatShow(message(Function, "***** Input base is NULL\n"), [] { DOV0_PrintDump(nullptr, 0, 16); }),
        Trace::Error);
}
