#include "nls/language_stand_in.h"
#include "support/trace_recorder.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

namespace {

constexpr char Function[] = "DOV0_UTF8ConverterInitialization";

TraceLog initialized(uint32_t level)
{
    return traceAt(level, [] { DOV0_UTF8ConverterInitialization(nullptr); });
}

} // namespace

TEST(UTF8ConverterInitialization, ReportsTheConverterAsADetail)
{
    const TraceLog expected = {entry(Function), message(Function, "*INFO: Standard code converter created\n"),
                               leave(Function)};
    EXPECT_EQ(initialized(Trace::All), expected);
    EXPECT_EQ(initialized(Trace::All & ~Trace::Detail), (TraceLog{entry(Function), leave(Function)}));
    EXPECT_EQ(bitsThatShow(expected[1], [] { DOV0_UTF8ConverterInitialization(nullptr); }), Trace::Detail);
}

TEST(UTF8ConverterInitialization, ReportsAFailureAsAnError)
{
    languageStandIn().openConverter = [](const std::string &name) {
        return name == "UTF8" ? U_FILE_ACCESS_ERROR : U_ZERO_ERROR;
    };
    const TraceLog expected = {entry(Function),
                               message(Function, "*ERROR: Create standard converter failed, Status %d <%s>\n",
                                       4, "U_FILE_ACCESS_ERROR"),
                               leave(Function)};
    EXPECT_EQ(initialized(Trace::All), expected);
    EXPECT_EQ(bitsThatShow(expected[1], [] { DOV0_UTF8ConverterInitialization(nullptr); }), Trace::Error);
}

TEST(UTF8ConverterInitialization, IsRunOnceByWhateverNeedsTheConverterFirst)
{
    const char16_t text[] = u"x";
    char output[8];
    const auto call = [&] { EXPECT_EQ(DOV0_ConvertUnicodeToUTF8(text, 1, output, 8), 1); };
    EXPECT_EQ(from(Function, traceAt(Trace::All, call)),
              (TraceLog{entry(Function), message(Function, "*INFO: Standard code converter created\n"),
                        leave(Function)}));
    EXPECT_EQ(from(Function, traceAt(Trace::All, call)), TraceLog{});
    EXPECT_EQ(convertersOpen(), 1);
}

TEST(UTF8ConverterInitialization, IsNotTriedAgainAfterAFailure)
{
    int attempts = 0;
    languageStandIn().openConverter = [&](const std::string &) {
        ++attempts;
        return U_FILE_ACCESS_ERROR;
    };
    char output[8] = "unused";
    char16_t *units = nullptr;
    EXPECT_EQ(DOV0_ConvertUnicodeToUTF8(u"x", 1, output, 8), 0);
    EXPECT_STREQ(output, "unused");
    languageStandIn().openConverter = nullptr;
    EXPECT_EQ(DOV0_ConvertUnicodeToUTF8(u"x", 1, output, 8), 0);
    EXPECT_EQ(DOV0_GetUTF8CharacterCount("x", 1, &units), 0);
    EXPECT_EQ(units, nullptr);
    EXPECT_EQ(attempts, 1);
}

TEST(UTF8ConverterInitialization, LeavesOneConverterHoweverOftenItIsCalled)
{
    for (int i = 0; i < 10; ++i) {
        DOV0_UTF8ConverterInitialization(nullptr);
    }
    EXPECT_EQ(convertersOpen(), 1);
    EXPECT_EQ(DOV0_GetUTF8CharacterCount("abc", 3, nullptr), 3);
}
