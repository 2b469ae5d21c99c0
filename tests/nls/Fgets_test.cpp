#include "nls/language_stand_in.h"
#include "nls/text_file.h"
#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <algorithm>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <random>

namespace {

constexpr char Function[] = "DOV0_Fgets";

struct Encoding {
    const char *name;
    int type;
    size_t width;
};

constexpr Encoding Encodings[] = {{"UTF-16", 0x02, 2}, {"UTF-16BE", 0x12, 2}, {"UTF-16LE", 0x0A, 2},
                                  {"UTF-32", 0x04, 4}, {"UTF-32BE", 0x14, 4}, {"UTF-32LE", 0x0C, 4}};

struct Line {
    bool given = false;
    int32_t count = -1;
    std::string text; // the bytes of the line, or all of the buffer after a conversion
};

Line readLine(std::FILE *stream, int32_t size, const char *encoding, int type, bool convert = false)
{
    GuardedBuffer buffer(static_cast<size_t>(std::max(size, 0)));
    Line line;
    const char *result = DOV0_Fgets(buffer.text(), size, stream, &line.count, encoding,
                                    static_cast<uint16_t>(type), convert ? 1 : 0);
    line.given = result != nullptr;
    EXPECT_TRUE(result == nullptr || result == buffer.text());
    if (line.given) {
        line.text.assign(buffer.text(), convert ? buffer.size() : static_cast<size_t>(line.count));
    }
    return line;
}

template <typename... Arguments> std::string says(const char *format, Arguments... arguments)
{
    return message(Function, format, arguments...);
}

std::string starting(int size, const char *encoding, int convert)
{
    return says("readBufferSize = %d, encoding = %s, convertToUTF8 = %d\n", size, encoding, convert);
}

} // namespace

TEST(Fgets, ReadsSingleBytesLikeFgets)
{
    const TextStream stream("first\nsecond\n\xE9nd");
    for (const char *expected : {"first\n", "second\n", "\xE9nd"}) {
        const Line line = readLine(stream, 32, "ISO-8859-1", 0);
        EXPECT_TRUE(line.given);
        EXPECT_EQ(line.text, expected);
        EXPECT_EQ(line.count, static_cast<int32_t>(std::string(expected).size()));
    }
    const Line end = readLine(stream, 32, "ISO-8859-1", 0);
    EXPECT_FALSE(end.given);
    EXPECT_EQ(end.count, 0);
}

TEST(Fgets, ReadsUtf16LinesOneByOne)
{
    const TextStream stream(encoded("ab\r\ncd", "UTF-16LE"));
    const Line first = readLine(stream, 100, "UTF-16LE", 0x0A);
    EXPECT_TRUE(first.given);
    EXPECT_EQ(first.count, 8);
    EXPECT_EQ(first.text, encoded("ab\r\n", "UTF-16LE"));
    const Line second = readLine(stream, 100, "UTF-16LE", 0x0A);
    EXPECT_EQ(second.text, encoded("cd", "UTF-16LE"));
    EXPECT_FALSE(readLine(stream, 100, "UTF-16LE", 0x0A).given);
}

TEST(Fgets, ReadsEveryEncodingWithShortLines)
{
    const std::string lines[] = {"one\n", "\n", "three\r\n", "14 characters\n", "x\n", "end"};
    std::string text;
    for (const std::string &line : lines) {
        text += line;
    }
    for (const Encoding &encoding : Encodings) {
        const TextStream stream(encoded(text, encoding.name));
        for (const std::string &line : lines) {
            EXPECT_EQ(readLine(stream, 200, encoding.name, encoding.type).text, encoded(line, encoding.name));
        }
        EXPECT_FALSE(readLine(stream, 200, encoding.name, encoding.type).given);
    }
}

TEST(Fgets, ConvertsEveryEncodingToUtf8)
{
    const TextStream latin("caf\xE9\nx\n");
    EXPECT_EQ(readLine(latin, 12, "ISO-8859-1", 0, true).text, std::string("caf\xC3\xA9\n\0\0\0\0\0\0", 12));
    EXPECT_EQ(readLine(latin, 12, "ISO-8859-1", 0, true).text, std::string("x\n\0\0\0\0\0\0\0\0\0\0", 12));
    for (const Encoding &encoding : Encodings) {
        const TextStream stream(encoded("ab\ncd", encoding.name));
        const Line line = readLine(stream, 64, encoding.name, encoding.type, true);
        EXPECT_EQ(line.text, "ab\n" + std::string(61, '\0')) << encoding.name;
        EXPECT_EQ(line.count, static_cast<int32_t>(3 * encoding.width)); // of the file, not of the result
    }
    // Nothing to convert in what is UTF-8 already.
    const TextStream utf8("caf\xC3\xA9\n");
    const Line line = readLine(utf8, 12, "UTF-8", 0, true);
    EXPECT_EQ(line.text.substr(0, 7), std::string("caf\xC3\xA9\n\0", 7));
    EXPECT_EQ(line.text.substr(7), std::string(5, '\xA5'));
}

TEST(Fgets, TracesASingleByteLine)
{
    const TextStream stream("text\n");
    char buffer[16];
    int32_t count = 0;
    const auto call = [&] {
        std::rewind(stream);
        DOV0_Fgets(buffer, 16, stream, &count, "ISO-8859-1", 0, 0);
    };
    const TraceLog expected = {entry(Function), starting(16, "ISO-8859-1", 0),
                               says("Using fgets() to get string from file.\n"), leave(Function, buffer)};
    EXPECT_EQ(traceAt(Trace::All, call), expected);
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Detail, call), (TraceLog{expected.front(), expected.back()}));
    EXPECT_EQ(bitsThatShow(expected[1], call), Trace::Detail);
    EXPECT_EQ(bitsThatShow(expected[2], call), Trace::Detail);
}

TEST(Fgets, TracesALineInUnits)
{
    const std::string bytes = encoded("ab\ncd", "UTF-16BE");
    const TextStream stream(bytes);
    GuardedBuffer buffer(80);
    int32_t count = 0;
    char *result = nullptr;
    const auto call = [&] {
        std::rewind(stream);
        result = DOV0_Fgets(buffer.text(), 80, stream, &count, "UTF-16BE", 0x12, 0);
    };
    const TraceLog expected = {entry(Function),
                               starting(80, "UTF-16BE", 0),
                               says("Read %d bytes\n", 10),
                               dump(Function, bytes.data(), 10, "%c"),
                               says("Newline found, readCount is now %d\n", 6),
                               says("Moving file descriptor from %d to %d\n", 10, 6),
                               says("Setting string to readBuffer.\n"),
                               dump(Function, bytes.data(), 6, "%c"),
                               leave(Function, buffer.text())};
    EXPECT_EQ(traceOf(Function, Trace::All, call), expected);
    EXPECT_EQ(result, buffer.text());
    EXPECT_EQ(count, 6);
    EXPECT_EQ(traceOf(Function, Trace::Detail, call), (TraceLog{expected[1], expected[4], expected[5]}));
    EXPECT_EQ(traceOf(Function, 0x04, call), (TraceLog{expected[2], expected[3], expected[6], expected[7]}));
    EXPECT_EQ(traceOf(Function, 0x08, call), (TraceLog{expected[2], expected[3], expected[6], expected[7]}));
    EXPECT_EQ(traceOf(Function, Trace::All & ~(Trace::Detail | Trace::Dump), call),
              (TraceLog{expected.front(), expected.back()}));
    // The search is that of the exported function, over the bytes just read, with the given type.
    const TraceLog search = from("DOV0_FindChar", traceAt(Trace::All, call));
    ASSERT_GE(search.size(), 3U);
    EXPECT_EQ(search[1], message("DOV0_FindChar", "bufferLength is %d, utfEncodingType is %d.\n", 10, 0x12));
}

TEST(Fgets, TracesTheEndOfTheFile)
{
    const TextStream stream("");
    char buffer[80];
    int32_t count = -1;
    const std::string ended = says("Reached end of file\n");
    const auto call = [&] {
        EXPECT_EQ(DOV0_Fgets(buffer, 80, stream, &count, "UTF-16BE", 0x12, 1), nullptr);
    };
    EXPECT_EQ(traceAt(Trace::All, call),
              (TraceLog{entry(Function), starting(80, "UTF-16BE", 1), ended, leave(Function, nullptr)}));
    EXPECT_EQ(count, 0);
    EXPECT_EQ(bitsThatShow(ended, call), Trace::Detail);
}

TEST(Fgets, ShrinksItsChunksForSmallBuffers)
{
    const std::string bytes = encoded("0123456789abcdef\n", "UTF-16LE"); // 34 bytes
    const struct {
        int32_t size;
        int32_t readSize;
    } cases[] = {{63, 60}, {30, 28}, {7, 4}, {4, 4}};
    for (const auto &c : cases) {
        const TextStream stream(bytes);
        Line line;
        const TraceLog log =
            traceOf(Function, Trace::Detail, [&] { line = readLine(stream, c.size, "UTF-16LE", 0x0A); });
        ASSERT_GE(log.size(), 2U);
        EXPECT_EQ(log[1],
                  says("readSize is bigger than readBufferSize, resetting readSize to %d\n", c.readSize));
        EXPECT_EQ(line.text, bytes.substr(0, static_cast<size_t>(std::min(c.readSize, 34)))) << c.size;
    }
    const TextStream stream(bytes);
    EXPECT_EQ(traceOf(Function, Trace::Detail, [&] { readLine(stream, 64, "UTF-16LE", 0x0A); }),
              (TraceLog{starting(64, "UTF-16LE", 0), says("Newline found, readCount is now %d\n", 34)}));
}

TEST(Fgets, ReadsNothingIntoABufferWithoutRoomForAUnit)
{
    for (const int32_t size : {0, 1, 3}) {
        const TextStream stream(encoded("ab\n", "UTF-16LE"));
        Line line;
        const TraceLog log =
            traceOf(Function, Trace::Detail, [&] { line = readLine(stream, size, "UTF-16LE", 0x0A); });
        EXPECT_EQ(log,
                  (TraceLog{starting(size, "UTF-16LE", 0),
                            says("readSize is bigger than readBufferSize, resetting readSize to %d\n", 0),
                            says("Reached end of file\n")}));
        EXPECT_FALSE(line.given);
        EXPECT_EQ(line.count, 0);
        EXPECT_EQ(std::ftell(stream), 0);
    }
    const TextStream stream("text");
    EXPECT_FALSE(readLine(stream, -8, "UTF-16LE", 0x0A).given);
    EXPECT_FALSE(readLine(stream, 0, "ISO-8859-1", 0).given);
    EXPECT_FALSE(readLine(stream, -8, "ISO-8859-1", 0, true).given);
}

// The distance is counted from the start of the buffer, so that a line beyond the first chunk leads forward.
TEST(Fgets, RepositionsByTheLastReadAlone)
{
    const std::string bytes = encoded(std::string(40, 'x') + "\n" + std::string(100, 'y'), "UTF-16LE");
    const TextStream stream(bytes);
    const TraceLog log = traceOf(Function, Trace::Detail, [&] {
        const Line line = readLine(stream, 200, "UTF-16LE", 0x0A);
        EXPECT_EQ(line.text, bytes.substr(0, 82));
        EXPECT_EQ(line.count, 82);
    });
    EXPECT_EQ(log, (TraceLog{starting(200, "UTF-16LE", 0), says("Newline found, readCount is now %d\n", 82),
                             says("Moving file descriptor from %d to %d\n", 128, 146)}));
    EXPECT_EQ(std::ftell(stream), 146);
}

TEST(Fgets, ReadsLinesBeyondTwoGigabytes)
{
    const TextStream stream("");
    constexpr off_t Place = off_t{3} << 30;
    const std::string bytes = encoded("one\ntwo\n", "UTF-16BE");
    const int file = open(stream.path(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(pwrite(file, bytes.data(), bytes.size(), Place), static_cast<ssize_t>(bytes.size()));
    close(file);
    ASSERT_EQ(fseeko(stream, Place, SEEK_SET), 0);
    EXPECT_EQ(readLine(stream, 100, "UTF-16BE", 0x12).text, encoded("one\n", "UTF-16BE"));
    EXPECT_EQ(ftello(stream), Place + 8);
    EXPECT_EQ(readLine(stream, 100, "UTF-16BE", 0x12).text, encoded("two\n", "UTF-16BE"));
    EXPECT_FALSE(readLine(stream, 100, "UTF-16BE", 0x12).given);
}

TEST(Fgets, DoesNotMoveTheStreamBehindALineThatEndsWithItsChunk)
{
    const TextStream stream(encoded(std::string(31, 'x') + "\nrest", "UTF-16LE"));
    const TraceLog log = traceOf(Function, Trace::Detail,
                                 [&] { EXPECT_EQ(readLine(stream, 200, "UTF-16LE", 0x0A).count, 64); });
    EXPECT_EQ(log,
              (TraceLog{starting(200, "UTF-16LE", 0), says("Newline found, readCount is now %d\n", 64)}));
    EXPECT_EQ(std::ftell(stream), 64);
}

TEST(Fgets, GivesALineWithoutAnEndAtTheEndOfTheFile)
{
    for (const size_t size : {1U, 2U, 3U, 5U, 63U, 64U, 65U, 127U, 128U}) { // whole units or not
        const std::string bytes = encoded(std::string(64, 'x'), "UTF-16LE").substr(0, size);
        const TextStream stream(bytes);
        const TraceLog log = traceOf(Function, Trace::Detail, [&] {
            const Line line = readLine(stream, 500, "UTF-16LE", 0x0A);
            EXPECT_EQ(line.text, bytes);
            EXPECT_EQ(line.count, static_cast<int32_t>(size));
        });
        EXPECT_EQ(log, (TraceLog{starting(500, "UTF-16LE", 0), says("Reached end of file\n")}));
        EXPECT_FALSE(readLine(stream, 500, "UTF-16LE", 0x0A).given);
    }
}

TEST(Fgets, StopsWhenNoWholeChunkFits)
{
    const std::string bytes = encoded(std::string(200, 'x') + "\n", "UTF-16LE");
    const TextStream stream(bytes);
    EXPECT_EQ(readLine(stream, 100, "UTF-16LE", 0x0A).text, bytes.substr(0, 64));
    EXPECT_EQ(readLine(stream, 128, "UTF-16LE", 0x0A).text, bytes.substr(64, 128));
    EXPECT_EQ(readLine(stream, 65, "UTF-16LE", 0x0A).text, bytes.substr(192, 64));
    EXPECT_EQ(std::ftell(stream), 256);
}

TEST(Fgets, EndsALineAtAReadError)
{
    std::FILE *folder = std::fopen("/tmp", "rb");
    const TraceLog log = traceOf(Function, Trace::Detail, [&] {
        const Line line = readLine(folder, 100, "UTF-16LE", 0x0A);
        EXPECT_FALSE(line.given);
        EXPECT_EQ(line.count, 0);
    });
    EXPECT_EQ(log, (TraceLog{starting(100, "UTF-16LE", 0), says("Reached end of file\n")}));
    EXPECT_NE(std::ferror(folder), 0);
    EXPECT_FALSE(readLine(folder, 100, "UTF-16LE", 0x0A).given); // also with the error still noted
    EXPECT_FALSE(readLine(folder, 100, "ISO-8859-1", 0).given);
    std::fclose(folder);
}

TEST(Fgets, SearchesAByteForTypesThatNoEncodingHas)
{
    for (const int type : {0x01, 0x06, 0x08, 0x10, 0x1A, 0x22, 0xFFFF}) {
        const TextStream stream("one\ntwo\n");
        const TraceLog log = traceOf(Function, Trace::Detail,
                                     [&] { EXPECT_EQ(readLine(stream, 100, "odd", type).text, "one\n"); });
        EXPECT_EQ(log,
                  (TraceLog{starting(100, "odd", 0),
                            says("Unknown UTF encoding type %d supplied.  Using single char newline\n", type),
                            says("Newline found, readCount is now %d\n", 4),
                            says("Moving file descriptor from %d to %d\n", 8, 4)}));
        const TraceLog search =
            traceOf("DOV0_FindChar", Trace::Detail, [&] { readLine(stream, 100, "odd", type); });
        ASSERT_FALSE(search.empty());
        EXPECT_EQ(search[0],
                  message("DOV0_FindChar", "bufferLength is %d, utfEncodingType is %d.\n", 4, type));
        EXPECT_FALSE(readLine(stream, 100, "odd", type).given);
    }
}

TEST(Fgets, ReadsANullEncodingLikeSingleBytesAndDoesNotConvertIt)
{
    for (const int type : {0, 0x0A}) {
        const TextStream stream("caf\xE9\nx");
        char buffer[16];
        int32_t count = 0;
        EXPECT_EQ(traceAt(Trace::All,
                          [&] {
                              EXPECT_EQ(DOV0_Fgets(buffer, 16, stream, &count, nullptr,
                                                   static_cast<uint16_t>(type), 1),
                                        buffer);
                          }),
                  (TraceLog{entry(Function), starting(16, "(null)", 1),
                            says("Using fgets() to get string from file.\n"), leave(Function, buffer)}));
        EXPECT_STREQ(buffer, "caf\xE9\n");
        EXPECT_EQ(count, 5);
    }
}

TEST(Fgets, ReadsNothingIntoNothing)
{
    const TextStream stream("text\n");
    char buffer[16];
    int32_t count = -1;
    EXPECT_EQ(DOV0_Fgets(nullptr, 16, stream, &count, "UTF-8", 0, 1), nullptr);
    EXPECT_EQ(count, 0);
    count = -1;
    EXPECT_EQ(DOV0_Fgets(buffer, 16, nullptr, &count, "UTF-16LE", 0x0A, 1), nullptr);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(DOV0_Fgets(buffer, 16, stream, nullptr, "UTF-8", 0, 0), buffer);
}

TEST(Fgets, TracesAConversion)
{
    const TextStream stream("caf\xE9\n");
    char buffer[16];
    int32_t count = 0;
    const auto call = [&] {
        std::rewind(stream);
        DOV0_Fgets(buffer, 16, stream, &count, "ISO-8859-1", 0, 1);
    };
    const std::string converting = says("Converting string buffer from %s to UTF-8.\n", "ISO-8859-1");
    EXPECT_EQ(traceAt(Trace::All, call), (TraceLog{entry(Function), starting(16, "ISO-8859-1", 1),
                                                   says("Using fgets() to get string from file.\n"),
                                                   converting, leave(Function, buffer)}));
    EXPECT_EQ(bitsThatShow(converting, call), Trace::Detail);
}

TEST(Fgets, CutsAConversionThatDoesNotFit)
{
    const std::string line = "\xE9\xE9\xE9\xE9\xE9\n"; // 6 bytes, 11 in UTF-8
    const TextStream stream(line);
    const std::string cut = "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9";
    const std::string complaint = says(
        "Error: A buffer overflow occurred while converting the string %s from %s to UTF-8. The truncated "
        "converted string %s will be used\n",
        line.c_str(), "ISO-8859-1", cut.c_str());
    Line result;
    const auto call = [&] {
        std::rewind(stream);
        result = readLine(stream, 8, "ISO-8859-1", 0, true);
    };
    EXPECT_EQ(traceAt(Trace::Error, call), TraceLog{complaint});
    EXPECT_TRUE(result.given);
    EXPECT_EQ(result.text, cut);
    EXPECT_EQ(result.count, 6);
    EXPECT_EQ(bitsThatShow(complaint, call), Trace::Error);
}

TEST(Fgets, BoundsTheTextsOfAnOverflowByTheirBuffers)
{
    // A line in UTF-32 without any zero byte, read up to the end of a guarded buffer.
    std::string bytes;
    for (int i = 0; i < 16; ++i) {
        bytes += "\x01\x01\x01\x01"; // beyond Unicode: each becomes U+FFFD, 3 bytes
    }
    const TextStream stream(bytes);
    languageStandIn().translateString = [](int32_t, char *output, int32_t capacity, int32_t, const char *,
                                           int32_t, int32_t *status) {
        std::memset(output, 'z', static_cast<size_t>(capacity));
        *status = 15;
        return capacity;
    };
    Line result;
    EXPECT_EQ(traceAt(Trace::Error, [&] { result = readLine(stream, 64, "UTF-32BE", 0x14, true); }),
              (TraceLog{says(
                  "Error: A buffer overflow occurred while converting the string %s from %s to UTF-8. The "
                  "truncated converted string %s will be used\n",
                  bytes.c_str(), "UTF-32BE", std::string(64, 'z').c_str())}));
    EXPECT_EQ(result.text, std::string(64, 'z'));
}

TEST(Fgets, TakesAnExactFitForSuccess)
{
    const TextStream stream("\xE9\xE9\xE9\xE9"); // 8 bytes in UTF-8
    Line result;
    EXPECT_EQ(traceAt(Trace::Error, [&] { result = readLine(stream, 8, "ISO-8859-1", 0, true); }),
              TraceLog{});
    EXPECT_EQ(result.text, "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9");
}

TEST(Fgets, ReportsAnEncodingThatCannotBeConverted)
{
    const TextStream stream("text\n");
    const std::string complaint =
        says("Error: Unable to convert string from %s to UTF-8. LNG2 Error: %d\n", "no such encoding", 4);
    Line result;
    const auto call = [&] {
        std::rewind(stream);
        result = readLine(stream, 16, "no such encoding", 0, true);
    };
    EXPECT_EQ(traceAt(Trace::Error, call), TraceLog{complaint});
    EXPECT_FALSE(result.given);
    EXPECT_EQ(result.count, 5);
    EXPECT_EQ(bitsThatShow(complaint, call), Trace::Error);
}

TEST(Fgets, TakesAWarningForSuccess)
{
    languageStandIn().translateString = [](int32_t, char *output, int32_t, int32_t, const char *, int32_t,
                                           int32_t *status) {
        output[0] = 'w';
        *status = -124;
        return 1;
    };
    const TextStream stream("text\n");
    Line result;
    EXPECT_EQ(traceAt(Trace::Error, [&] { result = readLine(stream, 8, "ISO-8859-1", 0, true); }),
              TraceLog{});
    EXPECT_EQ(result.text, std::string("w\0\0\0\0\0\0\0", 8));
}

TEST(Fgets, ConvertsAtMostTheWorkBuffer)
{
    int32_t capacity = 0;
    languageStandIn().translateString = [&](int32_t target, char *output, int32_t given, int32_t source,
                                            const char *, int32_t length, int32_t *status) {
        EXPECT_EQ(target, 1208);
        EXPECT_EQ(source, 819);
        EXPECT_EQ(length, 5);
        capacity = given;
        output[0] = 'w';
        *status = 0;
        return 1;
    };
    const TextStream stream("text\n");
    for (const int32_t size : {100, 8191, 8192, 8193, 20000}) {
        std::rewind(stream);
        const Line line = readLine(stream, size, "ISO-8859-1", 0, true);
        EXPECT_EQ(capacity, std::min(size, 8192));
        std::string expected(static_cast<size_t>(size), '\xA5');
        expected[0] = 'w';
        std::fill(expected.begin() + 1, expected.begin() + capacity, '\0');
        if (size > 8192) {
            EXPECT_EQ(line.text, expected);
        } else {
            EXPECT_EQ(line.text.substr(0, 2), std::string("w\0", 2));
        }
    }
}

// The whole of a file, line by line, as the manual tells it, repositioning included.
TEST(Fgets, AgreesWithItsManualOnRandomFiles)
{
    std::mt19937 random(66);
    for (int round = 0; round < 600; ++round) {
        const Encoding &encoding = Encodings[random() % std::size(Encodings)];
        std::string ascii(random() % 200, 'x');
        for (char &c : ascii) {
            c = random() % 24 == 0 ? '\n' : static_cast<char>('a' + random() % 26);
        }
        std::string bytes = encoded(ascii, encoding.name);
        bytes.resize(bytes.size() - std::min(bytes.size(), static_cast<size_t>(random() % 3)));
        const std::string newline = encoded("\n", encoding.name);
        const auto size = static_cast<size_t>(random() % 300 + 4);
        const size_t readSize = size < 64 ? size / 4 * 4 : 64;
        const TextStream stream(bytes);
        size_t position = 0;
        for (int line = 0; line < 60; ++line) {
            size_t count = 0;
            size_t next = position;
            while (count <= size - readSize) {
                const size_t read = std::min(readSize, bytes.size() - std::min(bytes.size(), next));
                if (read == 0) {
                    break;
                }
                const std::string chunk = bytes.substr(next, read);
                next += read;
                size_t found = std::string::npos;
                for (size_t unit = 0; unit + encoding.width <= read && found == std::string::npos;
                     unit += encoding.width) {
                    found = chunk.substr(unit, encoding.width) == newline ? unit : std::string::npos;
                }
                if (found != std::string::npos) {
                    count += found + encoding.width;
                    next = next - read +
                           count; // current position minus (bytes of the last read minus the count)
                    break;
                }
                count += read;
            }
            const Line result = readLine(stream, static_cast<int32_t>(size), encoding.name, encoding.type);
            ASSERT_EQ(result.given, count != 0);
            ASSERT_EQ(result.count, static_cast<int32_t>(count));
            if (count == 0) {
                break;
            }
            ASSERT_EQ(result.text, bytes.substr(position, count));
            ASSERT_EQ(std::ftell(stream), static_cast<long>(next));
            position = next;
        }
    }
}
