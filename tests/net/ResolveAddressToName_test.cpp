#include "net/resolver_stand_ins.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <algorithm>
#include <arpa/inet.h>

namespace {

constexpr char Function[] = "DOV0_ResolveAddressToName";

std::string calling(const char *address)
{
    return message(Function, "Calling inet_addr for address <%s>\n", address);
}

std::string resolved(const char *dotted)
{
    char *name = DOV0_ResolveAddressToName(dotted);
    if (name == nullptr) {
        ADD_FAILURE() << dotted << " has no name";
        return "";
    }
    std::string text = name;
    EXPECT_EQ(std::count(name + text.size(), name + 256, '\0'),
              256 - static_cast<std::ptrdiff_t>(text.size()));
    DOV0_FreeStorage(&name);
    return text;
}

} // namespace

TEST(ResolveAddressToName, GivesTheNameInATextOf256Bytes)
{
    HostRecord known("host.example");
    standIns().byAddress = [&](const void *, socklen_t, int) { return known.get(); };
    EXPECT_EQ(resolved("192.0.2.1"), "host.example");
}

TEST(ResolveAddressToName, CutsNamesThatDoNotFit)
{
    for (const size_t length : {0U, 1U, 254U, 255U, 256U, 257U, 10000U}) {
        const std::string name(length, 'n');
        HostRecord known(name);
        standIns().byAddress = [&](const void *, socklen_t, int) { return known.get(); };
        EXPECT_EQ(resolved("192.0.2.1"), name.substr(0, 255));
    }
}

TEST(ResolveAddressToName, FindsTheLoopbackAddressWithTheSystemsResolver)
{
    standIns().byAddress = realByAddress;
    EXPECT_EQ(resolved("127.0.0.1"), "localhost");
}

TEST(ResolveAddressToName, ReadsAddressesAsInetAddrDoes)
{
    HostRecord known("host.example");
    std::string asked;
    standIns().byAddress = [&](const void *address, socklen_t, int) {
        char text[INET_ADDRSTRLEN] = "";
        inet_ntop(AF_INET, address, text, sizeof text);
        asked = text;
        return known.get();
    };
    const struct {
        const char *text;
        const char *address;
    } cases[] = {{"10.1.2.3", "10.1.2.3"},         {"1.2.3", "1.2.0.3"},     {"1.2.3.4.5", "255.255.255.255"},
                 {"256.1.1.1", "255.255.255.255"}, {"010.0.0.1", "8.0.0.1"}, {"host", "255.255.255.255"},
                 {"", "255.255.255.255"},          {"0.0.0.0", "0.0.0.0"},   {"1", "0.0.0.1"}};
    for (const auto &one : cases) {
        EXPECT_EQ(resolved(one.text), "host.example") << one.text;
        EXPECT_EQ(asked, one.address) << one.text;
    }
    EXPECT_EQ(resolved(std::string(10000, '1').c_str()), "host.example");
    EXPECT_EQ(asked, "255.255.255.255");
}

TEST(ResolveAddressToName, TracesAName)
{
    HostRecord known("host.example");
    standIns().byAddress = [&](const void *, socklen_t, int) { return known.get(); };
    char *name = nullptr;
    const auto call = [&] { name = DOV0_ResolveAddressToName("192.0.2.1"); };
    const TraceLog log = traceAt(Trace::Flow | Trace::Storage, call);
    void *copy = nullptr;
    ASSERT_EQ(log.size(), 15U);
    ASSERT_EQ(std::sscanf(log[6].c_str(), "DOV0_GetHostByAddr: Allocated Cptr @%p", &copy), 1);
    const std::string allocated =
        message(Function, "Allocated ResolvedNameString @%p for length 256\n", name);
    const std::string freeing = message(Function, "Freeing hostent buffer @%p\n", copy);
    EXPECT_EQ(log[0], entry(Function));
    EXPECT_EQ((TraceLog(log.begin() + 7, log.end())),
              (TraceLog{leave("DOV0_GetHostByAddr", copy), entry("DOV0_GetStorage"),
                        leave("DOV0_GetStorage", name), allocated, freeing, entry("DOV0_FreeStorage"),
                        leave("DOV0_FreeStorage"), leave(Function, name)}));
    DOV0_FreeStorage(&name);
    EXPECT_EQ(traceOf(Function, Trace::Detail, call), (TraceLog{calling("192.0.2.1")}));
    DOV0_FreeStorage(&name);
    EXPECT_EQ(traceOf(Function, Trace::Storage, call).size(), 2U);
    DOV0_FreeStorage(&name);
    const TraceLog rest = traceOf(Function, Trace::All & ~Trace::Detail & ~Trace::Storage, call);
    EXPECT_EQ(rest, (TraceLog{entry(Function), leave(Function, name)}));
    DOV0_FreeStorage(&name);
}

TEST(ResolveAddressToName, GivesNullForAnAddressWithoutAName)
{
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(
            traceOf(Function, Trace::All, [] { EXPECT_EQ(DOV0_ResolveAddressToName("192.0.2.1"), nullptr); }),
            (TraceLog{entry(Function), calling("192.0.2.1"), leave(Function, nullptr)}));
    }
    EXPECT_EQ(addressLookUps(), 1);
}

TEST(ResolveAddressToName, GivesNullForARecordWithoutAName)
{
    HostRecord nameless("");
    nameless.get()->h_name = nullptr;
    standIns().byAddress = [&](const void *, socklen_t, int) { return nameless.get(); };
    const TraceLog log =
        traceOf(Function, Trace::Storage, [] { EXPECT_EQ(DOV0_ResolveAddressToName("192.0.2.1"), nullptr); });
    ASSERT_EQ(log.size(), 1U);
    EXPECT_EQ(log[0].find("DOV0_ResolveAddressToName: Freeing hostent buffer @0x"), 0U);
}

TEST(ResolveAddressToName, IsQuietAboutTheConversionOfAnEmptyText)
{
    EXPECT_EQ(traceOf(Function, Trace::All, [] { EXPECT_EQ(DOV0_ResolveAddressToName(""), nullptr); }),
              (TraceLog{entry(Function), leave(Function, nullptr)}));
}

TEST(ResolveAddressToName, FailsWithoutStorageAndFreesTheRecord)
{
    HostRecord known("host.example");
    standIns().byAddress = [&](const void *, socklen_t, int) { return known.get(); };
    for (int n = 1; n <= 2; ++n) {
        const TraceLog log = traceAt(Trace::Error | Trace::Flow, [&] {
            EXPECT_TRUE(
                withHeapFailure(n, [] { EXPECT_EQ(DOV0_ResolveAddressToName("192.0.2.1"), nullptr); }));
        });
        EXPECT_EQ(std::count(log.begin(), log.end(), entry("DOV0_FreeStorage")), n - 1);
        EXPECT_EQ(from(Function, log), (TraceLog{entry(Function), leave(Function, nullptr)}));
    }
    char *name = nullptr;
    EXPECT_FALSE(withHeapFailure(3, [&] { name = DOV0_ResolveAddressToName("192.0.2.1"); }));
    EXPECT_STREQ(name, "host.example");
    DOV0_FreeStorage(&name);
}

TEST(ResolveAddressToName, ReportsNull)
{
    const std::string text = message(Function, "*****Error: No address to resolve\n");
    EXPECT_EQ(traceAt(Trace::All, [] { EXPECT_EQ(DOV0_ResolveAddressToName(nullptr), nullptr); }),
              (TraceLog{entry(Function), text, leave(Function, nullptr)}));
    EXPECT_EQ(bitsThatShow(text, [] { DOV0_ResolveAddressToName(nullptr); }), Trace::Error);
    EXPECT_EQ(addressLookUps(), 0);
}
