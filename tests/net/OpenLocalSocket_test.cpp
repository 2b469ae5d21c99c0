#include "net/resolver_stand_ins.h"
#include "net/socket_faults.h"
#include "support/fresh_process.h"
#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

constexpr char Function[] = "DOV0_OpenLocalSocket";

void setLocalName(const char *name)
{
    setenv("DOV_USE_DOMAIN_NAME", "N", 1);
    setenv("RPCB0_HOSTNAME", name, 1);
}

// One call with all that it stores.
struct Opened {
    int32_t descriptor = 0;
    int32_t error = 4711;
    sockaddr_in local = {};
    TraceLog log;
};

Opened open(uint32_t level, int32_t type, int32_t networkPort, int32_t noReuse = 0, int32_t anyAddress = 0)
{
    Opened opened;
    std::memset(&opened.local, 0xA5, sizeof opened.local);
    opened.log = traceOf(Function, level, [&] {
        opened.descriptor =
            DOV0_OpenLocalSocket(type, networkPort, &opened.local, noReuse, &opened.error, anyAddress);
    });
    return opened;
}

// The local address of the last call, as it was when the log was written.
template <typename... Values> std::string text(const char *format, Values... values)
{
    return message(Function, format, values...);
}

int optionOf(int descriptor, int level, int name)
{
    int value = -1;
    socklen_t length = sizeof value;
    EXPECT_EQ(getsockopt(descriptor, level, name, &value, &length), 0);
    return value;
}

sockaddr_in boundAddress(int descriptor)
{
    sockaddr_in address = {};
    socklen_t length = sizeof address;
    EXPECT_EQ(getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &length), 0);
    return address;
}

int typeOf(int descriptor)
{
    return optionOf(descriptor, SOL_SOCKET, SO_TYPE);
}

void expectLocal(const sockaddr_in &address, int networkPort, const char *dotted)
{
    EXPECT_EQ(address.sin_family, AF_INET);
    EXPECT_EQ(address.sin_port, networkPort);
    EXPECT_EQ(address.sin_addr.s_addr, inet_addr(dotted));
    for (const unsigned char byte : address.sin_zero) {
        EXPECT_EQ(byte, 0);
    }
}

bool isOpen(int descriptor)
{
    return fcntl(descriptor, F_GETFD) >= 0;
}

// A loopback TCP port that is free now.
int freePort()
{
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(bind(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    const int port = ntohs(boundAddress(descriptor).sin_port);
    close(descriptor);
    return port;
}

} // namespace

TEST(OpenLocalSocket, OpensANonBlockingUdpSocketOnAnyAddress)
{
    setLocalName("127.0.0.1");
    const Opened opened = open(0, 2, 0, 0, 1);
    ASSERT_GT(opened.descriptor, 0);
    EXPECT_EQ(opened.error, 0);
    expectLocal(opened.local, 0, "0.0.0.0");
    EXPECT_EQ(typeOf(opened.descriptor), SOCK_DGRAM);
    EXPECT_NE(fcntl(opened.descriptor, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(optionOf(opened.descriptor, SOL_SOCKET, SO_REUSEADDR), 1);
    EXPECT_EQ(boundAddress(opened.descriptor).sin_addr.s_addr, htonl(INADDR_ANY));
    EXPECT_NE(boundAddress(opened.descriptor).sin_port, 0);
    char byte = 0;
    EXPECT_EQ(recv(opened.descriptor, &byte, 1, 0), -1);
    EXPECT_EQ(errno, EAGAIN);
    close(opened.descriptor);
}

TEST(OpenLocalSocket, BindsATcpSocketToTheLocalHostsOwnAddress)
{
    setLocalName("localhost");
    standIns().byName = realByName;
    const int port = freePort();
    const Opened opened = open(0, 1, htons(static_cast<uint16_t>(port)));
    ASSERT_GT(opened.descriptor, 0);
    EXPECT_EQ(opened.error, 0);
    expectLocal(opened.local, htons(static_cast<uint16_t>(port)), "127.0.0.1");
    EXPECT_EQ(typeOf(opened.descriptor), SOCK_STREAM);
    EXPECT_NE(fcntl(opened.descriptor, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(optionOf(opened.descriptor, SOL_SOCKET, SO_REUSEADDR), 1);
    EXPECT_NE(optionOf(opened.descriptor, IPPROTO_TCP, TCP_NODELAY), 0);
    EXPECT_EQ(boundAddress(opened.descriptor).sin_addr.s_addr, htonl(INADDR_LOOPBACK));
    EXPECT_EQ(DOV0_RetrieveSockPort(opened.descriptor), port);
    close(opened.descriptor);
}

TEST(OpenLocalSocket, TurnsReuseAndNoDelayOffTogether)
{
    setLocalName("127.0.0.1");
    for (const int32_t noReuse : {1, 0, 2, -1}) {
        const Opened opened = open(0, 1, 0, noReuse);
        ASSERT_GT(opened.descriptor, 0);
        EXPECT_EQ(optionOf(opened.descriptor, SOL_SOCKET, SO_REUSEADDR), noReuse == 1 ? 0 : 1);
        EXPECT_EQ(optionOf(opened.descriptor, IPPROTO_TCP, TCP_NODELAY) != 0, noReuse != 1);
        close(opened.descriptor);
    }
}

TEST(OpenLocalSocket, TracesAnOpen)
{
    setLocalName("127.0.0.1");
    const int port = freePort();
    const int networkPort = htons(static_cast<uint16_t>(port));
    sockaddr_in local = {};
    int32_t error = 0;
    int32_t descriptor = -1;
    const auto call = [&] { descriptor = DOV0_OpenLocalSocket(1, networkPort, &local, 0, &error, 0); };
    const TraceLog first = traceOf(Function, Trace::All, call);
    close(descriptor);
    void *ownAddress = nullptr;
    ASSERT_EQ(first.size(), 7U);
    ASSERT_EQ(std::sscanf(first[1].c_str(),
                          "DOV0_OpenLocalSocket: Initialized: OwnHostName<127.0.0.1> OwnLocalSockAddr<@%p>",
                          &ownAddress),
              1);
    const std::string initialized =
        text("Initialized: OwnHostName<127.0.0.1> OwnLocalSockAddr<@%p>\n", ownAddress);
    const std::string input =
        text("Input parm: Type=%d, Port=%d, LocalAddr=@%p, SockNoReuse=%d, InAddrAny=%d\n", 1, networkPort,
             static_cast<void *>(&local), 0, 0);
    const std::string reuse = text("Setting Reuse flag for TCP port %d\n", port);
    const std::string opened =
        text("TCP socket %d opened, LocalAddr=@%p\n", descriptor, static_cast<void *>(&local));
    const std::string bound = text("TCP socket %d bound to port %d\n", descriptor, port);
    EXPECT_EQ(first, (TraceLog{entry(Function), initialized, input, reuse, opened, bound,
                               leave(Function, descriptor)}));

    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Storage, call),
              (TraceLog{entry(Function), input, reuse, leave(Function, descriptor)}));
    close(descriptor);
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Detail, call),
              (TraceLog{entry(Function), opened, bound, leave(Function, descriptor)}));
    close(descriptor);
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Detail & ~Trace::Storage & ~Trace::Flow, call),
              TraceLog{});
    close(descriptor);
    EXPECT_EQ(traceOf(Function, Trace::Detail, call), (TraceLog{input, reuse}));
    close(descriptor);
    EXPECT_EQ(traceOf(Function, Trace::Storage, call), (TraceLog{opened, bound}));
    close(descriptor);
}

TEST(OpenLocalSocket, TracesItsCallsInOrder)
{
    setLocalName("127.0.0.1");
    sockaddr_in local = {};
    int32_t error = 0;
    int32_t descriptor = -1;
    const auto call = [&] { descriptor = DOV0_OpenLocalSocket(2, 0, &local, 1, &error, 1); };
    const TraceLog first = traceAt(Trace::Flow, call);
    close(descriptor);
    const char *const name = DOV0_LocalHostNameString();
    const auto named = std::find(first.begin(), first.end(), leave("DOV0_LocalHostNameString", name));
    EXPECT_EQ(first[1], entry("DOV0_LocalHostNameString"));
    EXPECT_EQ((TraceLog(named, first.end())),
              (TraceLog{leave("DOV0_LocalHostNameString", name), entry("DOV0_ConvertNameToAddr"),
                        entry("DOV0_IsThisAddressString"), leave("DOV0_IsThisAddressString", 3),
                        leave("DOV0_ConvertNameToAddr", 1), entry("DOV0_SetSocketIoctl"),
                        leave("DOV0_SetSocketIoctl", intptr_t{0}), leave(Function, descriptor)}));

    const TraceLog second = traceAt(Trace::All & ~Trace::State, call);
    const int port = DOV0_RetrieveSockPort(descriptor);
    EXPECT_EQ(
        second,
        (TraceLog{entry(Function),
                  text("Input parm: Type=%d, Port=%d, LocalAddr=@%p, SockNoReuse=%d, InAddrAny=%d\n", 2, 0,
                       static_cast<void *>(&local), 1, 1),
                  text("Setting NoReuse flag for UDP port %d\n", 0),
                  text("UDP socket %d opened, LocalAddr=@%p\n", descriptor, static_cast<void *>(&local)),
                  text("bind socket %d, port %d is using INADDR_ANY\n", descriptor, 0),
                  entry("DOV0_RetrieveSockPort"),
                  message("DOV0_RetrieveSockPort", "Socket %d port assignment is %d", descriptor, port),
                  leave("DOV0_RetrieveSockPort", port),
                  text("UDP socket %d bound to port %d\n", descriptor, port), entry("DOV0_SetSocketIoctl"),
                  leave("DOV0_SetSocketIoctl", intptr_t{0}), leave(Function, descriptor)}));
    close(descriptor);
}

TEST(OpenLocalSocket, TracesItsTwoSwitchesInTheirOrder)
{
    setLocalName("127.0.0.1");
    sockaddr_in local = {};
    int32_t error = 0;
    close(DOV0_OpenLocalSocket(2, 0, &local, 0, &error, 0)); // the first finds the host's own address out
    for (const auto &[noReuse, anyAddress] : {std::pair{0, 1}, std::pair{1, 0}, std::pair{-7, 8}}) {
        int32_t descriptor = -1;
        const TraceLog log =
            traceOf(Function, Trace::Detail, [&, noReuse = noReuse, anyAddress = anyAddress] {
                descriptor = DOV0_OpenLocalSocket(2, 0, &local, noReuse, &error, anyAddress);
            });
        close(descriptor);
        ASSERT_FALSE(log.empty());
        EXPECT_EQ(log[0], text("Input parm: Type=%d, Port=%d, LocalAddr=@%p, SockNoReuse=%d, InAddrAny=%d\n",
                               2, 0, static_cast<void *>(&local), noReuse, anyAddress));
    }
}

TEST(OpenLocalSocket, TakesTheLowSixteenBitsOfThePort)
{
    setLocalName("127.0.0.1");
    const int port = freePort();
    const int networkPort = htons(static_cast<uint16_t>(port));
    const Opened opened = open(Trace::Detail, 1, networkPort - 0x10000, 0, 1);
    ASSERT_GT(opened.descriptor, 0);
    EXPECT_EQ(DOV0_RetrieveSockPort(opened.descriptor), port);
    ASSERT_EQ(opened.log.size(), 4U);
    EXPECT_NE(opened.log[1].find("Port=" + std::to_string(networkPort - 0x10000) + ","), std::string::npos);
    EXPECT_EQ(opened.log[2], text("Setting Reuse flag for TCP port %d\n", port));
    EXPECT_EQ(opened.log[3], text("bind socket %d, port %d is using INADDR_ANY\n", opened.descriptor, port));
    close(opened.descriptor);
}

TEST(OpenLocalSocket, ReportsAPortInUseAndClosesTheSocket)
{
    setLocalName("127.0.0.1");
    for (const int32_t type : {1, 2}) {
        const Opened holder = open(0, type, 0, 1);
        ASSERT_GT(holder.descriptor, 0);
        if (type == 1) {
            ASSERT_EQ(listen(holder.descriptor, 1), 0);
        }
        const int port = DOV0_RetrieveSockPort(holder.descriptor);
        const int networkPort = htons(static_cast<uint16_t>(port));
        const Opened opened = open(Trace::Error | Trace::Storage | Trace::Flow, type, networkPort, 1);
        EXPECT_EQ(opened.descriptor, -1);
        EXPECT_EQ(opened.error, EADDRINUSE);
        expectLocal(opened.local, networkPort, "127.0.0.1");
        int tried = -1;
        ASSERT_EQ(opened.log.size(), 4U);
        ASSERT_EQ(std::sscanf(opened.log[1].c_str(),
                              type == 1 ? "DOV0_OpenLocalSocket: TCP socket %d opened"
                                        : "DOV0_OpenLocalSocket: UDP socket %d opened",
                              &tried),
                  1);
        EXPECT_EQ(opened.log[2],
                  text("bind failed for local address 127.0.0.1 socket %d, port=%d, errno=%d\n", tried, port,
                       EADDRINUSE));
        EXPECT_EQ(opened.log[3], leave(Function, -1));
        EXPECT_FALSE(isOpen(tried));
        const TraceLog rest =
            open(Trace::All & ~Trace::Error & ~Trace::Storage & ~Trace::Detail, type, networkPort, 1).log;
        EXPECT_EQ(rest, (TraceLog{entry(Function), leave(Function, -1)}));
        close(holder.descriptor);
    }
}

TEST(OpenLocalSocket, KeepsTheErrorOfTheBindThroughTheClose)
{
    setLocalName("127.0.0.1");
    socketFaults.onBind = EACCES;
    socketFaults.onClose = EIO;
    sockaddr_in local = {};
    int32_t error = 0;
    const TraceLog log =
        traceAt(Trace::Error, [&] { EXPECT_EQ(DOV0_OpenLocalSocket(2, 0, &local, 0, &error, 1), -1); });
    socketFaults = {};
    EXPECT_EQ(error, EACCES);
    int descriptor = -1;
    ASSERT_EQ(log.size(), 2U);
    ASSERT_EQ(std::sscanf(log[0].c_str(),
                          "DOV0_OpenLocalSocket: bind failed for local address 0.0.0.0 socket %d",
                          &descriptor),
              1);
    EXPECT_EQ(log,
              (TraceLog{text("bind failed for local address 0.0.0.0 socket %d, port=%d, errno=%d\n",
                             descriptor, 0, EACCES),
                        message("DOV0_CloseTheSocket", "***** Unable to close socket %d, rc: %d, errno: %d\n",
                                descriptor, -1, EIO)}));
    close(descriptor);
}

TEST(OpenLocalSocket, GoesOnWhenReuseCannotBeSet)
{
    setLocalName("127.0.0.1");
    socketFaults.onReuse = EPERM;
    const std::string failed = text("setsockopt SO_REUSEADDR failed, errno %d\n", EPERM);
    const Opened opened = open(Trace::Error, 1, 0);
    EXPECT_GT(opened.descriptor, 0);
    EXPECT_EQ(opened.error, EPERM);
    EXPECT_EQ(opened.log, (TraceLog{failed}));
    close(opened.descriptor);
    EXPECT_EQ(bitsThatShow(failed, [] { close(open(0, 1, 0).descriptor); }), 0U);
    const Opened silent =
        open(Trace::All & ~Trace::Error & ~Trace::Flow & ~Trace::Storage & ~Trace::Detail, 1, 0);
    EXPECT_EQ(silent.log, TraceLog{});
    close(silent.descriptor);
    socketFaults = {};
}

TEST(OpenLocalSocket, ReturnsTheSocketWhenNoDelayCannotBeSet)
{
    setLocalName("127.0.0.1");
    socketFaults.onNoDelay = ENOPROTOOPT;
    const Opened opened = open(Trace::Error, 1, 0);
    EXPECT_GT(opened.descriptor, 0);
    EXPECT_EQ(opened.error, ENOPROTOOPT);
    EXPECT_EQ(opened.log, (TraceLog{text("setsockopt failed, errno %d\n", ENOPROTOOPT)}));
    close(opened.descriptor);
    const Opened silent =
        open(Trace::All & ~Trace::Error & ~Trace::Flow & ~Trace::Storage & ~Trace::Detail, 1, 0);
    EXPECT_EQ(silent.log, TraceLog{});
    close(silent.descriptor);
    const Opened datagram = open(Trace::Error, 2, 0); // has no send delay
    EXPECT_EQ(datagram.error, 0);
    EXPECT_EQ(datagram.log, TraceLog{});
    close(datagram.descriptor);
    socketFaults = {};
}

TEST(OpenLocalSocket, ReturnsTheSocketWhenItStaysBlocking)
{
    setLocalName("127.0.0.1");
    socketFaults.onControl = ENOTTY;
    sockaddr_in local = {};
    int32_t error = 0;
    int32_t descriptor = -1;
    EXPECT_EQ(traceAt(Trace::Error, [&] { descriptor = DOV0_OpenLocalSocket(2, 0, &local, 0, &error, 1); }),
              (TraceLog{message("DOV0_SetSocketIoctl", "ioctl failed. errno %d\n", ENOTTY)}));
    EXPECT_GT(descriptor, 0);
    EXPECT_EQ(error, ENOTTY);
    close(descriptor);
    socketFaults = {};
}

TEST(OpenLocalSocket, KeepsTheErrorOfTheLastFailedStep)
{
    setLocalName("127.0.0.1");
    socketFaults = {.onReuse = EPERM, .onControl = ENOTTY, .onNoDelay = ENOPROTOOPT};
    const Opened stream = open(0, 1, 0);
    EXPECT_EQ(stream.error, ENOPROTOOPT);
    close(stream.descriptor);
    const Opened datagram = open(0, 2, 0);
    EXPECT_EQ(datagram.error, ENOTTY);
    close(datagram.descriptor);
    socketFaults = {};
}

TEST(OpenLocalSocket, ReportsASocketThatCannotBeOpened)
{
    setLocalName("127.0.0.1");
    socketFaults.onSocket = EMFILE;
    for (const auto &[type, label] : {std::pair(1, "TCP"), {2, "UDP"}, {5, "Unknown"}}) {
        const Opened opened = open(Trace::Error | Trace::Storage | Trace::Flow, type, 0);
        EXPECT_EQ(opened.descriptor, -1);
        EXPECT_EQ(opened.error, EMFILE);
        EXPECT_EQ(opened.log,
                  (TraceLog{entry(Function), text("unable to open %s socket, errno=%d\n", label, EMFILE),
                            leave(Function, -1)}));
    }
    EXPECT_EQ(open(Trace::All & ~Trace::Error & ~Trace::Flow & ~Trace::Detail, 1, 0).log, TraceLog{});
    socketFaults = {};
}

// What the system says to other types is the system's; the label is not.
TEST(OpenLocalSocket, LeavesOtherTypesToTheSystem)
{
    setLocalName("127.0.0.1");
    for (const int32_t type : {0, 3, 5, -1, 4711}) {
        const int judged = socket(AF_INET, type, 0);
        const int error = errno;
        const Opened opened = open(Trace::All & ~Trace::Flow, type, 0, 0, 1);
        if (judged < 0) {
            EXPECT_EQ(opened.descriptor, -1) << type;
            EXPECT_EQ(opened.error, error) << type;
            EXPECT_EQ(opened.log.back(), text("unable to open Unknown socket, errno=%d\n", error)) << type;
        } else {
            close(judged);
            EXPECT_GT(opened.descriptor, 0) << type;
            close(opened.descriptor);
        }
        EXPECT_EQ(std::count(opened.log.begin(), opened.log.end(),
                             text("Setting Reuse flag for Unknown port %d\n", 0)),
                  1)
            << type;
    }
}

TEST(OpenLocalSocket, SkipsDescriptorZeroAndLeavesItOpen)
{
    setLocalName("127.0.0.1");
    close(0);
    sockaddr_in local = {};
    int32_t error = 4711;
    int32_t descriptor = -1;
    const TraceLog log = traceOf(Function, Trace::All & ~Trace::Flow,
                                 [&] { descriptor = DOV0_OpenLocalSocket(1, 0, &local, 0, &error, 1); });
    EXPECT_GT(descriptor, 0);
    EXPECT_EQ(error, 0);
    struct stat status = {};
    ASSERT_EQ(fstat(0, &status), 0);
    EXPECT_TRUE(S_ISSOCK(status.st_mode));
    ASSERT_EQ(log.size(), 8U);
    EXPECT_EQ(
        (TraceLog(log.begin() + 3, log.begin() + 7)),
        (TraceLog{text("TCP socket 0 opened, LocalAddr=@%p\n", static_cast<void *>(&local)),
                  text("Socket 0 skipped for use but remains open.\n"),
                  text("TCP socket %d opened, LocalAddr=@%p\n", descriptor, static_cast<void *>(&local)),
                  text("bind socket %d, port %d is using INADDR_ANY\n", descriptor, 0)}));
    close(descriptor);
    const Opened next = open(0, 1, 0);
    EXPECT_GT(next.descriptor, 0);
    EXPECT_TRUE(isOpen(0));
    close(next.descriptor);
    close(0);
    const Opened quiet = open(Trace::Storage, 2, 0);
    EXPECT_EQ(quiet.log.size(), 3U); // without the detail
    EXPECT_EQ(open(Trace::Detail, 2, 0).log.size(), 2U);
    close(0);
    EXPECT_EQ(open(Trace::Detail, 2, 0).log.size(), 3U); // with it
}

TEST(OpenLocalSocket, TakesTheLocalAddressOnceAndForGood)
{
    setLocalName("alpha");
    HostRecord known("alpha", {"127.0.0.1"});
    standIns().byName = [&](const char *) { return known.get(); };
    const Opened first = open(0, 2, 0);
    expectLocal(first.local, 0, "127.0.0.1");
    close(first.descriptor);
    HostRecord other("alpha", {"127.0.0.2"});
    standIns().byName = [&](const char *) { return other.get(); };
    const Opened second = open(0, 2, 0);
    expectLocal(second.local, 0, "127.0.0.1");
    close(second.descriptor);
    EXPECT_EQ(nameLookUps(), 1);
}

TEST(OpenLocalSocket, UsesAddressZeroForGoodWhenTheLocalHostDoesNotResolve)
{
    setLocalName("alpha");
    const Opened first = open(Trace::Detail, 2, 0);
    EXPECT_GT(first.descriptor, 0);
    EXPECT_EQ(first.error, 0);
    EXPECT_EQ(
        first.log.front().find("DOV0_OpenLocalSocket: Initialized: OwnHostName<alpha> OwnLocalSockAddr<@0x"),
        0U);
    expectLocal(first.local, 0, "0.0.0.0");
    close(first.descriptor);
    HostRecord known("alpha", {"127.0.0.1"});
    standIns().byName = [&](const char *) { return known.get(); };
    const Opened second = open(0, 2, 0);
    expectLocal(second.local, 0, "0.0.0.0");
    close(second.descriptor);
    EXPECT_EQ(nameLookUps(), 1);
}

TEST(OpenLocalSocket, UsesAddressZeroWithoutALocalHostName)
{
    setLocalName("127.0.0.1");
    sockaddr_in local = {};
    int32_t error = 4711;
    int32_t descriptor = -1;
    const TraceLog log = traceOf(Function, Trace::Detail, [&] {
        withHeapFailure(1, [&] { descriptor = DOV0_OpenLocalSocket(2, 0, &local, 0, &error, 0); });
    });
    EXPECT_GT(descriptor, 0);
    EXPECT_EQ(error, 0);
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.front().find("DOV0_OpenLocalSocket: Initialized: OwnHostName<(null)> OwnLocalSockAddr<@0x"),
              0U);
    expectLocal(local, 0, "0.0.0.0");
    close(descriptor);
}

TEST(OpenLocalSocket, ReportsAnAddressThatIsNotLocal)
{
    setLocalName("192.0.2.1");
    const Opened opened = open(Trace::Error, 2, 0);
    EXPECT_EQ(opened.descriptor, -1);
    EXPECT_EQ(opened.error, EADDRNOTAVAIL);
    ASSERT_EQ(opened.log.size(), 1U);
    EXPECT_EQ(opened.log[0].find("DOV0_OpenLocalSocket: bind failed for local address 192.0.2.1 socket "),
              0U);
}

TEST(OpenLocalSocket, WritesNothingBesideItsAreas)
{
    setLocalName("127.0.0.1");
    GuardedBuffer local(sizeof(sockaddr_in));
    GuardedBuffer error(sizeof(int32_t));
    const int32_t descriptor =
        DOV0_OpenLocalSocket(2, 0, static_cast<sockaddr_in *>(static_cast<void *>(local.bytes())), 0,
                             static_cast<int32_t *>(static_cast<void *>(error.bytes())), 0);
    EXPECT_GT(descriptor, 0);
    close(descriptor);
}

TEST(OpenLocalSocket, RefusesMissingAreas)
{
    setLocalName("127.0.0.1");
    sockaddr_in local = {};
    int32_t error = 0;
    const std::string noLocal = text("*****Error: LocalAddr @%p or errOut @%p missing, no socket opened\n",
                                     static_cast<void *>(nullptr), static_cast<void *>(&error));
    const auto call = [&] { EXPECT_EQ(DOV0_OpenLocalSocket(2, 0, nullptr, 0, &error, 0), -1); };
    EXPECT_EQ(traceAt(Trace::All, call), (TraceLog{entry(Function), noLocal, leave(Function, -1)}));
    EXPECT_EQ(error, EINVAL);
    EXPECT_EQ(bitsThatShow(noLocal, call), Trace::Error);
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_OpenLocalSocket(2, 0, &local, 0, nullptr, 0), -1); }),
              (TraceLog{entry(Function),
                        text("*****Error: LocalAddr @%p or errOut @%p missing, no socket opened\n",
                             static_cast<void *>(&local), static_cast<void *>(nullptr)),
                        leave(Function, -1)}));
    EXPECT_EQ(DOV0_OpenLocalSocket(2, 0, nullptr, 0, nullptr, 0), -1);
}

TEST(OpenLocalSocket, OpensFromManyThreadsAtOnce)
{
    setLocalName("localhost");
    HostRecord known("localhost", {"127.0.0.1"});
    standIns().byName = [&](const char *) { return known.get(); };
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([] {
            sockaddr_in local = {};
            int32_t error = 0;
            const int32_t descriptor = DOV0_OpenLocalSocket(1, 0, &local, 0, &error, 0);
            EXPECT_GT(descriptor, 0);
            EXPECT_EQ(local.sin_addr.s_addr, htonl(INADDR_LOOPBACK));
            DOV0_CloseTheSocket(descriptor);
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(nameLookUps(), 1);
}
