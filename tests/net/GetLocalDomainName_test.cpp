#include "net/resolver_stand_ins.h"
#include "support/fresh_process.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <cerrno>
#include <cstdlib>
#include <thread>

namespace {

constexpr char Function[] = "DOV0_GetLocalDomainName";

const std::string Parsing = "DOV0_GetLocalDomainName: Calling gethostname to parse out domain name\n";
const std::string NotUsed =
    "DOV0_GetLocalDomainName: Not using domain name per DOV_USE_DOMAIN_NAME environment variable\n";

void setOfficialName(const std::string &name)
{
    standIns().byName = [name](const char *) {
        static HostRecord *known = nullptr;
        delete known;
        known = new HostRecord(name);
        return known->get();
    };
}

std::string textOf(const char *text)
{
    return text != nullptr ? text : "none";
}

} // namespace

TEST(GetLocalDomainName, TakesWhatFollowsTheFirstDotOfAnOfficialNameWithTwo)
{
    const struct {
        const char *officialName;
        const char *domain;
    } cases[] = {{"host.site.com", "site.com"},
                 {"host.a.b.c", "a.b.c"},
                 {"host.com", "none"},
                 {"host", "none"},
                 {"", "none"},
                 {"host.com.", "com."},
                 {"..", "."},
                 {".site.com", "site.com"},
                 {"host..com", ".com"},
                 {"...", ".."}};
    for (const auto &one : cases) {
        EXPECT_TRUE(holdsInFreshProcess([&] {
            setHostName("alpha");
            setOfficialName(one.officialName);
            EXPECT_EQ(textOf(DOV0_GetLocalDomainName()), one.domain);
        })) << one.officialName;
    }
}

TEST(GetLocalDomainName, AsksTheResolverForTheHostName)
{
    setHostName("alpha");
    std::string asked;
    standIns().byName = [&](const char *name) {
        asked = name;
        return unknownHost();
    };
    DOV0_GetLocalDomainName();
    EXPECT_EQ(asked, "alpha");
}

TEST(GetLocalDomainName, TracesADomainAndKeepsIt)
{
    setHostName("alpha");
    setOfficialName("host.site.com");
    char *domain = nullptr;
    const auto call = [&] { domain = DOV0_GetLocalDomainName(); };
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Flow, call),
              (TraceLog{Parsing, message(Function, "HostName is host.site.com, Domain Name is site.com\n")}));
    EXPECT_STREQ(domain, "site.com");
    char *const first = domain;

    setenv("DOV_USE_DOMAIN_NAME", "N", 1);
    setenv("DOV_TCPIP_DOMAIN_NAME", "other.example", 1);
    setHostName("beta");
    setOfficialName("beta.x.y");
    EXPECT_EQ(traceAt(Trace::All, call), (TraceLog{entry(Function), leave(Function, first)}));
    EXPECT_STREQ(domain, "site.com");
    EXPECT_EQ(nameLookUps(), 1);
}

TEST(GetLocalDomainName, TracesItsStepsInOrder)
{
    setHostName("alpha");
    setOfficialName("host.site.com");
    const char *domain = nullptr;
    const TraceLog log = traceAt(Trace::Flow | Trace::Detail, [&] { domain = DOV0_GetLocalDomainName(); });
    TraceLog named;
    for (const std::string &line : log) { // without the addresses
        if (line.find(" exit ") == std::string::npos && line.find('@') == std::string::npos) {
            named.push_back(line);
        }
    }
    EXPECT_EQ(named, (TraceLog{entry(Function), entry("DOV0_GetEnv"),
                               message("DOV0_GetEnv", "Env <DOV_USE_DOMAIN_NAME> value <Y>\n"),
                               entry("DOV0_GetStorage"), entry("DOV0_GetEnv"),
                               message("DOV0_GetEnv", "Env <DOV_TCPIP_DOMAIN_NAME> not set\n"), Parsing,
                               entry("DOV0_GetHostByName"), entry("DOV0_InitializeMutex"),
                               leave("DOV0_InitializeMutex"), entry("DOV0_GetStorage"),
                               entry("DOV0_FreeStorage"), leave("DOV0_FreeStorage"),
                               message(Function, "HostName is host.site.com, Domain Name is site.com\n")}));
    EXPECT_EQ(log.back(), leave(Function, domain));
}

TEST(GetLocalDomainName, FreesItsAreaAndTriesAgainWithoutADomain)
{
    setHostName("alpha");
    setOfficialName("host.com");
    char *domain = nullptr;
    const auto call = [&] { domain = DOV0_GetLocalDomainName(); };
    const std::string none = message(Function, "HostName is host.com, No Domain Name\n");
    const TraceLog log = traceAt(Trace::Flow | Trace::Detail, call);
    EXPECT_EQ(domain, nullptr);
    void *area = nullptr;
    ASSERT_GT(log.size(), 8U);
    ASSERT_EQ(
        std::sscanf(log[5].c_str(), "DOV0_GetStorage: Allocated storage at address @%p size 256", &area), 1);
    EXPECT_EQ((TraceLog(log.end() - 5, log.end())),
              (TraceLog{none, entry("DOV0_FreeStorage"),
                        message("DOV0_FreeStorage", "Freeing storage at address @%p\n", area),
                        leave("DOV0_FreeStorage"), leave(Function, nullptr)}));
    EXPECT_EQ(bitsThatShow(none, call), Trace::Detail);
    EXPECT_EQ(bitsThatShow(Parsing, call), Trace::Detail);
    setOfficialName("host.site.com");
    const std::string found = message(Function, "HostName is host.site.com, Domain Name is site.com\n");
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Detail & ~Trace::Flow, call), TraceLog{});
    EXPECT_STREQ(domain, "site.com");
}

TEST(GetLocalDomainName, TakesTheDomainOfTheEnvironmentAsItIs)
{
    for (const char *given : {"corp.example", "corp", "a.b.c.d", "."}) {
        EXPECT_TRUE(holdsInFreshProcess([=] {
            setenv("DOV_TCPIP_DOMAIN_NAME", given, 1);
            char *domain = nullptr;
            EXPECT_EQ(
                traceOf(Function, Trace::All & ~Trace::Flow, [&] { domain = DOV0_GetLocalDomainName(); }),
                (TraceLog{message(Function, "Copying DOV_TCPIP_DOMAIN_NAME value <%s>\n", given)}));
            EXPECT_STREQ(domain, given);
            EXPECT_EQ(nameLookUps(), 0);
        }));
    }
    EXPECT_TRUE(holdsInFreshProcess([] {
        setenv("DOV_TCPIP_DOMAIN_NAME", "corp", 1);
        EXPECT_EQ(
            traceOf(Function, Trace::All & ~Trace::Flow & ~Trace::Detail, [] { DOV0_GetLocalDomainName(); }),
            TraceLog{});
    }));
}

TEST(GetLocalDomainName, CutsWhatDoesNotFit)
{
    for (const size_t length : {255U, 256U, 257U, 10000U}) {
        const std::string text(length, 'd');
        EXPECT_TRUE(holdsInFreshProcess([&] {
            setenv("DOV_TCPIP_DOMAIN_NAME", text.c_str(), 1);
            EXPECT_EQ(textOf(DOV0_GetLocalDomainName()), text.substr(0, 255));
        }));
        EXPECT_TRUE(holdsInFreshProcess([&] {
            setHostName("alpha");
            setOfficialName("h.s." + text);
            EXPECT_EQ(textOf(DOV0_GetLocalDomainName()), "s." + text.substr(0, 251));
        }));
        EXPECT_TRUE(holdsInFreshProcess([&] {
            setHostName(text); // fills its area without a terminator from 256 bytes on
            std::string asked;
            standIns().byName = [&](const char *name) {
                asked = name;
                return unknownHost();
            };
            EXPECT_EQ(DOV0_GetLocalDomainName(), nullptr);
            EXPECT_EQ(asked, text.substr(0, 255));
        }));
    }
}

TEST(GetLocalDomainName, IsTurnedOffByTheEnvironment)
{
    setenv("DOV_TCPIP_DOMAIN_NAME", "corp.example", 1);
    for (const char *off : {"N", "n", "no", "NO", "Nothing"}) {
        setenv("DOV_USE_DOMAIN_NAME", off, 1);
        EXPECT_EQ(traceOf(Function, Trace::All, [] { EXPECT_EQ(DOV0_GetLocalDomainName(), nullptr); }),
                  (TraceLog{entry(Function), NotUsed, leave(Function, nullptr)}));
    }
    EXPECT_EQ(bitsThatShow(NotUsed, [] { DOV0_GetLocalDomainName(); }), Trace::Detail);
    for (const char *on : {"Y", "y", "yes", " N", "0", "", "off"}) {
        EXPECT_TRUE(holdsInFreshProcess([=] {
            setenv("DOV_USE_DOMAIN_NAME", on, 1);
            EXPECT_EQ(textOf(DOV0_GetLocalDomainName()), "corp.example");
        }));
    }
    unsetenv("DOV_USE_DOMAIN_NAME"); // decided afresh
    EXPECT_EQ(textOf(DOV0_GetLocalDomainName()), "corp.example");
}

TEST(GetLocalDomainName, ReportsAHostNameThatCannotBeHad)
{
    standIns().hostName = [](char *, size_t) {
        errno = ENAMETOOLONG;
        return -1;
    };
    const std::string text = message(Function, "***** gethostname failed, errno=%d\n", ENAMETOOLONG);
    const auto call = [] { EXPECT_EQ(DOV0_GetLocalDomainName(), nullptr); };
    EXPECT_EQ(traceOf(Function, Trace::All, call),
              (TraceLog{entry(Function), Parsing, text, leave(Function, nullptr)}));
    EXPECT_EQ(bitsThatShow(text, call), Trace::Error);
    const TraceLog log = traceAt(Trace::Flow, call);
    EXPECT_EQ((TraceLog(log.end() - 3, log.end())),
              (TraceLog{entry("DOV0_FreeStorage"), leave("DOV0_FreeStorage"), leave(Function, nullptr)}));
    EXPECT_EQ(nameLookUps(), 0);
}

TEST(GetLocalDomainName, ReportsAHostNameThatCannotBeResolved)
{
    setHostName("alpha");
    const std::string text = message(Function, "cannot resolve domain name <alpha>\n");
    const auto call = [] { EXPECT_EQ(DOV0_GetLocalDomainName(), nullptr); };
    EXPECT_EQ(traceOf(Function, Trace::All, call),
              (TraceLog{entry(Function), Parsing, text, leave(Function, nullptr)}));
    EXPECT_EQ(bitsThatShow(text, call), Trace::Error);
    const TraceLog log = traceAt(Trace::Flow, call);
    EXPECT_EQ((TraceLog(log.end() - 4, log.end())),
              (TraceLog{leave("DOV0_GetHostByName", nullptr), entry("DOV0_FreeStorage"),
                        leave("DOV0_FreeStorage"), leave(Function, nullptr)}));
    setHostName("");
    EXPECT_EQ(traceOf(Function, Trace::All, call),
              (TraceLog{entry(Function), Parsing, leave(Function, nullptr)}));
}

TEST(GetLocalDomainName, KeepsTheHostNameWhereTheRecordHasNone)
{
    setHostName("alpha.corp.example");
    HostRecord nameless("");
    nameless.get()->h_name = nullptr;
    standIns().byName = [&](const char *) { return nameless.get(); };
    EXPECT_EQ(textOf(DOV0_GetLocalDomainName()), "corp.example");
}

TEST(GetLocalDomainName, FailsWithoutStorage)
{
    setHostName("alpha");
    setOfficialName("host.site.com");
    EXPECT_EQ(
        traceAt(
            Trace::Error,
            [] { EXPECT_TRUE(withHeapFailure(1, [] { EXPECT_EQ(DOV0_GetLocalDomainName(), nullptr); })); }),
        (TraceLog{message("DOV0_GetStorage", "*****Unable to obtain storage, size %d\n", 256)}));
    EXPECT_EQ(
        traceOf(
            Function, Trace::All & ~Trace::Flow,
            [] { EXPECT_TRUE(withHeapFailure(2, [] { EXPECT_EQ(DOV0_GetLocalDomainName(), nullptr); })); }),
        (TraceLog{Parsing, message(Function, "cannot resolve domain name <alpha>\n")}));
    EXPECT_FALSE(withHeapFailure(3, [] { EXPECT_EQ(textOf(DOV0_GetLocalDomainName()), "site.com"); }));
}

TEST(GetLocalDomainName, GivesOneTextToAllThreads)
{
    setHostName("alpha");
    HostRecord known("host.site.com");
    standIns().byName = [&](const char *) { return known.get(); };
    char *found[8] = {};
    std::vector<std::thread> threads;
    for (char *&one : found) {
        threads.emplace_back([&one] { one = DOV0_GetLocalDomainName(); });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    for (const char *one : found) {
        EXPECT_EQ(one, found[0]);
    }
    EXPECT_STREQ(found[0], "site.com");
}
