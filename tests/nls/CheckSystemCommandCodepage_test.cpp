#include "support/trace_recorder.h"

#include "dov0610_platform.h"

#include <gtest/gtest.h>
#include <map>

namespace {

constexpr char Function[] = "DOV0_CheckSystemCommandCodepage";
constexpr int32_t German = 0x0407;

} // namespace

TEST(CheckSystemCommandCodepage, KnowsTheCodePageThatGoesWithEachWindowsOne)
{
    const std::map<int32_t, int32_t> table = {{1252, 850}, {1253, 851}, {1250, 852}, {1254, 853},
                                              {1255, 856}, {1256, 864}, {1251, 866}, {1257, 865}};
    for (int32_t codepage = -2000; codepage <= 70000; ++codepage) {
        const auto found = table.find(codepage);
        EXPECT_EQ(DOV0_CheckSystemCommandCodepage(codepage, German),
                  found != table.end() ? found->second : codepage);
    }
    EXPECT_EQ(DOV0_CheckSystemCommandCodepage(INT32_MAX, 0), INT32_MAX);
    EXPECT_EQ(DOV0_CheckSystemCommandCodepage(INT32_MIN, 0), INT32_MIN);
}

TEST(CheckSystemCommandCodepage, Replaces850ForGreekAndTurkish)
{
    for (const int32_t language : {19660825, 51904551}) {
        EXPECT_EQ(DOV0_CheckSystemCommandCodepage(1252, language), 737);
        EXPECT_EQ(DOV0_CheckSystemCommandCodepage(850, language), 737); // also one that stays as it is
        EXPECT_EQ(DOV0_CheckSystemCommandCodepage(1253, language), 851);
        EXPECT_EQ(DOV0_CheckSystemCommandCodepage(1254, language), 853);
        EXPECT_EQ(DOV0_CheckSystemCommandCodepage(437, language), 437);
        EXPECT_EQ(DOV0_CheckSystemCommandCodepage(0, language), 0);
    }
    EXPECT_EQ(LNG2_LANGUAGE_GREEK, 19660825);
    EXPECT_EQ(LNG2_LANGUAGE_TURKISH, 51904551);
    for (const int32_t language : {0, -1, 0x0408, 0x041F, 0x0019, 0x0027, 0x012C0018, 0x03180028}) {
        EXPECT_EQ(DOV0_CheckSystemCommandCodepage(1252, language), 850);
    }
}

TEST(CheckSystemCommandCodepage, TracesEntryAndExitAlone)
{
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_CheckSystemCommandCodepage(1251, German); }),
              (TraceLog{entry(Function), leave(Function, 866)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [] { DOV0_CheckSystemCommandCodepage(1251, German); }),
              TraceLog{});
}
