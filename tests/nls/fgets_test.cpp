#include "nls/language_stand_in.h"
#include "nls/text_file.h"
#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <gtest/gtest.h>

namespace {

constexpr char Function[] = "DOV0_fgets";

std::string returning(const char *record)
{
    return message(Function, "Returning with data record <%s>\n", record);
}

const std::string ReturningNull = message(Function, "Returning with data record pointer = NULL\n");
const std::string Skipping = message(Function, "Skipping UTF-8 BOM at start of record\n");

} // namespace

TEST(fgets, ReadsLineAfterLine)
{
    const TextStream stream("first\nsecond line\nno end");
    GuardedBuffer buffer(32);
    for (const char *expected : {"first\n", "second line\n", "no end"}) {
        EXPECT_EQ(DOV0_fgets(buffer.text(), 32, stream), buffer.text());
        EXPECT_STREQ(buffer.text(), expected);
    }
    EXPECT_EQ(DOV0_fgets(buffer.text(), 32, stream), nullptr);
}

TEST(fgets, CutsALineThatIsLongerThanTheBuffer)
{
    const TextStream stream("abcdefgh\n");
    GuardedBuffer buffer(4, 0);
    for (const char *expected : {"abc", "def", "gh\n"}) {
        EXPECT_EQ(DOV0_fgets(buffer.text(), 4, stream), buffer.text());
        EXPECT_STREQ(buffer.text(), expected);
    }
}

TEST(fgets, RemovesAUtf8MarkAndNothingElse)
{
    const TextStream stream("\xEF\xBB\xBF"
                            "caf\xC3\xA9\nnext\n");
    GuardedBuffer buffer(16, 0x5A);
    EXPECT_EQ(DOV0_fgets(buffer.text(), 16, stream), buffer.text());
    // "caf.." and its terminator moved to the left; what was behind the terminator stays where it was.
    EXPECT_EQ(std::string(buffer.text(), 16), std::string("caf\xC3\xA9\n\0\xA9\n\0ZZZZZZ", 16));
    EXPECT_EQ(DOV0_fgets(buffer.text(), 16, stream), buffer.text());
    EXPECT_STREQ(buffer.text(), "next\n");
}

TEST(fgets, RemovesAMarkThatFillsTheBuffer)
{
    const TextStream stream("\xEF\xBB\xBF"
                            "x");
    GuardedBuffer buffer(4);
    EXPECT_EQ(DOV0_fgets(buffer.text(), 4, stream), buffer.text());
    EXPECT_STREQ(buffer.text(), "");
    EXPECT_EQ(DOV0_fgets(buffer.text(), 4, stream), buffer.text());
    EXPECT_STREQ(buffer.text(), "x");
}

TEST(fgets, RefusesOtherUnicodeEncodings)
{
    const struct {
        std::string bytes;
        const char *encoding;
    } files[] = {{std::string("\xFF\xFE"
                              "a\0\n\0",
                              6),
                  "UTF-16LE"},
                 {std::string("\xFE\xFF\0a\0\n", 6), "UTF-16BE"},
                 {std::string("\xFF\xFE\0\0a\0\0\0\n\0\0\0", 12), "UTF-32LE"},
                 {std::string("\0\0\xFE\xFF\0\0\0a\n", 9), "UTF-32BE"}};
    for (const auto &file : files) {
        const TextStream stream(file.bytes);
        GuardedBuffer buffer(64, 0);
        char *record = buffer.text();
        const std::string refused =
            message(Function, "*** File record using %s encoding, only UTF-8 is supported\n", file.encoding);
        const TraceLog log =
            traceAt(Trace::All & ~Trace::Dump, [&] { record = DOV0_fgets(buffer.text(), 64, stream); });
        EXPECT_EQ(record, nullptr);
        EXPECT_EQ(log, (TraceLog{entry(Function), refused, ReturningNull, leave(Function, nullptr)}));
        EXPECT_EQ(bitsThatShow(refused,
                               [&] {
                                   std::rewind(stream);
                                   DOV0_fgets(buffer.text(), 64, stream);
                               }),
                  Trace::Error);
    }
}

TEST(fgets, TracesWhatItReads)
{
    const TextStream stream("\xEF\xBB\xBFtext\n");
    char buffer[32] = "";
    const auto call = [&] {
        std::rewind(stream);
        DOV0_fgets(buffer, 32, stream);
    };
    const std::string read = message(Function, "Read: <%s>\n", "\xEF\xBB\xBFtext\n");
    EXPECT_EQ(traceAt(Trace::All, call),
              (TraceLog{entry(Function), read, Skipping, returning("text\n"), leave(Function, buffer)}));
    EXPECT_EQ(bitsThatShow(read, call), Trace::Dump);
    EXPECT_EQ(bitsThatShow(Skipping, call), Trace::Detail);
    EXPECT_EQ(bitsThatShow(returning("text\n"), call), Trace::Detail);
}

TEST(fgets, EndsSilentlyAtTheEndOfTheFile)
{
    const TextStream stream("");
    char buffer[] = "as it was";
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_fgets(buffer, 10, stream), nullptr); }),
              (TraceLog{entry(Function), leave(Function, nullptr)}));
    EXPECT_STREQ(buffer, "as it was");
    std::FILE *folder = std::fopen("/tmp", "rb");
    EXPECT_EQ(DOV0_fgets(buffer, 10, folder), nullptr);
    std::fclose(folder);
}

TEST(fgets, TakesAFailedDetectionForNoMark)
{
    languageStandIn().detectSignature = U_INVALID_STATE_ERROR;
    const TextStream stream("\xEF\xBB\xBFtext\n");
    char buffer[32] = "";
    EXPECT_EQ(DOV0_fgets(buffer, 32, stream), buffer);
    EXPECT_STREQ(buffer, "\xEF\xBB\xBFtext\n");
}

TEST(fgets, ReadsNothingIntoNothing)
{
    const TextStream stream("text\n");
    char buffer[] = "as it was";
    EXPECT_EQ(DOV0_fgets(nullptr, 10, stream), nullptr);
    EXPECT_EQ(DOV0_fgets(buffer, 0, stream), nullptr);
    EXPECT_EQ(DOV0_fgets(buffer, -4, stream), nullptr);
    EXPECT_EQ(DOV0_fgets(buffer, 10, nullptr), nullptr);
    EXPECT_STREQ(buffer, "as it was");
}
