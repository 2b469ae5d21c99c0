// Which levels a list gives to which functions.
#include "platform/trace_file.h"

#include <gmock/gmock.h>

namespace {

uint32_t levelUnder(const char *list, const char *file = "dov0gsto", const char *function = "DOV0_GetStorage")
{
    setenv("DOV_TRACE", list, 1);
    HostFunction host(file, function);
    return TRC1_Sync(&host.block);
}

// As above for a list set while the process runs; -1 when it is refused.
int64_t levelAfter(const char *list, const char *file = "dov0gsto", const char *function = "DOV0_GetStorage")
{
    if (TRC1_Configure(list, nullptr) != 0) {
        return -1;
    }
    HostFunction host(file, function);
    return TRC1_Sync(&host.block);
}

} // namespace

TEST(TraceLevels, AreZeroWhenNothingIsSet)
{
    unsetenv("DOV_TRACE");
    HostFunction host("dov0gsto", "DOV0_GetStorage");
    EXPECT_EQ(TRC1_Sync(&host.block), 0U);
}

TEST(TraceLevels, ComeFromTheEnvironment)
{
    EXPECT_EQ(levelUnder("error+flow"), 0xC0U);
}

TEST(TraceLevels, HaveNames)
{
    const std::pair<const char *, int64_t> names[] = {
        {"detail", 0x01},    {"storage", 0x02},
        {"dump", 0x0C},      {"state", 0x10},
        {"flow", 0x40},      {"error", 0x80},
        {"config", 0x100},   {"none", 0},
        {"all", 0x1DF},      {"detail+error", 0x81},
        {"none+flow", 64},   {"", 0},
        {"  ", 0},           {" error + detail ", 0x81},
        {"flow+flow", 0x40},
    };
    for (const auto &[list, level] : names) {
        EXPECT_EQ(levelAfter(list), level) << list;
    }
}

TEST(TraceLevels, HaveNumbers)
{
    const std::pair<const char *, int64_t> numbers[] = {
        {"0", 0},
        {"1", 1},
        {"192", 192},
        {"0xC0", 0xC0},
        {"0X1f", 0x1F},
        {"0x5", 5},
        {"007", 7},
        {"4294967295", 0xFFFFFFFFLL},
        {"0xFFFFFFFF", 0xFFFFFFFFLL},
        {"4294967296", -1},
        {"0x100000000", -1},
        {"99999999999999999999999999", -1},
        {"0x", -1},
        {"0x:1", -1}, // between the figures and the letters
        {"0x@", -1},
        {"0xG", -1},
        {"0x`", -1},
        {"0xg", -1},
        {"12a", -1},
        {"-1", -1},
        {"1+2", -1},
        {"error+1", -1},
    };
    for (const auto &[list, level] : numbers) {
        EXPECT_EQ(levelAfter(list), level) << list;
    }
}

TEST(TraceLevels, GoToEverythingAFileOrAFunction)
{
    EXPECT_EQ(levelAfter("=error"), 0x80);
    EXPECT_EQ(levelAfter("dov0gsto=detail"), 0x01);
    EXPECT_EQ(levelAfter("dov0gsto=detail", "dov0fsto", "DOV0_FreeStorage"), 0);
    EXPECT_EQ(levelAfter("DOV0_GetStorage=flow"), 0x40);
    EXPECT_EQ(levelAfter("DOV0_GetStorage=flow", "dov0fsto", "DOV0_FreeStorage"), 0);
    EXPECT_EQ(levelAfter("DOV0_getstorage=flow"), 0) << "names are compared exactly";
    EXPECT_EQ(levelAfter("DOV0_GetStor=flow"), 0);
    EXPECT_EQ(levelAfter("DOV0_GetStorageX=flow"), 0);
}

TEST(TraceLevels, PreferTheMoreSpecificEntryAndThenTheLater)
{
    EXPECT_EQ(levelAfter("error,flow"), 0x40);
    EXPECT_EQ(levelAfter("dov0gsto=detail,error"), 0x01);
    EXPECT_EQ(levelAfter("DOV0_GetStorage=storage,dov0gsto=detail,error"), 0x02);
    EXPECT_EQ(levelAfter("dov0gsto=detail,dov0gsto=state"), 0x10);
    EXPECT_EQ(levelAfter("error,DOV0_GetStorage=none"), 0);
    EXPECT_EQ(levelAfter("error , DOV0_GetStorage = none , dov0gsto = all"), 0);
    EXPECT_EQ(levelAfter("error,dov0fsto=all"), 0x80);
}

TEST(TraceLevels, RefuseMalformedLists)
{
    for (const char *list : {",", "error,", ",error", "error,,flow", "errors", "error+", "+error",
                             "error++flow", "a=b=c", "dov0gsto=", "=", "dov0 gsto=error", "dov0*=error",
                             "DOV0_GetStorage:error", "*=error", "error;flow", "Error", "\xC3\xA4=error"}) {
        EXPECT_EQ(levelAfter(list), -1) << list;
    }
}

TEST(TraceLevels, OfAMalformedEnvironmentAreTheRestOfTheListAndAreReportedOnce)
{
    const TraceFile file;
    file.nameInEnvironment();
    EXPECT_EQ(levelUnder("flaw,DOV0_GetStorage=error,dov0*=all,dov0gsto=detail"), 0x80U);
    EXPECT_EQ(levelUnder("never read again", "dov0gsto", "DOV0_Other"), 0x01U);
    const std::vector<TraceLine> lines = file.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].text, "*****Error: malformed in DOV_TRACE, ignored: <flaw> <dov0*=all>");
}

TEST(TraceLevels, AreReadFromListsOfAnyLength)
{
    std::string list;
    for (int i = 0; i < 20000; ++i) {
        list += "DOV0_Function" + std::to_string(i) + "=" + std::to_string(i) + ",";
    }
    EXPECT_EQ(levelAfter((list + "flow").c_str(), "dov0none", "DOV0_Function19999"), 19999);
    EXPECT_EQ(levelAfter((list + "flow").c_str(), "dov0none", "DOV0_Function20000"), 0x40);
    EXPECT_EQ(levelAfter((list + "flaw").c_str()), -1);
    EXPECT_EQ(levelAfter(std::string(100000, ',').c_str()), -1);
    EXPECT_EQ(levelAfter(std::string(100000, 'x').c_str()), -1);
}

TEST(TraceLevels, ReachEveryFunctionAtItsNextCall)
{
    const TraceFile file;
    ASSERT_EQ(TRC1_Configure("none", file.name().c_str()), 0);
    DOV0_GetStorage(0);
    ASSERT_EQ(TRC1_Configure("error", file.name().c_str()), 0);
    DOV0_GetStorage(0);
    ASSERT_EQ(TRC1_Configure("none", file.name().c_str()), 0);
    DOV0_GetStorage(0);
    EXPECT_THAT(file.texts(), testing::ElementsAre("DOV0_GetStorage *****Invalid get storage size 0"));
}

TEST(TraceLevels, AreStoredInTheBlockWithTheGeneration)
{
    HostFunction host("dov0gsto", "DOV0_GetStorage");
    ASSERT_EQ(TRC1_Configure("flow", nullptr), 0);
    EXPECT_EQ(TRC1_Sync(&host.block), 0x40U);
    EXPECT_EQ(host.block.level, 0x40U);
    EXPECT_EQ(host.block.generation, *host.block.generationWord);
    const int32_t before = host.block.generation;
    ASSERT_EQ(TRC1_Configure("error", nullptr), 0);
    EXPECT_EQ(host.block.generation, before);
    EXPECT_NE(host.block.generation, *host.block.generationWord);
    EXPECT_EQ(TRC1_Sync(&host.block), 0x80U);
    EXPECT_EQ(host.block.generation, *host.block.generationWord);
}
