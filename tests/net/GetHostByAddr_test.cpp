#include "net/resolver_stand_ins.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <map>
#include <random>
#include <thread>

namespace {

constexpr char Function[] = "DOV0_GetHostByAddr";
constexpr int RecordSize = sizeof(hostent);

// An entry of the list as it is kept: the next one and an address in host byte order.
struct Entry {
    const Entry *next;
    uint32_t address;
};

hostent *lookUp(uint32_t address)
{
    const uint32_t networkAddress = htonl(address);
    return DOV0_GetHostByAddr(&networkAddress);
}

uint32_t hostAddress(const char *dotted)
{
    return ntohl(inet_addr(dotted));
}

std::string dottedText(uint32_t address)
{
    const in_addr networkAddress = {htonl(address)};
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &networkAddress, text, sizeof text);
    return text;
}

// The first address that a line of a log shows behind a text.
void *addressBehind(const std::string &text, const TraceLog &log)
{
    for (const std::string &line : log) {
        const size_t at = line.find(text);
        if (at != std::string::npos) {
            void *found = nullptr;
            EXPECT_EQ(std::sscanf(line.c_str() + at + text.size(), "%p", &found), 1);
            return found;
        }
    }
    ADD_FAILURE() << "no line with " << text;
    return nullptr;
}

// Looks up an address that fails, and gives its new entry.
void *fail(uint32_t address)
{
    const TraceLog log = traceOf(Function, Trace::Storage, [=] { EXPECT_EQ(lookUp(address), nullptr); });
    return addressBehind("Allocated UnresolvedHost @", log);
}

// The message about a new entry that stands behind another one.
std::string added(const char *dotted, const void *before, const void *entryAddress, const void *head)
{
    return message(Function, "Unresolved host <%s> added to list, pUH @%p NewUH @%p UnresolvedHostList @%p\n",
                   dotted, before, entryAddress, head);
}

// Addresses from here on are those that listedAddresses() fails.
constexpr uint32_t FirstProbe = 0xFFFFFF00;

// The list without its probes, found through the message about a new one behind another.
std::vector<uint32_t> listedAddresses()
{
    static uint32_t probe = FirstProbe;
    lookUp(probe++);
    const TraceLog log = traceOf(Function, Trace::Detail, [] { lookUp(probe++); });
    std::vector<uint32_t> addresses;
    const auto *host = static_cast<const Entry *>(addressBehind("UnresolvedHostList @", log));
    for (; host != nullptr && host->address < FirstProbe; host = host->next) {
        addresses.push_back(host->address);
    }
    return addresses;
}

// Distinct addresses below the probes, in order.
std::vector<uint32_t> someAddresses(uint32_t count)
{
    std::vector<uint32_t> addresses(count);
    for (uint32_t i = 0; i < count; ++i) {
        addresses[i] = 0x0A000000 + i * 7919 + (i % 3) * 0x20000000;
    }
    std::sort(addresses.begin(), addresses.end());
    addresses.erase(std::unique(addresses.begin(), addresses.end()), addresses.end());
    return addresses;
}

// Fails all addresses in this order and compares each message with a sorted map of the entries.
void expectOrderedInsertion(const std::vector<uint32_t> &addresses)
{
    std::map<uint32_t, const void *> model;
    for (const uint32_t address : addresses) {
        const std::string dotted = dottedText(address);
        const TraceLog log = traceOf(Function, Trace::Detail | Trace::Storage, [=] { lookUp(address); });
        const void *newHost = addressBehind("Allocated UnresolvedHost @", log);
        const auto next = model.lower_bound(address);
        std::string text;
        if (model.empty()) {
            text =
                message(Function, "Unresolved host @%p <%s> added to top of list\n", newHost, dotted.c_str());
        } else if (next == model.begin()) {
            text = message(Function, "Unresolved host @%p %s added as second entry in list\n", newHost,
                           dotted.c_str());
        } else {
            text = added(dotted.c_str(), std::prev(next)->second, newHost, model.begin()->second);
        }
        ASSERT_EQ(log.back(), text);
        model.emplace(address, newHost);
    }
    std::vector<uint32_t> sorted = addresses;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(listedAddresses(), sorted);
    const int asked = addressLookUps();
    for (const auto &[address, known] : model) {
        const uint32_t networkAddress = htonl(address);
        const TraceLog log = traceOf(Function, Trace::Detail, [&] { DOV0_GetHostByAddr(&networkAddress); });
        ASSERT_EQ(log, (TraceLog{message(Function, "Known unresolvable address @%p pUH @%p <%s> bypassed\n",
                                         &networkAddress, known, dottedText(address).c_str())}));
    }
    EXPECT_EQ(addressLookUps(), asked);
}

} // namespace

TEST(GetHostByAddr, CopiesTheResolversRecordIntoTheStartOfItsBlock)
{
    HostRecord known("host.example");
    standIns().byAddress = [&](const void *address, socklen_t length, int family) {
        EXPECT_EQ(std::string(static_cast<const char *>(address), 4), std::string("\xC0\x00\x02\x07", 4));
        EXPECT_EQ(length, 4U);
        EXPECT_EQ(family, AF_INET);
        return known.get();
    };
    hostent *copy = lookUp(hostAddress("192.0.2.7"));
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, known.get());
    EXPECT_EQ(copy->h_name, known.get()->h_name);
    EXPECT_EQ(copy->h_aliases, known.get()->h_aliases);
    EXPECT_EQ(copy->h_addrtype, known.get()->h_addrtype);
    EXPECT_EQ(copy->h_length, known.get()->h_length);
    EXPECT_EQ(copy->h_addr_list, known.get()->h_addr_list);
    const auto *area = reinterpret_cast<const char *>(copy + 1);
    EXPECT_EQ(std::count(area, area + 8192, '\0'), 8192);
    DOV0_FreeStorage(&copy);
}

TEST(GetHostByAddr, FindsTheLoopbackAddressWithTheSystemsResolver)
{
    standIns().byAddress = realByAddress;
    hostent *copy = lookUp(INADDR_LOOPBACK);
    ASSERT_NE(copy, nullptr);
    EXPECT_STREQ(copy->h_name, "localhost");
    DOV0_FreeStorage(&copy);
}

TEST(GetHostByAddr, TracesASuccess)
{
    setenv("DOV_HOSTENT_DATA_SIZE", "100", 1);
    HostRecord known("host.example");
    standIns().byAddress = [&](const void *, socklen_t, int) { return known.get(); };
    void *copy = nullptr;
    const auto call = [&] { copy = lookUp(hostAddress("192.0.2.7")); };
    const auto storage = [&] {
        return TraceLog{
            entry("DOV0_GetStorage"),
            message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n", copy, RecordSize + 100),
            leave("DOV0_GetStorage", copy),
            message(Function, "Allocated Cptr @%p, size %d\n", copy, RecordSize + 100),
            message(Function, "Copying h2 @%p to Cptr @%p for length %d\n", known.get(), copy, RecordSize),
            leave(Function, copy)};
    };
    const char *const value = std::getenv("DOV_HOSTENT_DATA_SIZE");
    const TraceLog first = traceAt(Trace::All & ~Trace::State, call);
    TraceLog expected = {
        entry(Function), entry("DOV0_GetEnv"),
        message("DOV0_GetEnv", "PLT1_GetEnv <DOV_HOSTENT_DATA_SIZE> returned EnvValue @%p <100>\n", value),
        message("DOV0_GetEnv", "Env <DOV_HOSTENT_DATA_SIZE> value <100>\n"), leave("DOV0_GetEnv", value)};
    for (const std::string &line : storage()) {
        expected.push_back(line);
    }
    EXPECT_EQ(first, expected);
    DOV0_FreeStorage(&copy);

    const TraceLog second = traceAt(Trace::All & ~Trace::State, call);
    expected = {entry(Function)};
    for (const std::string &line : storage()) {
        expected.push_back(line);
    }
    EXPECT_EQ(second, expected);
    DOV0_FreeStorage(&copy);

    const TraceLog detail = traceOf(Function, Trace::Detail, call);
    EXPECT_EQ(detail, (TraceLog{message(Function, "Copying h2 @%p to Cptr @%p for length %d\n", known.get(),
                                        copy, RecordSize)}));
    DOV0_FreeStorage(&copy);
    const TraceLog storageLog = traceOf(Function, Trace::Storage, call);
    EXPECT_EQ(storageLog,
              (TraceLog{message(Function, "Allocated Cptr @%p, size %d\n", copy, RecordSize + 100)}));
    DOV0_FreeStorage(&copy);
    const TraceLog rest = traceOf(Function, Trace::All & ~Trace::Detail & ~Trace::Storage, call);
    EXPECT_EQ(rest, (TraceLog{entry(Function), leave(Function, copy)}));
    DOV0_FreeStorage(&copy);
}

TEST(GetHostByAddr, TracesAFailure)
{
    setenv("DOV_HOSTENT_DATA_SIZE", "100", 1);
    HostRecord known("host.example");
    standIns().byAddress = [&](const void *, socklen_t, int) { return known.get(); };
    hostent *first = lookUp(1); // reads the size
    DOV0_FreeStorage(&first);
    standIns().byAddress = nullptr;

    const TraceLog log =
        traceAt(Trace::All & ~Trace::State, [] { EXPECT_EQ(lookUp(hostAddress("10.0.0.5")), nullptr); });
    const void *copy = addressBehind("Allocated Cptr @", log);
    const void *newHost = addressBehind("Allocated UnresolvedHost @", log);
    const int entrySize = sizeof(Entry);
    EXPECT_EQ(
        log,
        (TraceLog{
            entry(Function), entry("DOV0_GetStorage"),
            message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n", copy, RecordSize + 100),
            leave("DOV0_GetStorage", copy),
            message(Function, "Allocated Cptr @%p, size %d\n", copy, RecordSize + 100),
            entry("DOV0_GetStorage"),
            message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n", newHost, entrySize),
            leave("DOV0_GetStorage", newHost),
            message(Function, "Allocated UnresolvedHost @%p, size %d\n", newHost, entrySize),
            message(Function, "Freeing Cptr @%p\n", copy), entry("DOV0_FreeStorage"),
            message("DOV0_FreeStorage", "Freeing storage at address @%p\n", copy), leave("DOV0_FreeStorage"),
            message(Function, "Unresolved host @%p <10.0.0.5> added to top of list\n", newHost),
            leave(Function, nullptr)}));

    EXPECT_EQ(traceOf(Function, Trace::State | Trace::Flow, [] { lookUp(hostAddress("10.0.0.6")); }),
              (TraceLog{entry(Function), message(Function, "cannot convert address to name 10.0.0.6\n"),
                        leave(Function, nullptr)}));
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::State & ~Trace::Storage & ~Trace::Detail,
                      [] { lookUp(hostAddress("10.0.0.7")); }),
              (TraceLog{entry(Function), leave(Function, nullptr)}));
    const TraceLog storage = traceOf(Function, Trace::Storage, [] { lookUp(hostAddress("10.0.0.8")); });
    EXPECT_EQ(storage,
              (TraceLog{message(Function, "Allocated Cptr @%p, size %d\n",
                                addressBehind("Allocated Cptr @", storage), RecordSize + 100),
                        message(Function, "Allocated UnresolvedHost @%p, size %d\n",
                                addressBehind("Allocated UnresolvedHost @", storage), entrySize),
                        message(Function, "Freeing Cptr @%p\n", addressBehind("Freeing Cptr @", storage))}));
    EXPECT_EQ(traceOf(Function, Trace::Detail, [] { lookUp(hostAddress("10.0.0.9")); }).size(), 1U);
}

TEST(GetHostByAddr, OrdersTheMessagesOfAFailure)
{
    const TraceLog log =
        traceOf(Function, Trace::State | Trace::Storage, [] { lookUp(hostAddress("10.0.0.5")); });
    ASSERT_EQ(log.size(), 4U);
    EXPECT_EQ(log[2], message(Function, "cannot convert address to name 10.0.0.5\n"));
    EXPECT_EQ(log[3], message(Function, "Freeing Cptr @%p\n", addressBehind("Allocated Cptr @", log)));
}

TEST(GetHostByAddr, NeverAsksAgainForAnAddressThatFailed)
{
    const void *newHost = fail(hostAddress("10.0.0.5"));
    const uint32_t address = inet_addr("10.0.0.5");
    hostent *copy = nullptr;
    const auto call = [&] { copy = DOV0_GetHostByAddr(&address); };
    const std::string bypassed =
        message(Function, "Known unresolvable address @%p pUH @%p <10.0.0.5> bypassed\n", &address, newHost);
    EXPECT_EQ(traceAt(Trace::All, call), (TraceLog{entry(Function), bypassed, leave(Function)}));
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(bitsThatShow(bypassed, call), Trace::Detail);
    EXPECT_EQ(addressLookUps(), 1);
    EXPECT_EQ(lookUp(hostAddress("10.0.0.4")), nullptr);
    EXPECT_EQ(addressLookUps(), 2);
}

TEST(GetHostByAddr, KeepsTheListInOrder)
{
    const TraceLog log = traceOf(Function, Trace::Detail, [] {
        lookUp(hostAddress("10.0.0.5"));
        lookUp(hostAddress("10.0.0.1"));
        lookUp(hostAddress("10.0.0.3"));
    });
    const void *fifth = addressBehind("Unresolved host @", {log[0]});
    const void *firstOne = addressBehind("Unresolved host @", {log[1]});
    const void *third = addressBehind("NewUH @", {log[2]});
    EXPECT_EQ(
        log,
        (TraceLog{message(Function, "Unresolved host @%p <10.0.0.5> added to top of list\n", fifth),
                  message(Function, "Unresolved host @%p 10.0.0.1 added as second entry in list\n", firstOne),
                  added("10.0.0.3", firstOne, third, firstOne)}));
    EXPECT_EQ(listedAddresses(), (std::vector<uint32_t>{hostAddress("10.0.0.1"), hostAddress("10.0.0.3"),
                                                        hostAddress("10.0.0.5")}));
}

TEST(GetHostByAddr, ComparesAddressesAsUnsignedNumbersInHostOrder)
{
    for (const char *dotted :
         {"128.0.0.1", "1.0.0.128", "0.0.0.0", "127.255.255.255", "254.255.255.255", "1.0.0.2"}) {
        EXPECT_EQ(lookUp(hostAddress(dotted)), nullptr);
    }
    EXPECT_EQ(listedAddresses(), (std::vector<uint32_t>{0x00000000, 0x01000002, 0x01000080, 0x7FFFFFFF,
                                                        0x80000001, 0xFEFFFFFF}));
}

TEST(GetHostByAddr, KeepsTenThousandAddressesInOrderWhenTheyAscend)
{
    expectOrderedInsertion(someAddresses(10000));
}

TEST(GetHostByAddr, KeepsTenThousandAddressesInOrderWhenTheyDescend)
{
    std::vector<uint32_t> addresses = someAddresses(10000);
    std::reverse(addresses.begin(), addresses.end());
    expectOrderedInsertion(addresses);
}

TEST(GetHostByAddr, KeepsTenThousandAddressesInOrderAtRandom)
{
    std::vector<uint32_t> addresses = someAddresses(10000);
    std::shuffle(addresses.begin(), addresses.end(), std::mt19937(20260101));
    expectOrderedInsertion(addresses);
}

// So many that the index has to join its segments more than once.
TEST(GetHostByAddr, KeepsHundredsOfThousandsOfAddressesInOrder)
{
    setenv("DOV_HOSTENT_DATA_SIZE", "1", 1);
    std::vector<uint32_t> addresses = someAddresses(420000);
    std::vector<uint32_t> order = addresses;
    const auto third = static_cast<std::ptrdiff_t>(order.size() / 3);
    std::reverse(order.begin(), order.begin() + third);
    std::shuffle(order.begin() + third, order.begin() + 2 * third, std::mt19937(20260101));
    for (const uint32_t address : order) {
        ASSERT_EQ(lookUp(address), nullptr);
    }
    EXPECT_EQ(listedAddresses(), addresses);
    const int asked = addressLookUps();
    for (const uint32_t address : addresses) {
        ASSERT_EQ(lookUp(address), nullptr);
    }
    EXPECT_EQ(addressLookUps(), asked);
}

TEST(GetHostByAddr, LooksAnAddressUpInMicrosecondsAmongAHundredThousand)
{
    setenv("DOV_HOSTENT_DATA_SIZE", "1", 1);
    std::vector<uint32_t> addresses = someAddresses(100000);
    std::shuffle(addresses.begin(), addresses.end(), std::mt19937(20260101));
    for (const uint32_t address : addresses) {
        lookUp(address);
    }
    timespec before = {};
    timespec after = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &before);
    for (const uint32_t address : addresses) {
        lookUp(address);
    }
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &after);
    const double nanoseconds = static_cast<double>(after.tv_sec - before.tv_sec) * 1e9 +
                               static_cast<double>(after.tv_nsec - before.tv_nsec);
    EXPECT_LT(nanoseconds / static_cast<double>(addresses.size()),
              50000.0); // a walk of the list takes far longer
    EXPECT_EQ(static_cast<size_t>(addressLookUps()), addresses.size());
}

// Another thread that fails on the same address meanwhile is played by the resolver.
TEST(GetHostByAddr, ToleratesAnAddressThatFailedTwiceAtOnce)
{
    bool first = true;
    standIns().byAddress = [&](const void *address, socklen_t, int) {
        if (first) {
            first = false;
            EXPECT_EQ(DOV0_GetHostByAddr(address), nullptr);
        }
        return unknownHost();
    };
    const uint32_t one = hostAddress("10.0.0.1");
    const uint32_t five = hostAddress("10.0.0.5");
    const TraceLog log = traceOf(Function, Trace::Detail, [=] { lookUp(five); });
    const void *inner = addressBehind("Unresolved host @", log);
    const void *outer = addressBehind("NewUH @", log);
    EXPECT_EQ(log,
              (TraceLog{message(Function, "Unresolved host @%p <10.0.0.5> added to top of list\n", inner),
                        added("10.0.0.5", inner, outer, inner)}));
    EXPECT_EQ(listedAddresses(), (std::vector<uint32_t>{five, five}));

    const void *head = fail(one);
    first = true;
    const TraceLog third = traceOf(Function, Trace::Detail, [=] { lookUp(hostAddress("10.0.0.3")); });
    ASSERT_EQ(third.size(), 2U); // each goes behind the last entry below it
    EXPECT_EQ(third[0], added("10.0.0.3", head, addressBehind("NewUH @", {third[0]}), head));
    EXPECT_EQ(third[1], added("10.0.0.3", head, addressBehind("NewUH @", {third[1]}), head));
    EXPECT_EQ(listedAddresses(), (std::vector<uint32_t>{one, one + 2, one + 2, five, five}));
    const int asked = addressLookUps();
    lookUp(one + 2);
    lookUp(five);
    EXPECT_EQ(addressLookUps(), asked);
}

TEST(GetHostByAddr, FindsEveryOtherAddressAmongManyEqualOnes)
{
    int depth = 0;
    standIns().byAddress = [&](const void *address, socklen_t, int) {
        if (++depth < 100) {
            DOV0_GetHostByAddr(address);
        }
        return unknownHost();
    };
    const uint32_t base = hostAddress("10.0.0.0");
    for (const uint32_t offset : {50U, 20U, 70U}) {
        depth = 0;
        lookUp(base + offset);
    }
    depth = 100;
    std::vector<uint32_t> expected;
    for (uint32_t offset = 1; offset < 100; ++offset) {
        lookUp(base + offset);
        expected.insert(expected.end(), offset == 50 || offset == 20 || offset == 70 ? 100 : 1,
                        base + offset);
    }
    EXPECT_EQ(listedAddresses(), expected);
    const int asked = addressLookUps();
    for (uint32_t offset = 1; offset < 100; ++offset) {
        lookUp(base + offset);
    }
    EXPECT_EQ(addressLookUps(), asked);
}

TEST(GetHostByAddr, RemembersFromEightThreadsAtOnce)
{
    setenv("DOV_HOSTENT_DATA_SIZE", "1", 1);
    const std::vector<uint32_t> addresses = someAddresses(10000);
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 8; ++i) {
        threads.emplace_back([=, &addresses] {
            std::vector<uint32_t> order = addresses;
            if (i % 4 == 1) {
                std::reverse(order.begin(), order.end());
            } else if (i % 4 >= 2) {
                std::shuffle(order.begin(), order.end(), std::mt19937(i));
            }
            for (const uint32_t address : order) {
                EXPECT_EQ(lookUp(address), nullptr);
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    std::vector<uint32_t> listed = listedAddresses();
    EXPECT_EQ(listed.size() + 2, static_cast<size_t>(addressLookUps())); // two of them probes
    EXPECT_TRUE(std::is_sorted(listed.begin(), listed.end()));
    listed.erase(std::unique(listed.begin(), listed.end()), listed.end());
    EXPECT_EQ(listed, addresses);
}

TEST(GetHostByAddr, ReadsTheDataSizeOnceAndKeepsIt)
{
    HostRecord known("host.example");
    standIns().byAddress = [&](const void *, socklen_t, int) { return known.get(); };
    const auto sizeNow = [] {
        void *copy = nullptr;
        const TraceLog log = traceOf(Function, Trace::Storage, [&] { copy = lookUp(1); });
        int size = 0;
        void *shownCopy = nullptr;
        EXPECT_EQ(std::sscanf(log.front().c_str(), "DOV0_GetHostByAddr: Allocated Cptr @%p, size %d",
                              &shownCopy, &size),
                  2);
        EXPECT_EQ(shownCopy, copy);
        DOV0_FreeStorage(&copy);
        return size - RecordSize;
    };
    for (const char *none : {"0", "-1", "-99999999999999999999", "x", "0x10", "-2147483648"}) {
        setenv("DOV_HOSTENT_DATA_SIZE", none, 1);
        EXPECT_EQ(sizeNow(), 0) << none;
    }
    setenv("DOV_HOSTENT_DATA_SIZE", " +100 bytes", 1);
    EXPECT_EQ(sizeNow(), 100);
    setenv("DOV_HOSTENT_DATA_SIZE", "200", 1);
    EXPECT_EQ(sizeNow(), 100);
    unsetenv("DOV_HOSTENT_DATA_SIZE");
    EXPECT_EQ(sizeNow(), 100);
}

TEST(GetHostByAddr, ReadsTheDataSizeOnEachCallWhileItIsZero)
{
    HostRecord known("host.example");
    standIns().byAddress = [&](const void *, socklen_t, int) { return known.get(); };
    setenv("DOV_HOSTENT_DATA_SIZE", "0", 1);
    for (int i = 0; i < 2; ++i) {
        hostent *copy = nullptr;
        EXPECT_EQ(traceOf("DOV0_GetEnv", Trace::Detail, [&] { copy = lookUp(1); }),
                  (TraceLog{message("DOV0_GetEnv", "Env <DOV_HOSTENT_DATA_SIZE> value <0>\n")}));
        DOV0_FreeStorage(&copy);
    }
}

TEST(GetHostByAddr, ReservesAsMuchAsAnIntegerHoldsForALargerDataSize)
{
    setenv("DOV_HOSTENT_DATA_SIZE", "99999999999999999999", 1);
    const TraceLog log =
        traceAt(Trace::Error, [] { withHeapFailure(1, [] { EXPECT_EQ(lookUp(1), nullptr); }); });
    EXPECT_EQ(log,
              (TraceLog{message("DOV0_GetStorage", "*****Unable to obtain storage, size %d\n", INT32_MAX)}));
}

TEST(GetHostByAddr, RemembersNothingWithoutStorage)
{
    for (int n = 1; n <= 2; ++n) {
        const TraceLog log = traceAt(
            Trace::Error, [=] { EXPECT_TRUE(withHeapFailure(n, [] { EXPECT_EQ(lookUp(7), nullptr); })); });
        EXPECT_EQ(log, (TraceLog{message("DOV0_GetStorage", "*****Unable to obtain storage, size %d\n",
                                         n == 1 ? RecordSize + 8192 : static_cast<int>(sizeof(Entry)))}));
    }
    EXPECT_EQ(addressLookUps(), 1);
    const TraceLog log =
        traceOf(Function, Trace::All & ~Trace::Flow, [] { withHeapFailure(2, [] { lookUp(7); }); });
    const void *copy = addressBehind("Allocated Cptr @", log);
    EXPECT_EQ(log, (TraceLog{message(Function, "Allocated Cptr @%p, size %d\n", copy, RecordSize + 8192),
                             message(Function, "cannot convert address to name 0.0.0.7\n"),
                             message(Function, "Freeing Cptr @%p\n", copy)}));
    EXPECT_EQ(traceOf(Function, Trace::Flow, [] { withHeapFailure(1, [] { lookUp(7); }); }),
              (TraceLog{entry(Function), leave(Function, nullptr)}));
    EXPECT_EQ(listedAddresses(), std::vector<uint32_t>{});
}

TEST(GetHostByAddr, ReportsNull)
{
    const std::string text = message(Function, "*****Error: No address to look up\n");
    EXPECT_EQ(traceAt(Trace::All, [] { EXPECT_EQ(DOV0_GetHostByAddr(nullptr), nullptr); }),
              (TraceLog{entry(Function), text, leave(Function, nullptr)}));
    EXPECT_EQ(bitsThatShow(text, [] { DOV0_GetHostByAddr(nullptr); }), Trace::Error);
    EXPECT_EQ(addressLookUps(), 0);
}

TEST(GetHostByAddr, TakesAnUnalignedAddress)
{
    alignas(4) unsigned char bytes[5] = {0, 10, 0, 0, 9};
    EXPECT_EQ(DOV0_GetHostByAddr(bytes + 1), nullptr);
    EXPECT_EQ(listedAddresses(), (std::vector<uint32_t>{hostAddress("10.0.0.9")}));
}
