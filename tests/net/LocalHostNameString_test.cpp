#include "net/resolver_stand_ins.h"
#include "support/fresh_process.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <thread>

namespace {

constexpr char Function[] = "DOV0_LocalHostNameString";

// The variables that decide the name, each with its value or null when unset.
struct Setting {
    const char *rpc;
    const char *dch;
    const char *dp;
    const char *use;
    const char *domain;
    const char *interfaces;
    const char *system;       // the system's host name
    const char *officialName; // null when it does not resolve
};

void setVariable(const char *name, const char *value)
{
    value != nullptr ? setenv(name, value, 1) : unsetenv(name);
}

void apply(const Setting &setting)
{
    setVariable("RPCB0_HOSTNAME", setting.rpc);
    setVariable("DOV_DCH_HOSTNAME", setting.dch);
    setVariable("DOV_DP_HOSTNAME", setting.dp);
    setVariable("DOV_USE_DOMAIN_NAME", setting.use);
    setVariable("DOV_TCPIP_DOMAIN_NAME", setting.domain);
    setVariable("NETB_INTERFACELIST", setting.interfaces);
    setHostName(setting.system);
    const char *const officialName = setting.officialName;
    standIns().byName = [officialName](const char *) {
        static HostRecord *const known = new HostRecord(officialName != nullptr ? officialName : "");
        return officialName != nullptr ? known->get() : unknownHost();
    };
}

// The domain that a setting leads to, or the empty text.
std::string domainOf(const Setting &setting)
{
    if (setting.use != nullptr && std::string("Nn").find(setting.use[0]) != std::string::npos) {
        return "";
    }
    if (setting.domain != nullptr) {
        return setting.domain;
    }
    const std::string official = setting.officialName != nullptr ? setting.officialName : "";
    return std::count(official.begin(), official.end(), '.') >= 2 ? official.substr(official.find('.') + 1)
                                                                  : "";
}

struct Expected {
    std::string name;
    TraceLog messages; // but those about storage
};

Expected expectedOf(const Setting &setting)
{
    Expected expected;
    const auto say = [&](const char *before, const std::string &value, const char *behind = ">\n") {
        expected.messages.push_back(std::string(Function) + ": " + before + value + behind);
    };
    if (setting.interfaces != nullptr) {
        say("NETB_INTERFACELIST environment variable set to <", setting.interfaces);
    }
    say("gethostname returned Hptr <", setting.system);
    const bool dch = setting.dch != nullptr;
    const bool dp = setting.dp != nullptr;
    if (setting.rpc != nullptr) {
        expected.name = setting.rpc;
        say("Using RPCB0_HOSTNAME value <", expected.name);
    } else if (dch && dp && std::string(setting.dch) == setting.dp) {
        expected.name = setting.dch;
        say("Using either DOV_DCH_HOSTNAME or DOV_DP_HOSTNAME value <", expected.name);
    } else if (dch && !dp) {
        expected.name = setting.dch;
        say("Using DOV_DCH_HOSTNAME value <", expected.name);
    } else if (dp && !dch) {
        expected.name = setting.dp;
        say("Using DOV_DP_HOSTNAME value <", expected.name);
    } else {
        expected.name = setting.system;
        say("Use gethostname value <", expected.name);
    }
    const std::string domain = domainOf(setting);
    if (!domain.empty()) {
        const size_t dot = expected.name.find('.');
        if (dot == std::string::npos) {
            say("Appending domain name <", domain + "> to NameString <" + expected.name);
            expected.name += "." + domain;
        } else {
            say("Found dot at <", expected.name.substr(dot) + "> in NameString <" + expected.name);
        }
    }
    say("Local hostname in effect is <", expected.name);
    return expected;
}

void expectSetting(const Setting &setting)
{
    EXPECT_TRUE(holdsInFreshProcess([&] {
        apply(setting);
        const Expected expected = expectedOf(setting);
        const char *name = nullptr;
        EXPECT_EQ(traceOf(Function, Trace::Detail, [&] { name = DOV0_LocalHostNameString(); }),
                  expected.messages);
        EXPECT_EQ(name, expected.name);
    })) << "RPCB0 "
        << (setting.rpc != nullptr ? setting.rpc : "-") << ", DCH "
        << (setting.dch != nullptr ? setting.dch : "-") << ", DP "
        << (setting.dp != nullptr ? setting.dp : "-") << ", use "
        << (setting.use != nullptr ? setting.use : "-") << ", domain "
        << (setting.domain != nullptr ? setting.domain : "-") << ", system " << setting.system
        << ", official " << (setting.officialName != nullptr ? setting.officialName : "-");
}

std::string nameInFreshProcess(const std::function<void()> &prepare)
{
    int ends[2] = {-1, -1};
    EXPECT_EQ(pipe(ends), 0);
    EXPECT_TRUE(holdsInFreshProcess([&] {
        prepare();
        const std::string name = DOV0_LocalHostNameString();
        EXPECT_EQ(write(ends[1], name.data(), name.size()), static_cast<ssize_t>(name.size()));
    }));
    close(ends[1]);
    std::string name(1000, ' ');
    name.resize(static_cast<size_t>(std::max<ssize_t>(read(ends[0], name.data(), name.size()), 0)));
    close(ends[0]);
    return name;
}

// Two texts one after the other, as far as an area of 256 bytes holds them.
std::string cutAfter(const std::string &first, const std::string &second)
{
    std::string all;
    all.append(first).append(second);
    return all.substr(0, 255);
}

} // namespace

TEST(LocalHostNameString, ChoosesTheNameInEveryCombination)
{
    for (const char *rpc : {static_cast<const char *>(nullptr), "alpha", "alpha.corp.example"}) {
        for (const char *dch : {static_cast<const char *>(nullptr), "beta", "beta.x"}) {
            for (const char *dp : {static_cast<const char *>(nullptr), "beta", "gamma"}) {
                for (const char *use : {static_cast<const char *>(nullptr), "no"}) {
                    for (const char *domain : {static_cast<const char *>(nullptr), "corp.example"}) {
                        for (const char *system : {"sys", "sys.lab.example"}) {
                            expectSetting({rpc, dch, dp, use, domain, nullptr, system, "sys.lab.example"});
                        }
                    }
                }
            }
        }
    }
}

TEST(LocalHostNameString, TakesADomainFromTheOfficialNameOnlyWithTwoDots)
{
    for (const char *official :
         {static_cast<const char *>(nullptr), "", "host", "host.com", "host.site.com"}) {
        for (const char *use : {static_cast<const char *>(nullptr), "Y", "y", "N", "n"}) {
            expectSetting({nullptr, nullptr, nullptr, use, nullptr, "eth0", "sys", official});
        }
    }
}

TEST(LocalHostNameString, TakesAnEmptyVariableAsUnset)
{
    EXPECT_EQ(nameInFreshProcess([] { apply({"", "", "gamma", "", "", "", "sys", nullptr}); }), "gamma");
}

TEST(LocalHostNameString, TakesVariablesOfTheOverlay)
{
    EXPECT_EQ(nameInFreshProcess([] {
                  apply({nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, "sys", nullptr});
                  DOV0_PutEnv("RPCB0_HOSTNAME=alpha");
                  DOV0_PutEnv("DOV_TCPIP_DOMAIN_NAME=corp.example");
              }),
              "alpha.corp.example");
}

TEST(LocalHostNameString, KeepsTheFirstNameAtOneAddress)
{
    apply({"alpha", nullptr, nullptr, nullptr, "corp.example", nullptr, "sys", nullptr});
    char *const name = DOV0_LocalHostNameString();
    EXPECT_STREQ(name, "alpha.corp.example");
    apply({"beta", nullptr, nullptr, "N", nullptr, nullptr, "other", nullptr});
    EXPECT_EQ(traceAt(Trace::All, [=] { EXPECT_EQ(DOV0_LocalHostNameString(), name); }),
              (TraceLog{entry(Function), leave(Function, name)}));
    EXPECT_STREQ(name, "alpha.corp.example");
}

TEST(LocalHostNameString, TracesItsStepsInOrder)
{
    apply({"alpha", nullptr, nullptr, nullptr, "corp.example", "eth0", "sys", nullptr});
    const char *name = nullptr;
    const TraceLog log =
        traceAt(Trace::Flow | Trace::Detail | Trace::Storage, [&] { name = DOV0_LocalHostNameString(); });
    TraceLog named;
    for (const std::string &line : log) { // without the addresses
        if (line.find(" exit ") == std::string::npos && line.find('@') == std::string::npos) {
            named.push_back(line);
        }
    }
    const auto variable = [](const char *text) { return message("DOV0_GetEnv", "Env %s\n", text); };
    EXPECT_EQ(
        named,
        (TraceLog{entry(Function),
                  entry("DOV0_GetEnv"),
                  variable("<DOV_DCH_HOSTNAME> not set"),
                  entry("DOV0_GetEnv"),
                  variable("<DOV_DP_HOSTNAME> not set"),
                  entry("DOV0_GetEnv"),
                  variable("<RPCB0_HOSTNAME> value <alpha>"),
                  entry("DOV0_GetEnv"),
                  variable("<NETB_INTERFACELIST> value <eth0>"),
                  message(Function, "NETB_INTERFACELIST environment variable set to <eth0>\n"),
                  entry("DOV0_GetStorage"),
                  message(Function, "gethostname returned Hptr <sys>\n"),
                  entry("DOV0_GetLocalDomainName"),
                  entry("DOV0_GetEnv"),
                  variable("<DOV_USE_DOMAIN_NAME> value <Y>"),
                  entry("DOV0_GetStorage"),
                  entry("DOV0_GetEnv"),
                  variable("<DOV_TCPIP_DOMAIN_NAME> value <corp.example>"),
                  message("DOV0_GetLocalDomainName", "Copying DOV_TCPIP_DOMAIN_NAME value <corp.example>\n"),
                  message(Function, "Using RPCB0_HOSTNAME value <alpha>\n"),
                  message(Function, "Appending domain name <corp.example> to NameString <alpha>\n"),
                  entry("DOV0_FreeStorage"),
                  leave("DOV0_FreeStorage"),
                  message(Function, "Local hostname in effect is <alpha.corp.example>\n")}));
    EXPECT_EQ(log.back(), leave(Function, name));
    const char *const domain = DOV0_GetLocalDomainName();
    const std::string allocated = message(Function, "Allocated LocalDomainName object @%p\n", domain);
    const auto at = std::find(log.begin(), log.end(), allocated);
    ASSERT_NE(at, log.end());
    EXPECT_EQ(*(at - 1), leave("DOV0_GetLocalDomainName", domain));
    EXPECT_EQ(*(at + 1), message(Function, "Using RPCB0_HOSTNAME value <alpha>\n"));
}

TEST(LocalHostNameString, TracesEachMessageUnderItsBit)
{
    const Setting setting = {"alpha", nullptr, nullptr, nullptr, "corp.example", "eth0", "sys", nullptr};
    EXPECT_TRUE(holdsInFreshProcess([&] {
        apply(setting);
        const TraceLog log =
            traceOf(Function, Trace::All & ~Trace::Detail & ~Trace::Flow, [] { DOV0_LocalHostNameString(); });
        EXPECT_EQ(log, (TraceLog{message(Function, "Allocated LocalDomainName object @%p\n",
                                         DOV0_GetLocalDomainName())}));
    }));
    EXPECT_TRUE(holdsInFreshProcess([&] {
        apply(setting);
        EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Storage & ~Trace::Flow,
                          [] { DOV0_LocalHostNameString(); }),
                  expectedOf(setting).messages);
    }));
    EXPECT_TRUE(holdsInFreshProcess([&] {
        apply(setting);
        EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Storage & ~Trace::Detail & ~Trace::Flow,
                          [] { DOV0_LocalHostNameString(); }),
                  TraceLog{});
    }));
}

TEST(LocalHostNameString, CallsGethostnameWhateverTheLevel)
{
    for (const uint32_t level : {0U, Trace::All}) {
        EXPECT_TRUE(holdsInFreshProcess([=] {
            apply({"alpha", nullptr, nullptr, "N", nullptr, nullptr, "sys", nullptr});
            int calls = 0;
            standIns().hostName = [&](char *, size_t size) {
                EXPECT_EQ(size, 256U);
                ++calls;
                return 0;
            };
            traceAt(level, [] { DOV0_LocalHostNameString(); });
            EXPECT_EQ(calls, 1);
        }));
    }
}

TEST(LocalHostNameString, CutsWhatDoesNotFit)
{
    for (const size_t length : {254U, 255U, 256U, 257U, 10000U}) {
        const std::string text(length, 'h');
        for (const char *variable : {"RPCB0_HOSTNAME", "DOV_DCH_HOSTNAME", "DOV_DP_HOSTNAME"}) {
            EXPECT_EQ(nameInFreshProcess([&] {
                          setenv("DOV_USE_DOMAIN_NAME", "N", 1);
                          setenv(variable, text.c_str(), 1);
                      }),
                      text.substr(0, 255));
        }
        EXPECT_EQ(nameInFreshProcess([&] {
                      setenv("DOV_USE_DOMAIN_NAME", "N", 1);
                      setenv("DOV_DCH_HOSTNAME", text.c_str(), 1);
                      setenv("DOV_DP_HOSTNAME", text.c_str(), 1);
                  }),
                  text.substr(0, 255));
        EXPECT_EQ(nameInFreshProcess([&] {
                      setenv("DOV_USE_DOMAIN_NAME", "N", 1);
                      setHostName(text);
                  }),
                  text.substr(0, 255));
        EXPECT_EQ(nameInFreshProcess([&] {
                      setenv("RPCB0_HOSTNAME", "alpha", 1);
                      setenv("DOV_TCPIP_DOMAIN_NAME", text.c_str(), 1);
                  }),
                  cutAfter("alpha.", text));
        EXPECT_EQ(nameInFreshProcess([&] {
                      setenv("RPCB0_HOSTNAME", text.c_str(), 1);
                      setenv("DOV_TCPIP_DOMAIN_NAME", "corp.example", 1);
                  }),
                  cutAfter(text, ".corp.example"));
    }
}

TEST(LocalHostNameString, IsTheEmptyTextWhenThereIsNoHostName)
{
    setenv("DOV_USE_DOMAIN_NAME", "N", 1);
    standIns().hostName = [](char *area, size_t) {
        area[0] = 'x'; // what a failure leaves behind
        errno = ENAMETOOLONG;
        return -1;
    };
    char *name = nullptr;
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Flow, [&] { name = DOV0_LocalHostNameString(); }),
              (TraceLog{message(Function, "gethostname returned Hptr <>\n"),
                        message(Function, "Use gethostname value <>\n"),
                        message(Function, "Local hostname in effect is <>\n")}));
    EXPECT_STREQ(name, "");
}

TEST(LocalHostNameString, ReportsMissingStorageAndTriesAgain)
{
    apply({"alpha", nullptr, nullptr, "N", nullptr, nullptr, "sys", nullptr});
    const std::string text =
        message(Function, "****Error: Unable to allocate %d bytes for local hostname buffer\n", 256);
    const auto call = [] { withHeapFailure(1, [] { EXPECT_EQ(DOV0_LocalHostNameString(), nullptr); }); };
    EXPECT_EQ(traceOf(Function, Trace::All, call), (TraceLog{entry(Function), text, leave(Function)}));
    EXPECT_EQ(bitsThatShow(text, call), Trace::Error);
    EXPECT_STREQ(DOV0_LocalHostNameString(), "alpha");
}

TEST(LocalHostNameString, NeedsNoOtherStorageThanItsScratchBuffer)
{
    EXPECT_TRUE(holdsInFreshProcess([] {
        apply({"alpha", nullptr, nullptr, nullptr, "corp.example", nullptr, "sys", nullptr});
        EXPECT_TRUE(withHeapFailure(2, [] { EXPECT_STREQ(DOV0_LocalHostNameString(), "alpha"); }));
    }));
    EXPECT_TRUE(holdsInFreshProcess([] {
        apply({"alpha", nullptr, nullptr, nullptr, nullptr, nullptr, "sys", "sys.lab.example"});
        EXPECT_TRUE(withHeapFailure(3, [] { EXPECT_STREQ(DOV0_LocalHostNameString(), "alpha"); }));
    }));
}

TEST(LocalHostNameString, GivesOneNameToAllThreads)
{
    apply({"alpha", nullptr, nullptr, nullptr, "corp.example", nullptr, "sys", nullptr});
    std::string found[8];
    std::vector<std::thread> threads;
    for (std::string &one : found) {
        threads.emplace_back([&one] { one = DOV0_LocalHostNameString(); });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    for (const std::string &one : found) {
        EXPECT_EQ(one, "alpha.corp.example");
    }
}
