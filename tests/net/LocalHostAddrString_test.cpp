#include "net/resolver_stand_ins.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <cstdlib>
#include <thread>

namespace {

constexpr char Function[] = "DOV0_LocalHostAddrString";

const std::string Unavailable = "DOV0_LocalHostAddrString: Local host address unavailable\n";

void setLocalName(const char *name)
{
    setenv("DOV_USE_DOMAIN_NAME", "N", 1);
    setenv("RPCB0_HOSTNAME", name, 1);
}

std::string calling(const char *name)
{
    return message(Function, "Calling ConvertNameToAddr with NameSpec @%p <%s>\n", name, name);
}

} // namespace

TEST(LocalHostAddrString, GivesTheAddressOfTheLocalHostNameAndKeepsIt)
{
    setLocalName("alpha");
    HostRecord known("alpha.example", {"192.0.2.7", "192.0.2.8"});
    std::string asked;
    standIns().byName = [&](const char *name) {
        asked = name;
        return known.get();
    };
    char *address = nullptr;
    const auto call = [&] { address = DOV0_LocalHostAddrString(); };
    const TraceLog log = traceOf(Function, Trace::All, call);
    EXPECT_EQ(log, (TraceLog{entry(Function), calling(DOV0_LocalHostNameString()),
                             message(Function, "Allocated AddrString @%p for length 80\n", address),
                             message(Function, "Local host address in effect is 192.0.2.7"),
                             leave(Function, address)}));
    EXPECT_EQ(asked, "alpha");
    EXPECT_EQ(std::string(address, 80), "192.0.2.7" + std::string(71, '\0'));
    char *const first = address;
    standIns().byName = nullptr;
    EXPECT_EQ(traceAt(Trace::All, call), (TraceLog{entry(Function), leave(Function, first)}));
    EXPECT_EQ(address, first);
    EXPECT_EQ(nameLookUps(), 1);
}

TEST(LocalHostAddrString, TracesItsStepsInOrder)
{
    setLocalName("192.0.2.7");
    const char *address = nullptr;
    const TraceLog log = traceAt(Trace::Flow, [&] { address = DOV0_LocalHostAddrString(); });
    ASSERT_GT(log.size(), 8U);
    EXPECT_EQ(log[1], entry("DOV0_LocalHostNameString"));
    EXPECT_EQ(
        (TraceLog(log.end() - 8, log.end())),
        (TraceLog{leave("DOV0_LocalHostNameString", DOV0_LocalHostNameString()),
                  entry("DOV0_ConvertNameToAddr"), entry("DOV0_IsThisAddressString"),
                  leave("DOV0_IsThisAddressString", 3), leave("DOV0_ConvertNameToAddr", 1),
                  entry("DOV0_GetStorage"), leave("DOV0_GetStorage", address), leave(Function, address)}));
    EXPECT_STREQ(address, "192.0.2.7");
}

TEST(LocalHostAddrString, HoldsTheLongestAddress)
{
    setLocalName("255.255.255.255");
    EXPECT_STREQ(DOV0_LocalHostAddrString(), "255.255.255.255");
}

TEST(LocalHostAddrString, TracesTheStorageUnderItsBitOnly)
{
    setLocalName("192.0.2.7");
    EXPECT_EQ(
        traceOf(Function, Trace::All & ~Trace::Storage & ~Trace::Flow, [] { DOV0_LocalHostAddrString(); }),
        (TraceLog{calling(DOV0_LocalHostNameString()),
                  message(Function, "Local host address in effect is 192.0.2.7")}));
}

TEST(LocalHostAddrString, TracesNothingButTheStorageWithoutTheDetailBit)
{
    setLocalName("192.0.2.7");
    const TraceLog log =
        traceOf(Function, Trace::All & ~Trace::Detail & ~Trace::Flow, [] { DOV0_LocalHostAddrString(); });
    EXPECT_EQ(log, (TraceLog{message(Function, "Allocated AddrString @%p for length 80\n",
                                     DOV0_LocalHostAddrString())}));
}

TEST(LocalHostAddrString, TriesAgainAfterAFailure)
{
    setLocalName("alpha");
    const auto call = [] { EXPECT_EQ(DOV0_LocalHostAddrString(), nullptr); };
    const TraceLog log = traceOf(Function, Trace::All, call);
    EXPECT_EQ(log, (TraceLog{entry(Function), calling(DOV0_LocalHostNameString()), Unavailable,
                             leave(Function, nullptr)}));
    EXPECT_EQ(bitsThatShow(Unavailable, call), Trace::Detail);
    EXPECT_EQ(bitsThatShow(calling(DOV0_LocalHostNameString()), call), Trace::Detail);
    HostRecord known("alpha", {"192.0.2.7"});
    standIns().byName = [&](const char *) { return known.get(); };
    EXPECT_STREQ(DOV0_LocalHostAddrString(), "192.0.2.7");
}

TEST(LocalHostAddrString, TriesAgainWithoutALocalHostName)
{
    setLocalName("192.0.2.7");
    const std::string note = message(Function, "Note: Unable to determine local hostname string\n");
    const auto call = [] { withHeapFailure(1, [] { EXPECT_EQ(DOV0_LocalHostAddrString(), nullptr); }); };
    EXPECT_EQ(traceOf(Function, Trace::All, call),
              (TraceLog{entry(Function), note, Unavailable, leave(Function, nullptr)}));
    EXPECT_EQ(bitsThatShow(note, call), Trace::Detail);
    EXPECT_EQ(traceAt(Trace::Error, call),
              (TraceLog{message("DOV0_GetStorage", "*****Unable to obtain storage, size %d\n", 256),
                        message("DOV0_LocalHostNameString",
                                "****Error: Unable to allocate %d bytes for local hostname buffer\n", 256)}));
    EXPECT_STREQ(DOV0_LocalHostAddrString(), "192.0.2.7");
}

TEST(LocalHostAddrString, TriesAgainWithoutStorageForTheAddress)
{
    setLocalName("192.0.2.7");
    DOV0_LocalHostNameString();
    const auto call = [] {
        EXPECT_TRUE(withHeapFailure(1, [] { EXPECT_EQ(DOV0_LocalHostAddrString(), nullptr); }));
    };
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Flow, call),
              (TraceLog{calling(DOV0_LocalHostNameString()), Unavailable}));
    EXPECT_EQ(traceAt(Trace::Error, call),
              (TraceLog{message("DOV0_GetStorage", "*****Unable to obtain storage, size %d\n", 80)}));
    EXPECT_STREQ(DOV0_LocalHostAddrString(), "192.0.2.7");
}

TEST(LocalHostAddrString, GivesOneTextToAllThreads)
{
    setLocalName("192.0.2.7");
    char *found[8] = {};
    std::vector<std::thread> threads;
    for (char *&one : found) {
        threads.emplace_back([&one] { one = DOV0_LocalHostAddrString(); });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    for (const char *one : found) {
        EXPECT_EQ(one, found[0]);
    }
    EXPECT_STREQ(found[0], "192.0.2.7");
}
