#include "dov0610_platform.h"
#include "support/guarded_buffer.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <unicode/ucnv.h>
#include <vector>

namespace {

constexpr int32_t Untouched = 12345;

int32_t codepageOf(const char *name)
{
    int32_t status = Untouched;
    const int32_t codepage = LNG2_GetCodepageId(name, &status);
    EXPECT_EQ(status, U_ZERO_ERROR) << name;
    return codepage;
}

std::string nameOf(int32_t codepage)
{
    char name[LNG2_CODEPAGE_NAME_SIZE] = "";
    return LNG2_GetCodepageName(codepage, name, sizeof name) == 0 ? name : "none";
}

std::string ownName(const char *name)
{
    UErrorCode error = U_ZERO_ERROR;
    const char *own = ucnv_getAlias(name, 0, &error);
    return own != nullptr ? own : "";
}

} // namespace

TEST(LNG2_GetCodepageId, KnowsTheUnicodeNumbers)
{
    EXPECT_EQ(codepageOf("UTF-8"), 1208);
    EXPECT_EQ(codepageOf("UTF8"), 1208);
    EXPECT_EQ(codepageOf("utf_8"), 1208);
    EXPECT_EQ(codepageOf("UTF-16BE"), 1200);
    EXPECT_EQ(codepageOf("UTF-16"), 1200);
    EXPECT_EQ(codepageOf("UTF-16LE"), 1202);
    EXPECT_EQ(codepageOf("UTF-32BE"), 1232);
    EXPECT_EQ(codepageOf("UTF-32"), 1232);
    EXPECT_EQ(codepageOf("UTF-32LE"), 1234);
}

TEST(LNG2_GetCodepageId, KnowsIbmAndWindowsNumbers)
{
    EXPECT_EQ(codepageOf("ISO-8859-1"), 819);
    EXPECT_EQ(codepageOf("US-ASCII"), 367);
    EXPECT_EQ(codepageOf("IBM850"), 850);
    EXPECT_EQ(codepageOf("cp850"), 850);
    EXPECT_EQ(codepageOf("IBM037"), 37);
    EXPECT_EQ(codepageOf("ibm-1047"), 1047);
    EXPECT_EQ(codepageOf("KOI8-R"), 878);
    EXPECT_EQ(codepageOf("Shift_JIS"), 943);
    EXPECT_EQ(codepageOf("Big5"), 950);
    EXPECT_EQ(codepageOf("GB18030"), 1392);
    for (int32_t n = 1250; n <= 1258; ++n) {
        EXPECT_EQ(codepageOf(("windows-" + std::to_string(n)).c_str()), n);
        EXPECT_EQ(codepageOf(("CP" + std::to_string(n)).c_str()), n);
    }
}

TEST(LNG2_GetCodepageId, RefusesUnknownNames)
{
    for (const char *name : {"no such code set", "", "ibm-853", "cp853", "windows-853"}) {
        int32_t status = Untouched;
        EXPECT_EQ(LNG2_GetCodepageId(name, &status), 0) << name;
        EXPECT_GT(status, 0) << name;
        EXPECT_EQ(LNG2_GetCodepageId(name, nullptr), 0) << name;
    }
    int32_t status = Untouched;
    EXPECT_EQ(LNG2_GetCodepageId("no such code set", &status), 0);
    EXPECT_EQ(status, U_FILE_ACCESS_ERROR);
    EXPECT_EQ(LNG2_GetCodepageId(nullptr, &status), 0);
    EXPECT_EQ(status, U_ILLEGAL_ARGUMENT_ERROR);
    EXPECT_EQ(LNG2_GetCodepageId("HZ", &status), 0); // known, but without a number
    EXPECT_EQ(status, U_UNSUPPORTED_ERROR);
    EXPECT_EQ(LNG2_GetCodepageId("ibm-1047-s390", &status), 0); // 1047 has other line ends
    EXPECT_EQ(status, U_UNSUPPORTED_ERROR);
}

TEST(LNG2_GetCodepageName, GivesTheNamesInUse)
{
    EXPECT_EQ(nameOf(1208), "UTF-8");
    EXPECT_EQ(nameOf(1200), "UTF-16BE");
    EXPECT_EQ(nameOf(1202), "UTF-16LE");
    EXPECT_EQ(nameOf(1232), "UTF-32BE");
    EXPECT_EQ(nameOf(1234), "UTF-32LE");
    EXPECT_EQ(nameOf(819), "ISO-8859-1");
    EXPECT_EQ(nameOf(1252), "windows-1252");
    EXPECT_EQ(nameOf(850), "IBM850");
    EXPECT_EQ(nameOf(367), "US-ASCII");
    EXPECT_EQ(nameOf(853), "none");
    EXPECT_EQ(nameOf(0), "none");
    EXPECT_EQ(nameOf(-1208), "none");
    EXPECT_EQ(nameOf(INT32_MAX), "none");
}

TEST(LNG2_GetCodepageName, KeepsToTheCallersBuffer)
{
    for (int32_t size = -1; size <= 10; ++size) {
        GuardedBuffer buffer(size > 0 ? static_cast<size_t>(size) : 0);
        if (size > 5) {
            EXPECT_EQ(LNG2_GetCodepageName(1208, buffer.text(), size), 0);
            EXPECT_STREQ(buffer.text(), "UTF-8");
        } else {
            EXPECT_EQ(LNG2_GetCodepageName(1208, buffer.text(), size), -1);
            for (int32_t i = 0; i < size; ++i) {
                EXPECT_EQ(buffer.bytes()[i], 0xA5);
            }
        }
    }
    EXPECT_EQ(LNG2_GetCodepageName(1208, nullptr, 100), -1);
}

// ICU's own table is the judge: a number stands for the converter that has it as "windows-N", else as "ibm-N", else as
// "cpN", and for nearly every converter that is the converter itself.
TEST(LNG2_GetCodepageName, LeadsToTheConverterOfEveryNumber)
{
    int same = 0;
    for (int32_t i = 0; i < ucnv_countAvailable(); ++i) {
        const char *name = ucnv_getAvailableName(i);
        int32_t status = Untouched;
        const int32_t codepage = LNG2_GetCodepageId(name, &status);
        if (codepage == 0) {
            EXPECT_EQ(status, U_UNSUPPORTED_ERROR) << name;
            continue;
        }
        const std::string back = nameOf(codepage);
        EXPECT_EQ(codepageOf(back.c_str()), codepage) << name << " " << back;
        const std::string number = std::to_string(codepage);
        std::string expected = codepage == 1200 ? "UTF-16BE" : ownName(("windows-" + number).c_str());
        for (const char *prefix : {"ibm-", "cp"}) {
            expected = expected.empty() ? ownName((prefix + number).c_str()) : expected;
        }
        EXPECT_EQ(ownName(back.c_str()), expected) << name << " " << codepage;
        same += expected == ownName(name) ? 1 : 0;
    }
    EXPECT_GT(same, 150);
}
