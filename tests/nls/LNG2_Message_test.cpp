#include "nls/language_stand_in.h"
#include "nls/message_folder.h"
#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <unicode/uloc.h>
#include <unicode/umsg.h>

namespace {

constexpr char Function[] = "DOV0_LNG2_Message";

template <typename... Arguments> std::string says(const char *format, Arguments... arguments)
{
    return message(Function, format, arguments...);
}

// A catalogue under an English locale, found by DOVP_RB_PATH.
class Catalogue : public MessageFolder {
public:
    explicit Catalogue(const std::string &root)
    {
        UErrorCode error = U_ZERO_ERROR;
        uloc_setDefault("en_US", &error);
        add("root", root);
        setenv("DOVP_RB_PATH", path().c_str(), 1);
    }
};

std::string text(int32_t messageClass, int32_t number, const char *p1 = nullptr, const char *p2 = nullptr,
                 const char *p3 = nullptr, const char *p4 = nullptr, const char *p5 = nullptr,
                 int32_t size = 4096)
{
    GuardedBuffer output(static_cast<size_t>(size));
    DOV0_LNG2_Message(messageClass, output.text(), size, number, p1, p2, p3, p4, p5);
    EXPECT_NE(std::memchr(output.text(), 0, static_cast<size_t>(size)), nullptr) << "not terminated";
    EXPECT_EQ(localesOut(), 0);
    EXPECT_EQ(bundlesOut(), 0);
    return output.text();
}

std::string objectMessage(const char *format, const void *object)
{
    return says(format, object);
}

std::string freeingLocale()
{
    return objectMessage("Freeing LNG2_Locale @%p\n", lastLocale());
}

std::string freeingBundle()
{
    return objectMessage("Freeing LNG2_UResourceBundle @%p\n", lastBundle());
}

// What a call traces behind "Message key is", without the steps that are the same for every message.
TraceLog endOf(const TraceLog &log)
{
    for (size_t i = 0; i < log.size(); ++i) {
        if (log[i].find(": Message key is") != std::string::npos) {
            return TraceLog(log.begin() + static_cast<std::ptrdiff_t>(i) + 1, log.end());
        }
    }
    return {"no key"};
}

void expectErrorOnly(const std::string &complaint, int32_t messageClass, int32_t number)
{
    EXPECT_EQ(traceOf(Function, Trace::Error, [&] { EXPECT_EQ(text(messageClass, number), ""); }),
              TraceLog{complaint});
    EXPECT_EQ(bitsThatShow(complaint, [&] { text(messageClass, number); }), Trace::Error);
}

} // namespace

TEST(LNG2_Message, BuildsTheKeyFromClassAndNumber)
{
    const Catalogue catalogue("DOVPA1 { \"a\" } DOVPG22 { \"g\" } DOVPL333 { \"l\" } DOVPS4444 { \"s\" } "
                              "DOVPV599 { \"v\" } DOVPV9999999 { \"last\" } DOVPV0 { \"zero\" }");
    EXPECT_EQ(text(DOV0_MESSAGE_CLASS_A, 1), "a");
    EXPECT_EQ(text(DOV0_MESSAGE_CLASS_G, 22), "g");
    EXPECT_EQ(text(DOV0_MESSAGE_CLASS_L, 333), "l");
    EXPECT_EQ(text(DOV0_MESSAGE_CLASS_S, 4444), "s");
    EXPECT_EQ(text(DOV0_MESSAGE_CLASS_S_ALSO, 4444), "s");
    EXPECT_EQ(text(DOV0_MESSAGE_CLASS_V, 599), "v");
    EXPECT_EQ(text(6, 9999999), "last");
    EXPECT_EQ(text(6, 0), "zero");
    const char *const keys[] = {"DOVPA7", "DOVPG7", "DOVPL7", "DOVPS7", "DOVPS7", "DOVPV7"};
    for (int32_t messageClass = 1; messageClass <= 6; ++messageClass) {
        const std::string key = says("Message key is %s\n", keys[messageClass - 1]);
        EXPECT_EQ(bitsThatShow(key, [=] { text(messageClass, 7); }), Trace::Detail);
    }
}

TEST(LNG2_Message, PutsTheParametersIn)
{
    const Catalogue catalogue(
        "DOVPV1 { \"{0}-{1}-{2}-{3}-{4}\" } DOVPV2 { \"{4} {0} {0}\" } DOVPV3 { \"'{'0'}' it''s {2}\" } "
        "DOVPV4 { \"{0,select,on{is on}other{is {0}}}\" } DOVPV5 { \"none\" }");
    EXPECT_EQ(text(6, 1, "a", "b", "c", "d", "e"), "a-b-c-d-e");
    EXPECT_EQ(text(6, 1, "a", "b", nullptr, "", "e"), "a-b-?-?-e");
    EXPECT_EQ(text(6, 1), "?-?-?-?-?");
    EXPECT_EQ(text(6, 2, "x", nullptr, nullptr, nullptr, "y"), "y x x");
    EXPECT_EQ(text(6, 3, "a", "b", "c"), "{0} it's c");
    EXPECT_EQ(text(6, 4, "on"), "is on");
    EXPECT_EQ(text(6, 4, "off"), "is off");
    EXPECT_EQ(text(6, 5, "unused"), "none");
    EXPECT_EQ(text(6, 1, "{1}", "caf\xC3\xA9", "\xF0\x9F\x98\x80", "%s", "'"),
              "{1}-caf\xC3\xA9-\xF0\x9F\x98\x80-%s-'");
}

TEST(LNG2_Message, CutsLongParameters)
{
    const Catalogue catalogue("DOVPV1 { \"<{0}>\" }");
    for (const size_t length : {511U, 512U, 513U, 100000U}) {
        const std::string parameter(length, 'p');
        EXPECT_EQ(text(6, 1, parameter.c_str()), "<" + parameter.substr(0, 512) + ">");
    }
}

TEST(LNG2_Message, CutsALongMessage)
{
    const Catalogue catalogue("DOVPV1 { \"{0}{1}{2}{3}{4}\" }");
    const std::string p(512, 'x');
    EXPECT_EQ(text(6, 1, p.c_str(), p.c_str(), p.c_str(), p.c_str(), "yz"), std::string(2048, 'x'));
    const std::string q(511, 'x');
    EXPECT_EQ(text(6, 1, p.c_str(), p.c_str(), p.c_str(), q.c_str(), "y"), std::string(2047, 'x') + "y");
    EXPECT_EQ(text(6, 1, p.c_str(), p.c_str(), p.c_str(), q.c_str(), "yz"), std::string(2047, 'x') + "y");
    const std::string r(510, 'x');
    EXPECT_EQ(text(6, 1, p.c_str(), p.c_str(), p.c_str(), r.c_str(), "y"), std::string(2046, 'x') + "y");
    // The first half of a character is cut too.
    EXPECT_EQ(text(6, 1, p.c_str(), p.c_str(), p.c_str(), q.c_str(), "\xF0\x9F\x98\x80"),
              std::string(2047, 'x'));
    EXPECT_EQ(traceOf(Function, Trace::Error,
                      [&] { text(6, 1, p.c_str(), p.c_str(), p.c_str(), p.c_str(), "yz"); }),
              TraceLog{});
}

TEST(LNG2_Message, CutsAtTheSizeOfTheOutput)
{
    const Catalogue catalogue("DOVPV1 { \"0123456789abc\" }");
    for (int32_t size = 1; size <= 20; ++size) {
        EXPECT_EQ(text(6, 1, nullptr, nullptr, nullptr, nullptr, nullptr, size),
                  std::string("0123456789abc").substr(0, static_cast<size_t>(size - 1)));
    }
}

TEST(LNG2_Message, UsesTheLanguageOfTheDefaultLocale)
{
    const Catalogue catalogue("DOVPV1 { \"good day {0}\" } DOVPV2 { \"root only\" }");
    catalogue.add("de", "DOVPV1 { \"guten Tag {0}\" }");
    catalogue.add("ja", "DOVPV1 { \"{0}\xE6\x97\xA5\" }");
    EXPECT_EQ(text(6, 1, "x"), "good day x");
    UErrorCode error = U_ZERO_ERROR;
    uloc_setDefault("de_AT", &error);
    EXPECT_EQ(text(6, 1, "x"), "guten Tag x");
    EXPECT_EQ(text(6, 2), "root only");
    uloc_setDefault("ja_JP", &error);
    EXPECT_EQ(text(6, 1, "x"), "x\xE6\x97\xA5");
}

TEST(LNG2_Message, PrefersTheLocaleOfTheProductSpecification)
{
    const Catalogue catalogue("DOVPV1 { \"good day\" }");
    catalogue.add("de", "DOVPV1 { \"guten Tag\" }");
    catalogue.add("fr", "DOVPV1 { \"bonjour\" }");
    EXPECT_EQ(text(6, 1), "good day");
    ASSERT_EQ(DOV0_InitializeProductSpec(nullptr, 1), 1);
    ASSERT_EQ(DOV0_UpdateProductSpec(DOV0_PSF_AGENT_LOCALE, "de_DE"), 1);
    const std::string setting = says("Locale setting is: %s\n", "de_DE");
    EXPECT_EQ(bitsThatShow(setting, [] { EXPECT_EQ(text(6, 1), "guten Tag"); }), Trace::Detail);
    ASSERT_EQ(DOV0_UpdateProductSpec(DOV0_PSF_AGENT_LOCALE, "fr"), 1); // read on every call
    EXPECT_EQ(text(6, 1), "bonjour");
    ASSERT_EQ(DOV0_UpdateProductSpec(DOV0_PSF_AGENT_LOCALE, ""), 1);
    EXPECT_EQ(text(6, 1), "good day");
    ASSERT_EQ(DOV0_UpdateProductSpec(DOV0_PSF_AGENT_LOCALE, ("de_" + std::string(200, 'X')).c_str()), 1);
    const TraceLog log = traceOf(Function, Trace::Detail, [] { text(6, 1); });
    ASSERT_GE(log.size(), 2U);
    EXPECT_EQ(log[1], says("Locale setting is: %s\n", ("de_" + std::string(124, 'X')).c_str()));
}

TEST(LNG2_Message, TracesEachStep)
{
    const Catalogue catalogue("DOVPV1 { \"{0}{1}{2}{3}{4}!\" }");
    text(6, 1); // settles the path
    GuardedBuffer output(64);
    TraceLog log;
    const auto call = [&] { DOV0_LNG2_Message(6, output.text(), 64, 1, "a", "", "c", nullptr, "e"); };
    log = traceOf(Function, Trace::All, call);
    const std::string path = catalogue.bundle();
    const std::string returning = says("Returning with message=%s\n", "a?c?e!");
    EXPECT_EQ(log, (TraceLog{entry(Function), says("RB specified path and bundle=%s\n", path.c_str()),
                             objectMessage("Allocated LNG2_Locale @%p\n", lastLocale()),
                             says("Locale setting is: %s\n", "en_US"), says("Message key is %s\n", "DOVPV1"),
                             objectMessage("Allocated LNG2_UResourceBundle @%p\n", lastBundle()),
                             says("Parameter 1 is <%s>\n", "a"), says("Parameter 3 is <%s>\n", "c"),
                             says("Parameter 5 is: %s \n", "e"),
                             says("LNG2_FormatMessage returned buffer overflow error for message key <%s> "
                                  "resultLengthOut <%d>\n",
                                  "DOVPV1", 6),
                             freeingBundle(), freeingLocale(), returning, leave(Function)}));
    log = traceOf(Function, Trace::Storage, call);
    EXPECT_EQ(log, (TraceLog{objectMessage("Allocated LNG2_Locale @%p\n", lastLocale()),
                             objectMessage("Allocated LNG2_UResourceBundle @%p\n", lastBundle()),
                             freeingBundle(), freeingLocale()}));
    EXPECT_EQ(traceOf(Function, Trace::All & ~(Trace::Storage | Trace::Detail), call),
              (TraceLog{entry(Function), leave(Function)}));
    EXPECT_EQ(traceOf(Function, Trace::Detail, call).size(), 8U);
    EXPECT_EQ(bitsThatShow(returning, call), Trace::Detail);
}

TEST(LNG2_Message, TracesTheFourParametersAlike)
{
    const Catalogue catalogue("DOVPV1 { \"x\" }");
    text(6, 1);
    const TraceLog log = traceOf(Function, Trace::Detail, [] { text(6, 1, "p1", "p2", "p3", "p4", "p5"); });
    ASSERT_EQ(log.size(), 10U);
    EXPECT_EQ(
        TraceLog(log.begin() + 3, log.begin() + 8),
        (TraceLog{says("Parameter 1 is <p1>\n"), says("Parameter 2 is <p2>\n"), says("Parameter 3 is <p3>\n"),
                  says("Parameter 4 is <p4>\n"), says("Parameter 5 is: p5 \n")}));
}

TEST(LNG2_Message, ConvertsEachParameterByTheExportedFunction)
{
    const Catalogue catalogue("DOVPV1 { \"x\" }");
    const TraceLog log = from("DOV0_LNG2_MsgSubparmToUTF_Util",
                              traceAt(Trace::Flow, [] { text(6, 1, "p1", nullptr, "", "p4", "p5"); }));
    EXPECT_EQ(log.size(), 10U);
}

TEST(LNG2_Message, SettlesThePathByItsOwnVariable)
{
    const Catalogue catalogue("DOVPV1 { \"x\" }");
    const TraceLog log = traceOf(Function, Trace::Detail, [] { EXPECT_EQ(text(6, 1), "x"); });
    ASSERT_GE(log.size(), 2U);
    EXPECT_EQ(log[0], says("Will use RB path specified by DOVP_ENV_RB_PATH=%s\n", catalogue.path().c_str()));
    EXPECT_EQ(log[1], says("RB specified path and bundle=%s\n", catalogue.bundle().c_str()));
    setenv("DOVP_RB_PATH", "/elsewhere", 1);
    const TraceLog later = traceOf(Function, Trace::Detail, [] { EXPECT_EQ(text(6, 1), "x"); });
    EXPECT_EQ(later[0], log[1]); // settled once
    EXPECT_EQ(traceOf(Function, Trace::All & ~(Trace::Detail | Trace::Storage), [] { text(6, 1); }).size(),
              2U);
}

TEST(LNG2_Message, SettlesThePathByTheSecondVariable)
{
    const Catalogue catalogue("DOVPV1 { \"x\" }");
    setenv("DOVP_RB_PATH", "", 1); // as good as unset
    setenv("LNG1_LOCALEDIR", catalogue.path().c_str(), 1);
    const TraceLog log = traceOf(Function, Trace::Detail, [] { EXPECT_EQ(text(6, 1), "x"); });
    ASSERT_GE(log.size(), 3U);
    EXPECT_EQ(
        TraceLog(log.begin(), log.begin() + 3),
        (TraceLog{
            says("RB path specified by DOVP_ENV_RB_PATH is NULL. Checking DOVP_ENV_LNG1_LOCALEDIR.\n"),
            says("Will use RB path specified by DOVP_ENV_LNG1_LOCALEDIR=%s\n", catalogue.path().c_str()),
            says("RB specified path and bundle=%s\n", catalogue.bundle().c_str())}));
}

TEST(LNG2_Message, SettlesThePathByTheOverlay)
{
    const Catalogue catalogue("DOVPV1 { \"x\" }");
    unsetenv("DOVP_RB_PATH");
    DOV0_PutEnv(("DOVP_RB_PATH=" + catalogue.path()).c_str());
    EXPECT_EQ(text(6, 1), "x");
}

TEST(LNG2_Message, FallsBackToALocalFolder)
{
    const Catalogue catalogue("DOVPV1 { \"x\" }");
    unsetenv("DOVP_RB_PATH");
    unsetenv("LNG1_LOCALEDIR");
    std::filesystem::create_directory(catalogue.path() + "/rb");
    std::filesystem::rename(catalogue.bundle(), catalogue.path() + "/rb/dovpmsg");
    std::filesystem::current_path(catalogue.path());
    const TraceLog log = traceOf(Function, Trace::Detail, [] { EXPECT_EQ(text(6, 1), "x"); });
    std::filesystem::current_path("/");
    ASSERT_GE(log.size(), 3U);
    EXPECT_EQ(
        TraceLog(log.begin(), log.begin() + 3),
        (TraceLog{
            says("RB path specified by DOVP_ENV_RB_PATH is NULL. Checking DOVP_ENV_LNG1_LOCALEDIR.\n"),
            says("RB path specified by DOVP_ENV_RB_PATH and DOVP_ENV_LNG1_LOCALEDIR are both NULL. Will "
                 "use default of .rb \n"),
            says("RB specified path and bundle=%s\n", "./rb/dovpmsg")}));
}

TEST(LNG2_Message, ReportsAMissingLocale)
{
    const Catalogue catalogue("DOVPV1 { \"x\" }");
    text(6, 1);
    languageStandIn().getLocale = [](int32_t *status) {
        *status = U_MEMORY_ALLOCATION_ERROR;
        return static_cast<LNG2_Locale *>(nullptr);
    };
    const std::string complaint =
        says("LNG2_GetLocale call failed <%s> unable to retrieve Message ID %d from resource bundle\n",
             "U_MEMORY_ALLOCATION_ERROR", 1);
    testing::internal::CaptureStdout();
    const TraceLog log = traceOf(Function, Trace::All & ~Trace::Detail, [] { EXPECT_EQ(text(6, 1), ""); });
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Unable to locate Message ID 1 in resource bundle, error code is U_MEMORY_ALLOCATION_ERROR\n");
    EXPECT_EQ(log, (TraceLog{entry(Function), complaint, leave(Function)}));
    EXPECT_EQ(bitsThatShow(complaint, [] { text(6, 1); }), Trace::Error);
}

TEST(LNG2_Message, ReportsAMissingBundle)
{
    setenv("DOVP_RB_PATH", "/nowhere/at/all", 1);
    const std::string complaint =
        says("Could not find any dovpmsg resource bundles in directory %s.  Error <%s> \n", "/nowhere/at/all",
             "U_MISSING_RESOURCE_ERROR");
    testing::internal::CaptureStdout();
    const TraceLog log = traceOf(Function, Trace::All, [] { EXPECT_EQ(text(6, 1), ""); });
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "DOVPV599E - ERROR: Could not find any dovpmsg resource bundles in directory /nowhere/at/all\n"
              "Error code is U_MISSING_RESOURCE_ERROR\n");
    EXPECT_EQ(endOf(log), (TraceLog{complaint, leave(Function)}));
    EXPECT_EQ(bitsThatShow(complaint, [] { text(6, 1); }), Trace::Error);
}

// A host's own language support may say by either of the two that there is no bundle.
TEST(LNG2_Message, TakesNoBundleAndAFailedStatusForAFailure)
{
    const Catalogue catalogue("DOVPV1 { \"x\" }");
    EXPECT_EQ(text(6, 1), "x");
    for (const int32_t reported : {0, 2}) {
        languageStandIn().openedResource = [&](LNG2_ResourceBundle *bundle, int32_t *status) {
            LNG2_ResourceClose(bundle);
            *status = reported;
            return reported == 0 ? nullptr : bundle;
        };
        std::string output = "as it was";
        testing::internal::CaptureStdout();
        const TraceLog log = traceOf(Function, Trace::Error, [&] { output = text(6, 1); });
        EXPECT_NE(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(output, "");
        EXPECT_EQ(
            log, (TraceLog{says("Could not find any dovpmsg resource bundles in directory %s.  Error <%s> \n",
                                catalogue.path().c_str(), u_errorName(static_cast<UErrorCode>(reported)))}));
    }
}

TEST(LNG2_Message, ReportsBundlesThatCannotBeUsed)
{
    const MessageFolder messages;
    messages.addRaw("root", "");
    messages.addRaw("en", "no bundle at all");
    setenv("DOVP_RB_PATH", messages.path().c_str(), 1);
    testing::internal::CaptureStdout();
    EXPECT_EQ(text(6, 1), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "DOVPV599E - ERROR: Could not find any dovpmsg resource bundles in directory " +
                  messages.path() + "\nError code is U_MISSING_RESOURCE_ERROR\n");
}

TEST(LNG2_Message, ReportsAMissingKey)
{
    const Catalogue catalogue("DOVPV1 { \"x\" } DOVPV2 { A { \"a table\" } }");
    testing::internal::CaptureStdout();
    const std::string complaint =
        says("Could not retrieve message %s.  Error <%s>\n", "DOVPA77", "U_MISSING_RESOURCE_ERROR");
    const TraceLog log = traceOf(Function, Trace::All, [] { EXPECT_EQ(text(1, 77), ""); });
    EXPECT_EQ(endOf(log), (TraceLog{objectMessage("Allocated LNG2_UResourceBundle @%p\n", lastBundle()),
                                    complaint, leave(Function)}));
    EXPECT_EQ(bitsThatShow(complaint, [] { text(1, 77); }), Trace::Error);
    expectErrorOnly(
        says("Could not retrieve message %s.  Error <%s>\n", "DOVPV2", "U_RESOURCE_TYPE_MISMATCH"), 6, 2);
    expectErrorOnly(
        says("Could not retrieve message %s.  Error <%s>\n", "DOVPV-5", "U_MISSING_RESOURCE_ERROR"), 6, -5);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(LNG2_Message, ReportsPatternsThatTextsCannotBePutInto)
{
    const struct {
        const char *pattern;
        const char *status;
    } patterns[] = {{"{0", "U_UNMATCHED_BRACES"},
                    {"{x y}", "U_PATTERN_SYNTAX_ERROR"},
                    {"{0,nonsense", "U_UNMATCHED_BRACES"},
                    {"{0,select,a{x}}", "U_DEFAULT_KEYWORD_MISSING"},
                    {"{5}", "U_INDEX_OUTOFBOUNDS_ERROR"},
                    {"{0,select,other{{999}}}", "U_INDEX_OUTOFBOUNDS_ERROR"},
                    {"{name} {0,number}", "U_ARGUMENT_TYPE_MISMATCH"},
                    {"{0,number}", "U_ARGUMENT_TYPE_MISMATCH"},
                    {"{0,date}", "U_ARGUMENT_TYPE_MISMATCH"},
                    {"{0,choice,0#x}", "U_ARGUMENT_TYPE_MISMATCH"},
                    {"{0,plural,other{x}}", "U_ARGUMENT_TYPE_MISMATCH"},
                    {"", "U_STRING_NOT_TERMINATED_WARNING"}}; // what ICU says to a text of no length
    std::string root;
    int32_t number = 0;
    for (const auto &pattern : patterns) {
        root += "DOVPV" + std::to_string(number++) + " { \"" + pattern.pattern + "\" } ";
    }
    const Catalogue catalogue(root);
    number = 0;
    for (const auto &pattern : patterns) {
        const std::string key = "DOVPV" + std::to_string(number);
        expectErrorOnly(says("LNG2_FormatMessage returned error <%s> for message key <%s>\n", pattern.status,
                             key.c_str()),
                        6, number++);
    }
    // The message is delivered, empty, in the end.
    const TraceLog log = traceOf(Function, Trace::Detail, [] { text(6, 0); });
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.back(), says("Returning with message=\n"));
}

TEST(LNG2_Message, LeavesNamesToICU)
{
    const char *const patterns[] = {"Hello {name} x", "{0} {name}", "{name,select,a{A} other{O}}",
                                    "{n,number} q", "{name} {2}"};
    std::string root;
    int32_t number = 0;
    for (const char *const pattern : patterns) {
        root += "DOVPV" + std::to_string(number++) + " { \"" + pattern + "\" } ";
    }
    const Catalogue catalogue(root);
    number = 0;
    for (const std::string pattern : patterns) {
        UErrorCode status = U_ZERO_ERROR;
        char16_t judged[100];
        const int32_t length = u_formatMessage(
            "en_US", std::u16string(pattern.begin(), pattern.end()).c_str(),
            static_cast<int32_t>(pattern.size()), judged, 100, &status, u"a", u"b", u"c", u"d", u"e");
        ASSERT_LE(status, U_ZERO_ERROR);
        EXPECT_EQ(text(6, number++, "a", "b", "c", "d", "e"), std::string(judged, judged + length))
            << pattern;
    }
}

TEST(LNG2_Message, TakesAParameterFromItsOutput)
{
    const Catalogue catalogue("DOVPV1 { \"P {0} Q {4}\" }");
    char output[40] = "in place";
    DOV0_LNG2_Message(DOV0_MESSAGE_CLASS_V, output, sizeof output, 1, output, nullptr, nullptr, nullptr,
                      output);
    EXPECT_STREQ(output, "P in place Q in place");
    for (const int32_t messageClass : {0, 6}) { // no such class, no such key
        std::strcpy(output, "in place");
        DOV0_LNG2_Message(messageClass, output, sizeof output, 2, output, nullptr, nullptr, nullptr, nullptr);
        EXPECT_STREQ(output, "");
    }
}

TEST(LNG2_Message, ReportsAMissingConverter)
{
    const Catalogue catalogue("DOVPV1 { \"x\" }");
    text(6, 1);
    int attempts = 0;
    languageStandIn().openConverter = [&](const std::string &) { // the sixth, behind the five parameters
        return ++attempts % 6 == 0 ? U_FILE_ACCESS_ERROR : U_ZERO_ERROR;
    };
    const std::string complaint =
        says("Could not open default output converter, error <%s>\n", "U_FILE_ACCESS_ERROR");
    const TraceLog log = traceOf(Function, Trace::All & ~Trace::Detail, [] { EXPECT_EQ(text(6, 1), ""); });
    EXPECT_EQ(log, (TraceLog{entry(Function), objectMessage("Allocated LNG2_Locale @%p\n", lastLocale()),
                             objectMessage("Allocated LNG2_UResourceBundle @%p\n", lastBundle()), complaint,
                             leave(Function)}));
    expectErrorOnly(complaint, 6, 1);
    EXPECT_EQ(convertersOpen(), 0);
}

TEST(LNG2_Message, ReportsAFailedConversion)
{
    const Catalogue catalogue("DOVPV1 { \"x\" }");
    text(6, 1);
    languageStandIn().fromUChars = U_INVALID_STATE_ERROR;
    expectErrorOnly(says("Conversion error, error <%s>\n", "U_INVALID_STATE_ERROR"), 6, 1);
    EXPECT_EQ(convertersOpen(), 0);
}

TEST(LNG2_Message, RefusesClassesNumbersAndOutputsOutOfRange)
{
    const Catalogue catalogue("DOVPV1 { \"x\" }");
    text(6, 1);
    for (const int32_t messageClass : {0, -1, 7, INT32_MIN, INT32_MAX}) {
        expectErrorOnly(says("*****Message class %d of Message ID %d is not supported\n", messageClass, 1),
                        messageClass, 1);
    }
    for (const int32_t number : {10000000, -1000000, INT32_MIN, INT32_MAX}) {
        expectErrorOnly(says("*****Message ID %d has more than %d characters\n", number, 7), 6, number);
    }
    char output[] = "as it was";
    for (const int32_t size : {0, -1, INT32_MIN}) {
        const std::string complaint = says("*****No room for Message ID %d in output @%p size %d\n", 1,
                                           static_cast<void *>(output), size);
        const auto call = [&] { DOV0_LNG2_Message(6, output, size, 1, "", "", "", "", ""); };
        EXPECT_EQ(traceAt(Trace::All, call), (TraceLog{entry(Function), complaint, leave(Function)}));
        EXPECT_EQ(bitsThatShow(complaint, call), Trace::Error);
        EXPECT_STREQ(output, "as it was");
    }
    DOV0_LNG2_Message(6, nullptr, 10, 1, "", "", "", "", "");
}

TEST(LNG2_Message, LeavesAnEmptyOutputWithoutStorage)
{
    const Catalogue catalogue("DOVPV1 { \"text {0}\" }");
    EXPECT_EQ(text(6, 1, "x"), "text x");
    char output[32] = "unused";
    testing::internal::CaptureStdout();
    withoutHeap([&] { DOV0_LNG2_Message(6, output, 32, 1, "x", "", "", "", ""); });
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Unable to locate Message ID 1 in resource bundle, error code is U_MEMORY_ALLOCATION_ERROR\n");
    EXPECT_STREQ(output, "");
    EXPECT_EQ(text(6, 1, "x"), "text x");
}

TEST(LNG2_Message, SurvivesEachFailingAllocation)
{
    const Catalogue catalogue("DOVPV1 { \"{0}{0}{0}{0}{0}\" }");
    const std::string p(512, 'x');
    const std::string whole(2048, 'x');
    EXPECT_EQ(text(6, 1, p.c_str()), whole);
    const auto contains = [](const TraceLog &log, const char *part) {
        return !log.empty() && log.front().find(part) != std::string::npos;
    };
    int inFirst = 0;
    int inSecond = 0;
    std::vector<char> output(4096);
    for (const auto failing : {withHeapFailure, withHeapFailureFrom}) {
        const auto call = [&] {
            DOV0_LNG2_Message(6, output.data(), 4096, 1, p.c_str(), nullptr, nullptr, nullptr, nullptr);
        };
        bool reached = true;
        for (int n = 1; reached; ++n) {
            setTraceLevel(Trace::Error);
            reached = failing(n, call);
            const TraceLog log = from(Function, takeTrace());
            setTraceLevel(0);
            inFirst +=
                contains(log, ": LNG2_FormatMessage returned error <U_MEMORY_ALLOCATION_ERROR>") ? 1 : 0;
            inSecond +=
                contains(log, "Second call to LNG2_FormatMessage returned error <U_MEMORY_ALLOCATION_ERROR>")
                    ? 1
                    : 0;
            // Without its one parameter the message is empty as well.
            EXPECT_TRUE(output.data() == (log.empty() ? whole : "")) << n << testing::PrintToString(log);
            EXPECT_EQ(localesOut(), 0);
            EXPECT_EQ(bundlesOut(), 0);
            EXPECT_EQ(convertersOpen(), 0);
        }
    }
    EXPECT_GT(inFirst, 0);
    EXPECT_GT(inSecond, 0);
    EXPECT_EQ(text(6, 1, p.c_str()), whole);
}

TEST(LNG2_Message, ServesThreadsAtOnceFromTheFirstCallOn)
{
    const Catalogue catalogue("DOVPV1 { \"{0} and {1}\" }");
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&wrong, t] {
            const std::string own = std::to_string(t);
            for (int i = 0; i < 60; ++i) {
                char output[64];
                DOV0_LNG2_Message(6, output, 64, 1, own.c_str(), "x", nullptr, nullptr, nullptr);
                wrong += output != own + " and x" ? 1 : 0;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(localesOut(), 0);
    EXPECT_EQ(bundlesOut(), 0);
    EXPECT_EQ(convertersOpen(), 0);
}
