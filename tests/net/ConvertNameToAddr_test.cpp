#include "net/resolver_stand_ins.h"
#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <arpa/inet.h>

namespace {

constexpr char Function[] = "DOV0_ConvertNameToAddr";

// A socket address in its wire form: family, port and address as they stand in memory, and the rest.
void expectAddress(const sockaddr_in &address, int port, const char *dotted)
{
    EXPECT_EQ(address.sin_family, 2);
    unsigned char portBytes[2] = {};
    std::memcpy(portBytes, &address.sin_port, 2);
    EXPECT_EQ(portBytes[0], port >> 8);
    EXPECT_EQ(portBytes[1], port & 0xFF);
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
    EXPECT_STREQ(text, dotted);
    for (const unsigned char byte : address.sin_zero) {
        EXPECT_EQ(byte, 0);
    }
}

sockaddr_in filled()
{
    sockaddr_in address = {};
    std::memset(&address, 0xA5, sizeof address);
    return address;
}

std::string converting(const char *name)
{
    return message(Function, "Converting hostname <%s> to dotted decimal address\n", name);
}

std::string cannotConvert(const char *name)
{
    return message(Function, "cannot convert name <%s> to address\n", name);
}

} // namespace

TEST(ConvertNameToAddr, ReadsADottedAddressWithoutTheResolver)
{
    const struct {
        const char *name;
        const char *dotted;
    } cases[] = {{"127.0.0.1", "127.0.0.1"},
                 {"0.0.0.0", "0.0.0.0"},
                 {"255.255.255.255", "255.255.255.255"},
                 {"010.0.0.1", "8.0.0.1"},
                 {"0x10.0.0.1", "16.0.0.1"},
                 {"256.1.1.1", "255.255.255.255"},
                 {"1.2.3.4.5", "255.255.255.255"},
                 {"1.2.3.4x", "255.255.255.255"},
                 {"1a.2b.3c.4d", "255.255.255.255"}};
    for (const auto &one : cases) {
        sockaddr_in address = filled();
        EXPECT_EQ(DOV0_ConvertNameToAddr(one.name, 161, &address), 1) << one.name;
        expectAddress(address, 161, one.dotted);
    }
    EXPECT_EQ(nameLookUps(), 0);
}

TEST(ConvertNameToAddr, TracesADottedAddress)
{
    sockaddr_in address = {};
    const auto call = [&] { DOV0_ConvertNameToAddr("10.1.2.3", 161, &address); };
    EXPECT_EQ(traceAt(Trace::All, call),
              (TraceLog{entry(Function), converting("10.1.2.3"), entry("DOV0_IsThisAddressString"),
                        message("DOV0_IsThisAddressString", "Examining input address <10.1.2.3>\n"),
                        leave("DOV0_IsThisAddressString", 3), leave(Function, 1)}));
    EXPECT_EQ(bitsThatShow(converting("10.1.2.3"), call), Trace::Detail);
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Detail, call),
              (TraceLog{entry(Function), leave(Function, 1)}));
}

TEST(ConvertNameToAddr, TakesTheFirstAddressOfAName)
{
    HostRecord known("host.example", {"192.0.2.7", "192.0.2.8"});
    std::string asked;
    standIns().byName = [&](const char *name) {
        asked = name;
        return known.get();
    };
    for (const char *name : {"host", "1.2.3", "1.2.3.", "host.1.2.3.4", ""}) {
        sockaddr_in address = filled();
        EXPECT_EQ(DOV0_ConvertNameToAddr(name, 80, &address), 1);
        EXPECT_EQ(asked, name);
        expectAddress(address, 80, "192.0.2.7");
    }
}

TEST(ConvertNameToAddr, FindsLocalhostWithTheSystemsResolver)
{
    standIns().byName = realByName;
    GuardedBuffer area(sizeof(sockaddr_in));
    auto *const address = static_cast<sockaddr_in *>(static_cast<void *>(area.bytes()));
    EXPECT_EQ(DOV0_ConvertNameToAddr("localhost", 65535, address), 1);
    expectAddress(*address, 65535, "127.0.0.1");
}

TEST(ConvertNameToAddr, UsesTheLowSixteenBitsOfThePort)
{
    const struct {
        int32_t port;
        int stored;
    } cases[] = {{0, 0},     {1, 1},       {161, 161},  {65535, 65535},
                 {65536, 0}, {65697, 161}, {-1, 65535}, {INT32_MIN, 0}};
    for (const auto &one : cases) {
        sockaddr_in address = filled();
        DOV0_ConvertNameToAddr("10.0.0.1", one.port, &address);
        expectAddress(address, one.stored, "10.0.0.1");
    }
}

TEST(ConvertNameToAddr, TracesAName)
{
    HostRecord known("host.example", {"192.0.2.7"});
    standIns().byName = [&](const char *) { return known.get(); };
    sockaddr_in address = {};
    const auto call = [&] { DOV0_ConvertNameToAddr("host", 65697, &address); };
    call(); // first use of the mutex
    const TraceLog log = traceAt(Trace::All & ~Trace::State, call);
    void *copy = nullptr;
    ASSERT_EQ(log.size(), 18U);
    ASSERT_EQ(std::sscanf(log[7].c_str(), "DOV0_GetStorage: Allocated storage at address @%p", &copy), 1);
    const int recordSize = sizeof(hostent);
    EXPECT_EQ(
        log,
        (TraceLog{
            entry(Function), converting("host"), entry("DOV0_IsThisAddressString"),
            message("DOV0_IsThisAddressString", "Examining input address <host>\n"),
            leave("DOV0_IsThisAddressString", intptr_t{0}), entry("DOV0_GetHostByName"),
            entry("DOV0_GetStorage"),
            message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n", copy, recordSize),
            leave("DOV0_GetStorage", copy),
            message("DOV0_GetHostByName", "Allocated hostent buffer @%p for length %d\n", copy, recordSize),
            leave("DOV0_GetHostByName", copy),
            message(Function, "Copying %d bytes to address @%p from hostent @%p\n", 4, &address.sin_addr,
                    copy),
            message(Function, "address 192.0.2.7 port 161\n"),
            message(Function, "Freeing hostent buffer @%p\n", copy), entry("DOV0_FreeStorage"),
            message("DOV0_FreeStorage", "Freeing storage at address @%p\n", copy), leave("DOV0_FreeStorage"),
            leave(Function, 1)}));
    EXPECT_EQ(bitsThatShow(message(Function, "address 192.0.2.7 port 161\n"), call), Trace::Detail);
    EXPECT_EQ(traceOf(Function, Trace::Detail, call).size(), 3U);
    EXPECT_EQ(traceOf(Function, Trace::Storage, call).size(), 1U);
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Detail & ~Trace::Storage, call),
              (TraceLog{entry(Function), leave(Function, 1)}));
}

TEST(ConvertNameToAddr, FillsAddressZeroForANameThatCannotBeResolved)
{
    sockaddr_in address = filled();
    int32_t result = -1;
    const auto call = [&] { result = DOV0_ConvertNameToAddr("nowhere", 161, &address); };
    EXPECT_EQ(traceOf(Function, Trace::All, call),
              (TraceLog{entry(Function), converting("nowhere"), cannotConvert("nowhere"),
                        leave(Function, intptr_t{0})}));
    EXPECT_EQ(result, 0);
    expectAddress(address, 161, "0.0.0.0");
    EXPECT_EQ(bitsThatShow(cannotConvert("nowhere"), call), Trace::Error);
}

TEST(ConvertNameToAddr, TakesNamesOfAnyLength)
{
    for (const size_t length : {255U, 256U, 10000U}) {
        const std::string name(length, 'h');
        sockaddr_in address = filled();
        EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Flow,
                          [&] { EXPECT_EQ(DOV0_ConvertNameToAddr(name.c_str(), 1, &address), 0); }),
                  (TraceLog{converting(name.c_str()), cannotConvert(name.c_str())}));
    }
}

TEST(ConvertNameToAddr, IsQuietAboutTheConversionOfAnEmptyName)
{
    sockaddr_in address = filled();
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Flow,
                      [&] { EXPECT_EQ(DOV0_ConvertNameToAddr("", 161, &address), 0); }),
              (TraceLog{cannotConvert("")}));
    expectAddress(address, 161, "0.0.0.0");
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Flow,
                      [&] { EXPECT_EQ(DOV0_ConvertNameToAddr(nullptr, 161, &address), 0); }),
              (TraceLog{cannotConvert("(null)")}));
    expectAddress(address, 161, "0.0.0.0");
}

TEST(ConvertNameToAddr, TakesARecordWithoutAddressesAsUnresolved)
{
    HostRecord known("host.example", {});
    standIns().byName = [&](const char *) { return known.get(); };
    sockaddr_in address = filled();
    for (int i = 0; i < 2; ++i) {
        const TraceLog log = traceOf(Function, Trace::Error | Trace::Storage,
                                     [&] { EXPECT_EQ(DOV0_ConvertNameToAddr("host", 161, &address), 0); });
        ASSERT_EQ(log.size(), 2U);
        EXPECT_EQ(log[0], cannotConvert("host"));
        EXPECT_EQ(log[1].find("DOV0_ConvertNameToAddr: Freeing hostent buffer @0x"), 0U);
        expectAddress(address, 161, "0.0.0.0");
        known.get()->h_addr_list = nullptr;
    }
}

TEST(ConvertNameToAddr, FailsWithoutStorage)
{
    HostRecord known("host.example", {"192.0.2.7"});
    standIns().byName = [&](const char *) { return known.get(); };
    sockaddr_in address = filled();
    EXPECT_EQ(traceOf(Function, Trace::Error,
                      [&] {
                          EXPECT_TRUE(withHeapFailure(
                              1, [&] { EXPECT_EQ(DOV0_ConvertNameToAddr("host", 161, &address), 0); }));
                      }),
              (TraceLog{cannotConvert("host")}));
    expectAddress(address, 161, "0.0.0.0");
    EXPECT_FALSE(withHeapFailure(2, [&] { EXPECT_EQ(DOV0_ConvertNameToAddr("host", 161, &address), 1); }));
}

TEST(ConvertNameToAddr, ReportsAMissingArea)
{
    const std::string text = message(Function, "*****Error: No area for the address of host <host>\n");
    EXPECT_EQ(traceAt(Trace::All, [] { EXPECT_EQ(DOV0_ConvertNameToAddr("host", 1, nullptr), 0); }),
              (TraceLog{entry(Function), text, leave(Function, intptr_t{0})}));
    EXPECT_EQ(bitsThatShow(text, [] { DOV0_ConvertNameToAddr("host", 1, nullptr); }), Trace::Error);
    EXPECT_EQ(DOV0_ConvertNameToAddr(nullptr, 1, nullptr), 0);
}
