#include "nls/language_stand_in.h"
#include "nls/text_file.h"
#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

constexpr char Function[] = "DOV0_LNG2_GetFileEncoding";

struct Found {
    std::string encoding;
    int32_t markLength;
    std::string mark;
    bool operator==(const Found &other) const = default;
};

std::ostream &operator<<(std::ostream &stream, const Found &found)
{
    return stream << found.encoding << " " << found.markLength;
}

Found found(const char *path)
{
    int32_t length = -1;
    GuardedBuffer mark(4);
    const char *encoding = DOV0_LNG2_GetFileEncoding(path, &length, mark.bytes());
    return {encoding != nullptr ? encoding : "none", length, std::string(mark.text(), 4)};
}

Found foundIn(const std::string &bytes)
{
    return found(TextFile(bytes).path());
}

std::string text(const char *bytes, size_t count)
{
    return std::string(bytes, count);
}

int openDescriptors()
{
    int count = 0;
    for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        ++count;
    }
    return count;
}

const Found Nothing = {"none", 0, std::string(4, '\0')};

} // namespace

TEST(LNG2_GetFileEncoding, KnowsTheMarks)
{
    EXPECT_EQ(foundIn("\xEF\xBB\xBFtext"), (Found{"UTF-8", 3, text("\xEF\xBB\xBF\0", 4)}));
    EXPECT_EQ(foundIn(text("\xFF\xFE\x41\0", 4)), (Found{"UTF-16LE", 2, text("\xFF\xFE\0\0", 4)}));
    EXPECT_EQ(foundIn(text("\xFE\xFF\0\x41", 4)), (Found{"UTF-16BE", 2, text("\xFE\xFF\0\0", 4)}));
    EXPECT_EQ(foundIn(text("\xFF\xFE\0\0A\0\0\0", 8)), (Found{"UTF-32LE", 4, text("\xFF\xFE\0\0", 4)}));
    EXPECT_EQ(foundIn(text("\0\0\xFE\xFF\0\0\0A", 8)), (Found{"UTF-32BE", 4, text("\0\0\xFE\xFF", 4)}));
    EXPECT_EQ(foundIn("\x0E\xFE\xFFtext"), (Found{"SCSU", 3, text("\x0E\xFE\xFF\0", 4)}));
    EXPECT_EQ(foundIn("+/v8-text"), (Found{"UTF-7", 5, "+/v8"})); // a mark longer than its record
}

TEST(LNG2_GetFileEncoding, KnowsMarksInShortFiles)
{
    EXPECT_EQ(foundIn("\xEF\xBB\xBF"), (Found{"UTF-8", 3, text("\xEF\xBB\xBF\0", 4)}));
    EXPECT_EQ(foundIn("\xFF\xFE"),
              (Found{"UTF-16LE", 2, text("\xFF\xFE\0\0", 4)})); // no zeros follow in the file
    EXPECT_EQ(foundIn("\xEF\xBB"), Nothing);
    EXPECT_EQ(foundIn("\xFF"), Nothing);
    EXPECT_EQ(foundIn(text("\0\0\xFE", 3)), Nothing);
}

TEST(LNG2_GetFileEncoding, FindsNothingInPlainFiles)
{
    EXPECT_EQ(foundIn("plain text"), Nothing);
    EXPECT_EQ(foundIn(std::string(100, 'x')), Nothing);
    EXPECT_EQ(foundIn(std::string(20, '\0')), Nothing);
    EXPECT_EQ(foundIn(""), Nothing);
    EXPECT_EQ(found("/nowhere/at/all"), Nothing);
    EXPECT_EQ(found("/tmp"), Nothing); // a directory
    EXPECT_EQ(found(nullptr), Nothing);
}

TEST(LNG2_GetFileEncoding, TakesNullForWhatTheCallerDoesNotWant)
{
    const TextFile file("\xEF\xBB\xBFtext");
    EXPECT_STREQ(DOV0_LNG2_GetFileEncoding(file.path(), nullptr, nullptr), "UTF-8");
    EXPECT_EQ(DOV0_LNG2_GetFileEncoding("/nowhere", nullptr, nullptr), nullptr);
}

TEST(LNG2_GetFileEncoding, TracesTheMarkAsDetails)
{
    const TextFile file("\xEF\xBB\xBFtext");
    const char *encoding = nullptr;
    int32_t length = 0;
    unsigned char mark[4];
    const auto call = [&] { encoding = DOV0_LNG2_GetFileEncoding(file.path(), &length, mark); };
    const TraceLog log = traceAt(Trace::All, call);
    const TraceLog expected = {entry(Function),
                               message(Function, "Encoding is %s  \n", "UTF-8"),
                               message(Function, "Byte order mark length is %d \n", 3),
                               message(Function, "bom[0] is %x \n", 0xEFU),
                               message(Function, "bom[1] is %x \n", 0xBBU),
                               message(Function, "bom[2] is %x \n", 0xBFU),
                               message(Function, "bom[3] is %x \n", 0U),
                               leave(Function, encoding)};
    EXPECT_EQ(log, expected);
    EXPECT_EQ(traceAt(Trace::Detail, call), TraceLog(expected.begin() + 1, expected.end() - 1));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Detail, call), (TraceLog{expected.front(), expected.back()}));
}

TEST(LNG2_GetFileEncoding, TracesAPlainFileWithANullName)
{
    const TextFile file("plain");
    int32_t length = 0;
    unsigned char mark[4];
    EXPECT_EQ(
        traceAt(Trace::All, [&] { DOV0_LNG2_GetFileEncoding(file.path(), &length, mark); }),
        (TraceLog{entry(Function), message(Function, "Encoding is (null)  \n"),
                  message(Function, "Byte order mark length is 0 \n"), message(Function, "bom[0] is 0 \n"),
                  message(Function, "bom[1] is 0 \n"), message(Function, "bom[2] is 0 \n"),
                  message(Function, "bom[3] is 0 \n"), leave(Function, nullptr)}));
}

TEST(LNG2_GetFileEncoding, TracesNothingWhenThereIsNothingToLookAt)
{
    const TextFile empty("");
    const TraceLog expected = {entry(Function), leave(Function, nullptr)};
    for (const char *path : {empty.path(), "/nowhere/at/all", "/tmp"}) {
        EXPECT_EQ(traceAt(Trace::All, [&] { found(path); }), expected);
    }
    languageStandIn().detectSignature = U_INVALID_STATE_ERROR;
    const TextFile marked("\xEF\xBB\xBFtext");
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(found(marked.path()), Nothing); }), expected);
}

TEST(LNG2_GetFileEncoding, LeavesOnlyTheStreamOfAnEmptyFileOpen)
{
    const int before = openDescriptors();
    const TextFile marked("\xEF\xBB\xBFtext");
    for (int i = 0; i < 5; ++i) {
        found(marked.path());
        found("/nowhere/at/all");
    }
    EXPECT_EQ(openDescriptors(), before);
    const TextFile empty("");
    found(empty.path());
    EXPECT_EQ(openDescriptors(), before + 1);
    found(empty.path());
    EXPECT_EQ(openDescriptors(), before + 2);
}
