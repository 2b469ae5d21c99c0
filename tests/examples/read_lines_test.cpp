#include "support/program.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

namespace {

const std::string ReadLines = EXAMPLES_DIRECTORY "/read_lines";

// ICU is the judge of the encodings; it writes marks for none of these names.
std::string encoded(const std::string &text, const char *encoding)
{
    UErrorCode error = U_ZERO_ERROR;
    std::string bytes(text.size() * 4 + 4, '\0');
    bytes.resize(
        static_cast<size_t>(ucnv_convert(encoding, "UTF-8", bytes.data(), static_cast<int32_t>(bytes.size()),
                                         text.data(), static_cast<int32_t>(text.size()), &error)));
    EXPECT_TRUE(U_SUCCESS(error)) << encoding;
    return bytes;
}

struct Encoding {
    const char *name;   // as a user gives it
    const char *layout; // as ICU writes it without a mark
};

const Encoding Encodings[] = {{"UTF-16", "UTF-16BE"}, {"UTF-16BE", "UTF-16BE"}, {"UTF-16LE", "UTF-16LE"},
                              {"UTF-32", "UTF-32BE"}, {"UTF-32BE", "UTF-32BE"}, {"UTF-32LE", "UTF-32LE"},
                              {"UTF-8", "UTF-8"}};

const std::string Mark = "\uFEFF";

ProgramResult lines(const std::string &bytes, const std::string &encoding = "")
{
    const TemporaryFolder folder;
    return runProgram(ReadLines + " " + folder.write("file", bytes) + " " + encoding);
}

void expectLines(const ProgramResult &result, const std::string &text, const std::string &what)
{
    EXPECT_EQ(result.status, 0) << what;
    EXPECT_TRUE(result.output == text) << what << ": " << result.output.substr(0, 300);
    EXPECT_EQ(result.errors, "") << what;
}

// Short lines and long ones, ends at and around the sizes in which the library and the example read.
std::string sample()
{
    std::string text;
    for (const size_t length : {0U,   1U,   14U, 15U,  16U,   30U,   31U,   32U,   33U,   62U,     63U,
                                64U,  65U,  0U,  127U, 128U,  254U,  255U,  256U,  257U,  510U,    511U,
                                512U, 513U, 0U,  700U, 1022U, 1023U, 1024U, 1025U, 5000U, 100000U, 3U}) {
        for (size_t i = 0; i < length; ++i) {
            text += i % 7 == 3 ? "\u0A0A" : i % 11 == 5 ? "\U0001F600" : i % 5 == 1 ? "\u00E9" : "x";
        }
        text += '\n';
    }
    return text;
}

} // namespace

TEST(ReadLines, PrintsFilesInEachEncodingByTheirMark)
{
    const std::string text = sample();
    for (const Encoding &encoding : Encodings) {
        expectLines(lines(encoded(Mark + text, encoding.layout)), text, encoding.name);
    }
}

TEST(ReadLines, PrintsFilesInEachEncodingWithoutAMark)
{
    const std::string text = sample();
    for (const Encoding &encoding : Encodings) {
        expectLines(lines(encoded(text, encoding.layout), encoding.name), text, encoding.name);
    }
    expectLines(lines(text), text, "UTF-8 by default");
    expectLines(lines("caf\xE9\n", "ISO-8859-1"), "caf\u00E9\n", "ISO-8859-1");
    expectLines(lines("caf\x82\n", "ibm-850"), "caf\u00E9\n", "ibm-850");
    expectLines(lines("\x93\xFA\x96\x7B\n", "Shift_JIS"), "\u65E5\u672C\n", "Shift_JIS");
}

TEST(ReadLines, LetsAMarkDecideOverTheUsersWord)
{
    expectLines(lines(encoded(Mark + "ab\ncd\n", "UTF-16LE"), "UTF-32BE"), "ab\ncd\n", "UTF-16LE");
}

TEST(ReadLines, TakesEachLineEnd)
{
    const std::string y(200, 'y');
    const std::string z(300, 'z');
    for (const Encoding &encoding : Encodings) {
        expectLines(lines(encoded(Mark + "ab\r\n\r\ncd\nno end", encoding.layout)), "ab\n\ncd\nno end\n",
                    encoding.name);
        expectLines(lines(encoded(Mark + y + "\r\n" + z, encoding.layout)), y + "\n" + z + "\n",
                    encoding.name);
        expectLines(lines(encoded(Mark, encoding.layout)), "", encoding.name);
        expectLines(lines(encoded(Mark + "\n\n\n", encoding.layout)), "\n\n\n", encoding.name);
    }
    expectLines(lines(""), "", "empty");
}

TEST(ReadLines, ReplacesWhatIsMalformed)
{
    expectLines(lines("a\xFFz\n"), "a\uFFFDz\n", "UTF-8");
    expectLines(lines(std::string("\xFF\xFE"
                                  "a\0\x00\xD8"
                                  "z\0\n\0",
                                  10)),
                "a\uFFFDz\n", "unpaired surrogate");
    expectLines(lines(std::string("\xFF\xFE"
                                  "a\0\n\0z",
                                  7)),
                "a\n\uFFFD\n", "odd length");
    expectLines(lines(std::string("\xFF\xFE\0\0"
                                  "a\0\0\0z\0\0",
                                  11)),
                "a\uFFFD\n", "three bytes of a unit");
}

TEST(ReadLines, TakesFilesOfAFewBytes)
{
    expectLines(lines("\xFF\xFE"), "", "FF FE");
    expectLines(lines("\xFE\xFF"), "", "FE FF");
    expectLines(lines("\xEF\xBB\xBF"), "", "EF BB BF");
    expectLines(lines("a"), "a\n", "1 byte");
    expectLines(lines("ab"), "ab\n", "2 bytes");
    expectLines(lines("abc"), "abc\n", "3 bytes");
    expectLines(lines("\xEF\xBB"), "\uFFFD\n", "half a mark");
    expectLines(lines("\n"), "\n", "a newline");
}

TEST(ReadLines, SaysWhatItCannotRead)
{
    ProgramResult result = runProgram(ReadLines + " /nowhere/at/all");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "read_lines: /nowhere/at/all cannot be read\n");
    result = runProgram(ReadLines + " /");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "read_lines: / cannot be read to its end\n");
    result = lines("x\n", "no-such-code-set");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "read_lines: a line cannot be converted from no-such-code-set\n");
    EXPECT_EQ(runProgram(ReadLines).status, 2);
    EXPECT_EQ(runProgram(ReadLines + " a b c").status, 2);
}
