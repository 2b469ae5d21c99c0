#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

namespace {

constexpr char Function[] = "DOV0_RemoveCRandLF";

struct Outcome {
    std::string bytes; // the whole buffer, also what follows a cut
    TraceLog log;
};

// What is left of a text, byte by byte, and what is traced on the way.
Outcome expected(const std::string &text, char mode)
{
    const size_t carriageReturn = text.find('\r');
    const size_t lineFeed = text.find('\n');
    const bool removesCR = mode == 'R' || mode == 'B';
    const bool removesLF = mode == 'F' || mode == 'B';
    Outcome outcome{text + '\0', {}};
    const auto replace = [&](size_t position, const char *format) {
        const size_t fromThereToTheEnd = text.size() - position;
        outcome.bytes[position] = fromThereToTheEnd < 3 ? '\0' : ' ';
        outcome.log.push_back(message(Function, format, outcome.bytes.c_str()));
    };
    if (removesCR && carriageReturn != std::string::npos) {
        replace(carriageReturn, "CR character removed from input buffer <%s>\n");
    }
    if (removesLF && lineFeed != std::string::npos) {
        replace(lineFeed, "LineFeed character removed from input buffer <%s>\n");
    }
    return outcome;
}

Outcome found(const std::string &text, char mode)
{
    GuardedBuffer buffer(text);
    Outcome outcome;
    outcome.log = traceAt(Trace::Detail, [&] { DOV0_RemoveCRandLF(buffer.text(), mode); });
    outcome.bytes.assign(buffer.text(), buffer.size());
    return outcome;
}

std::string cleaned(const std::string &text, char mode)
{
    return found(text, mode).bytes.c_str();
}

} // namespace

TEST(RemoveCRandLF, CutsALineEndOff)
{
    EXPECT_EQ(cleaned("abc\r\n", 'B'), "abc");
    EXPECT_EQ(cleaned("abc\n", DOV0_REMOVE_LF), "abc");
    EXPECT_EQ(cleaned("abc\r", DOV0_REMOVE_CR), "abc");
    EXPECT_EQ(cleaned("abc\r\n", DOV0_REMOVE_CR), "abc");
    EXPECT_EQ(cleaned("\r\n", DOV0_REMOVE_BOTH), "");
}

TEST(RemoveCRandLF, TurnsAnEmbeddedLineBreakIntoBlanks)
{
    EXPECT_EQ(cleaned("ab\r\ncd", 'B'), "ab  cd");
    EXPECT_EQ(cleaned("ab\r\nc", 'B'), "ab ");
}

TEST(RemoveCRandLF, TreatsOnlyTheFirstOfEach)
{
    EXPECT_EQ(cleaned("a\nbcd\n", 'F'), "a bcd\n");
    EXPECT_EQ(cleaned("a\rbcd\r", 'B'), "a bcd\r");
}

TEST(RemoveCRandLF, RemovesNothingForAnyOtherMode)
{
    for (int mode = -128; mode < 128; ++mode) {
        if (mode != 'R' && mode != 'F' && mode != 'B') {
            EXPECT_EQ(cleaned("ab\r\ncd\r\n", static_cast<char>(mode)), "ab\r\ncd\r\n") << mode;
        }
    }
}

TEST(RemoveCRandLF, AgreesWithTheModelOnAllShortTexts)
{
    const std::string alphabet = "a \r\n";
    setTraceLevel(Trace::Detail);
    for (size_t length = 0; length <= 6; ++length) {
        std::string text(length, 'a');
        size_t combinations = 1;
        for (size_t i = 0; i < length; ++i) {
            combinations *= alphabet.size();
        }
        for (size_t number = 0; number < combinations; ++number) {
            size_t rest = number;
            for (char &character : text) {
                character = alphabet[rest % alphabet.size()];
                rest /= alphabet.size();
            }
            for (const char mode : {'R', 'F', 'B', 'X', '\0'}) {
                GuardedBuffer buffer(text);
                DOV0_RemoveCRandLF(buffer.text(), mode);
                const Outcome model = expected(text, mode);
                ASSERT_EQ(std::string(buffer.text(), buffer.size()), model.bytes)
                    << "mode " << mode << " no. " << number;
                ASSERT_EQ(takeTrace(), model.log) << "mode " << mode << " no. " << number;
            }
        }
    }
}

TEST(RemoveCRandLF, MeasuresALongText)
{
    const std::string inside(100000, 'x');
    EXPECT_EQ(cleaned(inside + "\r\n", 'B'), inside);
    EXPECT_EQ(cleaned("\r\n" + inside, 'B'), "  " + inside);
}

TEST(RemoveCRandLF, TracesTheTextAfterEachRemoval)
{
    GuardedBuffer buffer("ab\r\ncd");
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_RemoveCRandLF(buffer.text(), 'B'); }),
              (TraceLog{entry(Function),
                        message(Function, "CR character removed from input buffer <%s>\n", "ab \ncd"),
                        message(Function, "LineFeed character removed from input buffer <%s>\n", "ab  cd"),
                        leave(Function)}));
}

TEST(RemoveCRandLF, TracesRemovalsUnderTheDetailBitOnly)
{
    EXPECT_EQ(bitsThatShow(message(Function, "CR character removed from input buffer <a>\n"),
                           [] {
                               GuardedBuffer buffer("a\r");
                               DOV0_RemoveCRandLF(buffer.text(), 'R');
                           }),
              Trace::Detail);
    EXPECT_EQ(bitsThatShow(message(Function, "LineFeed character removed from input buffer <a>\n"),
                           [] {
                               GuardedBuffer buffer("a\n");
                               DOV0_RemoveCRandLF(buffer.text(), 'F');
                           }),
              Trace::Detail);
}

TEST(RemoveCRandLF, TracesNothingWhenThereIsNothingToRemove)
{
    for (const char *text : {"", "abc", "abc\n"}) {
        GuardedBuffer buffer(text);
        EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_RemoveCRandLF(buffer.text(), 'R'); }),
                  (TraceLog{entry(Function), leave(Function)}));
        EXPECT_STREQ(buffer.text(), text);
    }
}

TEST(RemoveCRandLF, RefusesNull)
{
    EXPECT_EQ(
        traceAt(Trace::All, [] { DOV0_RemoveCRandLF(nullptr, 'B'); }),
        (TraceLog{entry(Function), message(Function, "***** Input string is NULL\n"), leave(Function)}));
    EXPECT_EQ(bitsThatShow(message(Function, "***** Input string is NULL\n"),
                           [] { DOV0_RemoveCRandLF(nullptr, 'B'); }),
              Trace::Error);
}
