#include "net/resolver_stand_ins.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <arpa/inet.h>

namespace {

constexpr char Function[] = "DOV0_ConvertAddrToName";

sockaddr_in socketAddress(const char *dotted)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = inet_addr(dotted);
    return address;
}

void setName(const char *name)
{
    standIns().byAddress = [name](const void *, socklen_t, int) {
        static HostRecord *known = nullptr;
        delete known;
        known = new HostRecord(name);
        return known->get();
    };
}

std::string nameOf(const char *dotted, int32_t shortName)
{
    const sockaddr_in address = socketAddress(dotted);
    char *name = nullptr;
    EXPECT_EQ(DOV0_ConvertAddrToName(&address, &name, shortName), 1);
    std::string text = name;
    DOV0_FreeStorage(&name);
    return text;
}

} // namespace

TEST(ConvertAddrToName, GivesTheWholeNameOrItsFirstPart)
{
    setName("host.example");
    EXPECT_EQ(nameOf("192.0.2.1", DOV0_FULL_NAME), "host.example");
    EXPECT_EQ(nameOf("192.0.2.1", DOV0_SHORT_NAME), "host");
    EXPECT_EQ(nameOf("192.0.2.1", -1), "host");
    EXPECT_EQ(nameOf("192.0.2.1", 256), "host");
    setName("plain");
    EXPECT_EQ(nameOf("192.0.2.1", 1), "plain");
    setName(".example");
    EXPECT_EQ(nameOf("192.0.2.1", 1), "");
    setName("host.");
    EXPECT_EQ(nameOf("192.0.2.1", 1), "host");
    setName("");
    EXPECT_EQ(nameOf("192.0.2.1", 0), "");
}

TEST(ConvertAddrToName, GivesNamesOfAnyLength)
{
    for (const size_t length : {255U, 256U, 10000U}) {
        const std::string name(length, 'n');
        setName(name.c_str());
        EXPECT_EQ(nameOf("192.0.2.1", 0), name);
    }
}

TEST(ConvertAddrToName, FindsTheLoopbackAddressWithTheSystemsResolver)
{
    standIns().byAddress = realByAddress;
    EXPECT_EQ(nameOf("127.0.0.1", 0), "localhost");
}

TEST(ConvertAddrToName, TracesAName)
{
    HostRecord known("host.example");
    standIns().byAddress = [&](const void *, socklen_t, int) { return known.get(); };
    const sockaddr_in address = socketAddress("192.0.2.1");
    char *name = nullptr;
    const auto call = [&] { DOV0_ConvertAddrToName(&address, &name, 1); };
    const TraceLog log = traceAt(Trace::Flow | Trace::Storage, call);
    void *copy = nullptr;
    ASSERT_EQ(log.size(), 15U);
    ASSERT_EQ(std::sscanf(log[6].c_str(), "DOV0_GetHostByAddr: Allocated Cptr @%p", &copy), 1);
    const TraceLog own = {
        entry(Function),
        message(Function, "h @%p, AddrName @%p, AddrName host.example, size %d\n", copy, name, 13),
        message(Function, "address 192.0.2.1 -> name host, freeing h @%p", copy), leave(Function, 1)};
    EXPECT_EQ(from(Function, log), own);
    EXPECT_EQ(log[0], entry(Function));
    EXPECT_EQ(log[1], entry("DOV0_GetHostByAddr"));
    EXPECT_EQ(log[7], leave("DOV0_GetHostByAddr", copy));
    EXPECT_EQ(log[8], entry("DOV0_GetStorage"));
    EXPECT_EQ(log[9], leave("DOV0_GetStorage", name));
    EXPECT_EQ(log[10], own[1]);
    EXPECT_EQ(log[11], own[2]);
    EXPECT_EQ(log[12], entry("DOV0_FreeStorage"));
    EXPECT_EQ(log[13], leave("DOV0_FreeStorage"));
    EXPECT_EQ(log[14], own[3]);
    DOV0_FreeStorage(&name);
    for (const uint32_t bit : {Trace::Detail, Trace::Storage}) {
        const TraceLog messages = traceOf(Function, bit, call);
        ASSERT_EQ(messages.size(), 2U);
        void *shownCopy = nullptr;
        void *shownName = nullptr;
        EXPECT_EQ(std::sscanf(messages[0].c_str(),
                              "DOV0_ConvertAddrToName: h @%p, AddrName @%p, AddrName host.example, size 13",
                              &shownCopy, &shownName),
                  2);
        EXPECT_EQ(shownName, name);
        EXPECT_EQ(messages[1], message(Function, "address 192.0.2.1 -> name host, freeing h @%p", shownCopy));
        DOV0_FreeStorage(&name);
    }
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Detail & ~Trace::Storage, call),
              (TraceLog{entry(Function), leave(Function, 1)}));
    DOV0_FreeStorage(&name);
}

TEST(ConvertAddrToName, LeavesTheAreaAloneWithoutAName)
{
    const sockaddr_in address = socketAddress("192.0.2.1");
    char kept[] = "kept";
    char *name = kept;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(traceOf(Function, Trace::All, [&] { DOV0_ConvertAddrToName(&address, &name, 0); }),
                  (TraceLog{entry(Function), leave(Function, intptr_t{0})}));
        EXPECT_EQ(name, kept);
    }
    EXPECT_EQ(addressLookUps(), 1);

    HostRecord nameless("");
    nameless.get()->h_name = nullptr;
    standIns().byAddress = [&](const void *, socklen_t, int) { return nameless.get(); };
    const sockaddr_in other = socketAddress("192.0.2.2");
    EXPECT_EQ(traceOf(Function, Trace::All, [&] { DOV0_ConvertAddrToName(&other, &name, 0); }),
              (TraceLog{entry(Function), leave(Function, intptr_t{0})}));
    EXPECT_EQ(name, kept);
}

TEST(ConvertAddrToName, FailsWithoutStorageAndFreesTheRecord)
{
    setName("host.example");
    const sockaddr_in address = socketAddress("192.0.2.1");
    char kept[] = "kept";
    char *name = kept;
    for (int n = 1; n <= 2; ++n) {
        const TraceLog log = traceAt(Trace::Error | Trace::Flow, [&] {
            EXPECT_TRUE(
                withHeapFailure(n, [&] { EXPECT_EQ(DOV0_ConvertAddrToName(&address, &name, 0), 0); }));
        });
        EXPECT_EQ(std::count(log.begin(), log.end(), entry("DOV0_FreeStorage")), n - 1);
        EXPECT_EQ(from(Function, log), (TraceLog{entry(Function), leave(Function, intptr_t{0})}));
        EXPECT_EQ(name, kept);
    }
    EXPECT_FALSE(withHeapFailure(3, [&] { EXPECT_EQ(DOV0_ConvertAddrToName(&address, &name, 0), 1); }));
    DOV0_FreeStorage(&name);
}

TEST(ConvertAddrToName, ReportsMissingArguments)
{
    const sockaddr_in address = socketAddress("192.0.2.1");
    char kept[] = "kept";
    char *name = kept;
    const std::string text =
        message(Function, "*****Error: Socket address @%p or area for the name @%p missing\n",
                static_cast<void *>(nullptr), &name);
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_ConvertAddrToName(nullptr, &name, 0), 0); }),
              (TraceLog{entry(Function), text, leave(Function, intptr_t{0})}));
    EXPECT_EQ(bitsThatShow(text, [&] { DOV0_ConvertAddrToName(nullptr, &name, 0); }), Trace::Error);
    EXPECT_EQ(
        traceAt(Trace::Error, [&] { EXPECT_EQ(DOV0_ConvertAddrToName(&address, nullptr, 0), 0); }).size(),
        1U);
    EXPECT_EQ(name, kept);
    EXPECT_EQ(addressLookUps(), 0);
}
