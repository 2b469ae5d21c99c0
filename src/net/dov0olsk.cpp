// Opens the TCP or UDP socket on which a data provider listens or from which it polls.
#include "foundation/first_use_lock.h"
#include "foundation/frame.h"
#include "net/dotted_address.h"

#include <atomic>
#include <cerrno>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace {

constexpr char TCPsock[] = "TCP";
constexpr char UDPsock[] = "UDP";
constexpr char BADsock[] = "Unknown";

// The local host's own address, filled on the first open and never refreshed.
constinit sockaddr_in OwnLocalSockAddr = {};
constinit std::atomic<bool> SockAddrInitialized = false;
constinit FirstUseLock OwnLocalSockAddrLock; // held while it is filled

void ensureOwnAddress(const Frame &frame) noexcept
{
    if (SockAddrInitialized.load(std::memory_order_acquire)) {
        return;
    }
    OwnLocalSockAddrLock.ensureInitialized();
    const LockHolder holder(OwnLocalSockAddrLock);
    if (SockAddrInitialized.load(std::memory_order_relaxed)) {
        return;
    }
    const char *name = DOV0_LocalHostNameString();
    DOV0_ConvertNameToAddr(name, 0, &OwnLocalSockAddr); // address 0 for good when there is none
    SockAddrInitialized.store(true, std::memory_order_release);
    TRACE(frame, Trace::Detail, "Initialized: OwnHostName<%s> OwnLocalSockAddr<@%p>\n", shown(name),
          static_cast<void *>(&OwnLocalSockAddr));
}

const char *labelOf(int32_t type) noexcept
{
    switch (type) {
    case DOV0_SOCKET_STREAM:
        return TCPsock;
    case DOV0_SOCKET_DATAGRAM:
        return UDPsock;
    default:
        return BADsock;
    }
}

// A new socket, or the negative result of the system. Descriptor 0 is never handed out: it stays open, so that the
// next socket has another number.
int openSocket(const Frame &frame, int32_t type, const sockaddr_in *localAddr, int32_t *errOut) noexcept
{
    for (;;) {
        const int descriptor = socket(AF_INET, type, 0);
        if (descriptor < 0) {
            const int error = errno;
            TRACE(frame, Trace::Error, "unable to open %s socket, errno=%d\n", labelOf(type), error);
            *errOut = error;
            return descriptor;
        }
        TRACE(frame, Trace::Storage, "%s socket %d opened, LocalAddr=@%p\n", labelOf(type), descriptor,
              static_cast<const void *>(localAddr));
        if (descriptor != 0) {
            return descriptor;
        }
        TRACE(frame, Trace::Detail, "Socket 0 skipped for use but remains open.\n");
    }
}

} // namespace

TRACE_CONTROL("dov0olsk", DOV0_OpenLocalSocket);
extern "C" int32_t DOV0_OpenLocalSocket(int32_t Type, int32_t Port, sockaddr_in *LocalAddr,
                                        int32_t SockNoReuse, int32_t *errOut, int32_t InAddrAny) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (LocalAddr == nullptr || errOut == nullptr) {
        if (errOut != nullptr) {
            *errOut = EINVAL;
        }
        TRACE(frame, Trace::Error, "*****Error: LocalAddr @%p or errOut @%p missing, no socket opened\n",
              static_cast<void *>(LocalAddr), static_cast<void *>(errOut));
        return frame.leave<int32_t>(-1);
    }
    *errOut = 0;
    ensureOwnAddress(frame);
    TRACE(frame, Trace::Detail, "Input parm: Type=%d, Port=%d, LocalAddr=@%p, SockNoReuse=%d, InAddrAny=%d\n",
          Type, Port, static_cast<void *>(LocalAddr), SockNoReuse, InAddrAny);

    const char *label = labelOf(Type);
    const auto networkPort = static_cast<in_port_t>(Port);
    const int port = ntohs(networkPort);
    const int option = SockNoReuse == DOV0_SOCKET_NO_REUSE ? 0 : 1;
    if (option == 0) {
        TRACE(frame, Trace::Detail, "Setting NoReuse flag for %s port %d\n", label, port);
    } else {
        TRACE(frame, Trace::Detail, "Setting Reuse flag for %s port %d\n", label, port);
    }

    const int descriptor = openSocket(frame, Type, LocalAddr, errOut);
    if (descriptor < 0) {
        return frame.leave<int32_t>(descriptor);
    }
    if (setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &option, sizeof option) < 0) {
        *errOut = errno;
        TRACE(frame, Trace::Error, "setsockopt SO_REUSEADDR failed, errno %d\n", *errOut);
    }

    *LocalAddr = OwnLocalSockAddr;
    LocalAddr->sin_port = networkPort;
    if (InAddrAny != DOV0_BIND_OWN_ADDRESS) {
        TRACE(frame, Trace::Detail, "bind socket %d, port %d is using INADDR_ANY\n", descriptor, port);
        LocalAddr->sin_addr.s_addr = htonl(INADDR_ANY);
    }
    if (bind(descriptor, reinterpret_cast<const sockaddr *>(LocalAddr), sizeof *LocalAddr) < 0) {
        *errOut = errno;
        TRACE(frame, Trace::Error, "bind failed for local address %s socket %d, port=%d, errno=%d\n",
              DottedAddress(LocalAddr->sin_addr).text(), descriptor, port, *errOut);
        DOV0_CloseTheSocket(descriptor);
        return frame.leave<int32_t>(-1);
    }
    TRACE(frame, Trace::Storage, "%s socket %d bound to port %d\n", label, descriptor,
          DOV0_RetrieveSockPort(descriptor));

    int nonBlocking = 1;
    if (DOV0_SetSocketIoctl(descriptor, FIONBIO, &nonBlocking) < 0) {
        *errOut = errno;
    }
    // The send delay follows the reuse flag, on purpose: without reuse the delay stays on.
    if (Type == DOV0_SOCKET_STREAM &&
        setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &option, sizeof option) < 0) {
        *errOut = errno;
        TRACE(frame, Trace::Error, "setsockopt failed, errno %d\n", *errOut);
    }
    return frame.leave<int32_t>(descriptor);
}
