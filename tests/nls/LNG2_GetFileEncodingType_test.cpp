#include "support/trace_recorder.h"

#include <gtest/gtest.h>

namespace {

constexpr char Function[] = "DOV0_LNG2_GetFileEncodingType";

} // namespace

TEST(LNG2_GetFileEncodingType, KnowsSixNames)
{
    EXPECT_EQ(DOV0_LNG2_GetFileEncodingType("UTF-16"), 0x02);
    EXPECT_EQ(DOV0_LNG2_GetFileEncodingType("UTF-16BE"), 0x12);
    EXPECT_EQ(DOV0_LNG2_GetFileEncodingType("UTF-16LE"), 0x0A);
    EXPECT_EQ(DOV0_LNG2_GetFileEncodingType("UTF-32"), 0x04);
    EXPECT_EQ(DOV0_LNG2_GetFileEncodingType("UTF-32BE"), 0x14);
    EXPECT_EQ(DOV0_LNG2_GetFileEncodingType("UTF-32LE"), 0x0C);
}

TEST(LNG2_GetFileEncodingType, TakesEveryOtherNameForSingleBytes)
{
    for (const char *name : {"UTF-8", "utf-16", "UTF16", "UTF-16 ", " UTF-16", "UTF-16le", "UTF-16LEX",
                             "UTF-7", "", "ISO-8859-1", "UTF-3", "UTF-320"}) {
        EXPECT_EQ(DOV0_LNG2_GetFileEncodingType(name), 0) << name;
    }
    EXPECT_EQ(DOV0_LNG2_GetFileEncodingType(nullptr), 0);
}

TEST(LNG2_GetFileEncodingType, TracesTheNameAsADetail)
{
    const std::string named = message(Function, "Getting UTF type for encoding <%s>\n", "UTF-16LE");
    const auto call = [] { DOV0_LNG2_GetFileEncodingType("UTF-16LE"); };
    EXPECT_EQ(traceAt(Trace::All, call), (TraceLog{entry(Function), named, leave(Function, intptr_t{10})}));
    EXPECT_EQ(bitsThatShow(named, call), Trace::Detail);

    const std::string none = message(Function, "No encoding value supplied\n");
    const auto callWithoutName = [] { DOV0_LNG2_GetFileEncodingType(nullptr); };
    EXPECT_EQ(traceAt(Trace::All, callWithoutName),
              (TraceLog{entry(Function), none, leave(Function, intptr_t{0})}));
    EXPECT_EQ(bitsThatShow(none, callWithoutName), Trace::Detail);
}
