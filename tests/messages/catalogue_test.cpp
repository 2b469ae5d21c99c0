#include "nls/message_folder.h"
#include "support/program.h"

#include <gtest/gtest.h>

namespace {

// What the check says about a catalogue of a root bundle and, where it is given, a German one.
ProgramResult check(const std::string &root, const std::string &german = "")
{
    const MessageFolder folder;
    folder.add("root", root);
    std::string locales = " root";
    if (!german.empty()) {
        folder.add("de", german);
        locales += " de";
    }
    return runProgram(CHECK_CATALOGUE " " + folder.bundle() + locales);
}

void expectProblems(const ProgramResult &result, const std::string &problems)
{
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, problems);
}

} // namespace

TEST(Catalogue, OfTheProjectIsInOrder)
{
    const ProgramResult result = runProgram(CHECK_CATALOGUE " " CATALOGUE "/dovpmsg root en de fr ja");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "message catalogue: 5 locales, 21 messages\n");
}

TEST(Catalogue, MayHaveEmptyLocales)
{
    const ProgramResult result = check("DOVPA1 { \"x {0}\" } DOVPV9999999 { \"y\" } DOVPG0 { \"z\" }", " ");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "message catalogue: 2 locales, 3 messages\n");
}

TEST(Catalogue, FindsWrongKeys)
{
    for (const char *key : {"DOVPB1", "DOVPA", "DOVPA01", "DOVPA12345678", "DOVPA1x", "dovpa1", "DOVPAA1",
                            "XDOVPA1", "DOVPA-1", "DOVPE1", "Version"}) {
        expectProblems(check("DOVPA1 { \"x\" } " + std::string(key) + " { \"y\" }"),
                       std::string("root: ") + key +
                           ": is no key of a message (DOVP, one of AGLSV, a number)\n"
                           "message catalogue: 1 problems\n");
    }
}

TEST(Catalogue, FindsWhatLocalesLack)
{
    expectProblems(
        check("DOVPA1 { \"x\" } DOVPA2 { \"y\" }", "DOVPA1 { \"x\" } DOVPA3 { \"z\" }"),
        "de: DOVPA2: is missing\nde: DOVPA3: is in this locale only\nmessage catalogue: 2 problems\n");
}

TEST(Catalogue, FindsOtherParameters)
{
    expectProblems(check("DOVPA1 { \"{0} {1}\" }", "DOVPA1 { \"{0}\" }"),
                   "de: DOVPA1: has other parameters\nmessage catalogue: 1 problems\n");
    EXPECT_EQ(check("DOVPA1 { \"{0} {1}\" }", "DOVPA1 { \"{1} {0} {1}\" }").status, 0);
}

TEST(Catalogue, FindsPatternsThatTextsCannotBePutInto)
{
    const struct {
        const char *pattern;
        const char *status;
    } patterns[] = {{"{0", "U_UNMATCHED_BRACES"},
                    {"{x y}", "U_PATTERN_SYNTAX_ERROR"},
                    {"{5}", "U_INDEX_OUTOFBOUNDS_ERROR"},
                    {"{name}", "U_ARGUMENT_TYPE_MISMATCH"},
                    {"{0,number}", "U_ARGUMENT_TYPE_MISMATCH"}};
    for (const auto &pattern : patterns) {
        expectProblems(check("DOVPA1 { \"" + std::string(pattern.pattern) + "\" }"),
                       std::string("root: DOVPA1: is no pattern for five texts: ") + pattern.status +
                           "\nmessage catalogue: 1 problems\n");
    }
}

TEST(Catalogue, FindsEntriesThatAreNoMessages)
{
    expectProblems(check("DOVPA1 { \"x\" } DOVPA2 { A { \"a table\" } }"),
                   "root: DOVPA2: is no text\nmessage catalogue: 1 problems\n");
    expectProblems(check("DOVPA1 { \"\" } DOVPA2 { \"" + std::string(2049, 'x') + "\" }"),
                   "root: DOVPA1: has a length of 0\nroot: DOVPA2: has a length of 2049\n"
                   "message catalogue: 2 problems\n");
}

TEST(Catalogue, HasToBeThere)
{
    EXPECT_EQ(runProgram(CHECK_CATALOGUE).status, 2);
    const MessageFolder folder;
    folder.add("root", "DOVPA1 { \"x\" }");
    expectProblems(runProgram(CHECK_CATALOGUE " " + folder.bundle() + " root de"),
                   "de: cannot be opened: U_MISSING_RESOURCE_ERROR\nmessage catalogue: 1 problems\n");
    folder.add("fr", " ");
    expectProblems(runProgram(CHECK_CATALOGUE " " + folder.bundle() + " fr"),
                   "fr: has no messages\nmessage catalogue: 1 problems\n");
    folder.addRaw("root", "no bundle");
    EXPECT_EQ(runProgram(CHECK_CATALOGUE " " + folder.bundle() + " root").status, 1);
}
