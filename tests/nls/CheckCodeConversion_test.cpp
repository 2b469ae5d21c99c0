#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <cctype>
#include <unicode/ucnv.h>
#include <unicode/uloc.h>

namespace {

constexpr char Function[] = "DOV0_CheckCodeConversion";

void setLocale(const char *name)
{
    UErrorCode status = U_ZERO_ERROR;
    uloc_setDefault(name, &status);
    ASSERT_TRUE(U_SUCCESS(status)) << name;
}

} // namespace

TEST(CheckCodeConversion, TakesASCIIDataAsItStandsUnderAnEnglishLocale)
{
    for (const char *locale : {"en_US", "en_GB", "en_US_POSIX"}) {
        setLocale(locale);
        EXPECT_EQ(DOV0_CheckCodeConversion(DOV0_SOURCE_ASCII, nullptr), 0) << locale;
        EXPECT_EQ(DOV0_CheckCodeConversion(DOV0_SOURCE_ASCII, ucnv_getDefaultName()), 0) << locale;
    }
}

TEST(CheckCodeConversion, ConvertsUnderAnyOtherLocale)
{
    for (const char *locale : {"fr_FR", "de_DE", "en", "zh_Hant_TW", "C"}) {
        setLocale(locale);
        EXPECT_EQ(std::string(uloc_getDefault()).find("en_"), std::string::npos) << locale;
        EXPECT_EQ(DOV0_CheckCodeConversion('A', nullptr), 1) << locale;
        EXPECT_EQ(DOV0_CheckCodeConversion('A', ucnv_getDefaultName()), 1) << locale;
    }
}

TEST(CheckCodeConversion, LooksForTheLocaleAnywhereInTheName)
{
    setLocale("men_SL"); // another language, whose name holds "en_"
    EXPECT_EQ(DOV0_CheckCodeConversion('A', nullptr), 0);
}

TEST(CheckCodeConversion, ComparesTheCodePageExactly)
{
    setLocale("en_US");
    const std::string name = ucnv_getDefaultName();
    EXPECT_EQ(DOV0_CheckCodeConversion('A', GuardedBuffer(name).text()), 0);
    std::string otherCase = name;
    for (char &character : otherCase) {
        character = static_cast<char>(std::islower(character) != 0 ? std::toupper(character)
                                                                   : std::tolower(character));
    }
    for (const std::string &other :
         {otherCase, name + "x", name.substr(1), std::string("x"), std::string()}) {
        ASSERT_NE(other, name);
        EXPECT_EQ(DOV0_CheckCodeConversion('A', GuardedBuffer(other).text()), 1) << other;
    }
}

TEST(CheckCodeConversion, ConvertsDataOfEveryOtherType)
{
    setLocale("en_US");
    for (int type = -128; type < 128; ++type) {
        EXPECT_EQ(DOV0_CheckCodeConversion(static_cast<char>(type), nullptr), type == 'A' ? 0 : 1) << type;
        EXPECT_EQ(DOV0_CheckCodeConversion(static_cast<char>(type), ucnv_getDefaultName()),
                  type == 'A' ? 0 : 1)
            << type;
        EXPECT_EQ(DOV0_CheckCodeConversion(static_cast<char>(type), "x"), 1) << type;
    }
}

TEST(CheckCodeConversion, TracesInputDefaultsAndDecision)
{
    for (const char *locale : {"en_US", "fr_FR"}) {
        setLocale(locale);
        const char *name = ucnv_getDefaultName();
        const std::string defaults =
            message(Function, "Local default codepage <%s> locale <%s>\n", name, locale);
        const std::string required = message(Function, "Data conversion required\n");
        const bool english = std::string(locale) == "en_US";
        const std::string decision = english ? message(Function, "No data conversion required\n") : required;
        const intptr_t result = english ? 0 : 1;
        EXPECT_EQ(
            traceAt(Trace::All, [&] { DOV0_CheckCodeConversion('A', name); }),
            (TraceLog{entry(Function), message(Function, "Received type <%c> codepage <%s>\n", 'A', name),
                      defaults, decision, leave(Function, result)}));
        EXPECT_EQ(traceAt(Trace::All, [] { DOV0_CheckCodeConversion('A', nullptr); }),
                  (TraceLog{entry(Function), defaults, decision, leave(Function, result)}));
        EXPECT_EQ(
            traceAt(Trace::All, [] { DOV0_CheckCodeConversion('E', "x"); }),
            (TraceLog{entry(Function), message(Function, "Received type <%c> codepage <%s>\n", 'E', "x"),
                      defaults, required, leave(Function, 1)}));
    }
}

TEST(CheckCodeConversion, TracesMessagesUnderTheDetailBitOnly)
{
    setLocale("en_US");
    const char *name = ucnv_getDefaultName();
    const auto kept = [&] { DOV0_CheckCodeConversion('A', name); };
    const auto converted = [] { DOV0_CheckCodeConversion('E', "x"); };
    EXPECT_EQ(bitsThatShow(message(Function, "Received type <A> codepage <%s>\n", name), kept),
              Trace::Detail);
    EXPECT_EQ(bitsThatShow(message(Function, "Local default codepage <%s> locale <en_US>\n", name), kept),
              Trace::Detail);
    EXPECT_EQ(bitsThatShow(message(Function, "No data conversion required\n"), kept), Trace::Detail);
    EXPECT_EQ(bitsThatShow(message(Function, "Data conversion required\n"), converted), Trace::Detail);
    EXPECT_EQ(traceAt(Trace::All & ~(Trace::Detail | Trace::Flow), kept), TraceLog{});
}
