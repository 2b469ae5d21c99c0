#include "support/program.h"

#include <gtest/gtest.h>

namespace {

ProgramResult show(const std::string &locale, const std::string &arguments)
{
    return runProgram("env LC_ALL=" + locale + " DOVP_RB_PATH=" CATALOGUE " " OPERATOR_MESSAGE " " +
                      arguments);
}

} // namespace

TEST(OperatorMessage, SpeaksTheLanguageOfTheLocale)
{
    const std::pair<const char *, const char *> languages[] = {
        {"C", "DOVPS403E - node reports error genErr at variable 2.\n"},
        {"en_GB.UTF-8", "DOVPS403E - node reports error genErr at variable 2.\n"},
        {"sv_SE.UTF-8", "DOVPS403E - node reports error genErr at variable 2.\n"}, // not translated
        {"de_DE.UTF-8", "DOVPS403E - node meldet Fehler genErr bei Variable 2.\n"},
        {"de_AT", "DOVPS403E - node meldet Fehler genErr bei Variable 2.\n"},
        {"fr_CA.UTF-8", "DOVPS403E - node signale l'erreur genErr \u00E0 la variable 2.\n"},
        {"ja_JP.UTF-8", "DOVPS403E - node \u304C\u5909\u6570 2 \u3067\u30A8\u30E9\u30FC genErr "
                        "\u3092\u5831\u544A\u3057\u307E\u3057\u305F\u3002\n"},
    };
    for (const auto &[locale, text] : languages) {
        const ProgramResult result = show(locale, "S 403 node genErr 2");
        EXPECT_EQ(result.status, 0) << locale;
        EXPECT_EQ(result.output, text) << locale;
        EXPECT_EQ(result.errors, "") << locale;
    }
}

TEST(OperatorMessage, ShowsMessagesOfEachClass)
{
    EXPECT_EQ(show("C", "A 101 inst1").output, "DOVPA101I - Agent inst1 is ending.\n");
    EXPECT_EQ(show("C", "G 201 records").output, "DOVPG201E - There is no storage for records.\n");
    EXPECT_EQ(show("C", "L 300 f \"no such file\"").output,
              "DOVPL300E - File f cannot be read: no such file.\n");
    EXPECT_EQ(show("C", "V 500").output, "DOVPV500E - Host ? has no address.\n");
}

TEST(OperatorMessage, RefusesWhatIsNoMessage)
{
    for (const char *arguments :
         {"", "A", "X 1", "AG 1", "A x", "A -1", "A 12345678", "A 100 1 2 3 4 5 6", "'' 1"}) {
        const ProgramResult result = show("C", arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_EQ(result.output, "") << arguments;
        EXPECT_NE(result.errors.find("usage: operator_message"), std::string::npos) << arguments;
    }
    const ProgramResult result = show("C", "A 999");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "operator_message: there is no such message; DOV_TRACE=error tells why\n");
}

TEST(OperatorMessage, TellsThatTheCatalogueIsMissing)
{
    const ProgramResult result = runProgram("env DOVP_RB_PATH=/nowhere " OPERATOR_MESSAGE " A 100");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output,
              "DOVPV599E - ERROR: Could not find any dovpmsg resource bundles in directory /nowhere\n"
              "Error code is U_MISSING_RESOURCE_ERROR\n");
}
