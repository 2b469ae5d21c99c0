// Looks the name of an address up, once: an address that has none is remembered and never asked for again.
#include "foundation/frame.h"
#include "net/dotted_address.h"
#include "net/unresolved_hosts.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int32_t RecordSize = sizeof(hostent);

// Bytes reserved behind each record copy; 0 until they are read from the environment.
constinit std::atomic<int32_t> BufferDataSize = 0;

int32_t bufferDataSize() noexcept
{
    int32_t kept = BufferDataSize.load(std::memory_order_relaxed);
    if (kept != 0) {
        return kept;
    }
    const long wanted = std::strtol(DOV0_GetEnv("DOV_HOSTENT_DATA_SIZE", "8192"), nullptr, 10);
    const auto size = static_cast<int32_t>(std::clamp(wanted, 0L, static_cast<long>(INT32_MAX - RecordSize)));
    // Another thread may have been first, and the first value stays.
    return BufferDataSize.compare_exchange_strong(kept, size, std::memory_order_relaxed) ? size : kept;
}

bool isKnownUnresolvable(const Frame &frame, const void *address, in_addr networkAddress) noexcept
{
    UnresolvedHostListLock.ensureInitialized();
    const LockHolder holder(UnresolvedHostListLock);
    const UnresolvedHost *host = findUnresolvedHost(ntohl(networkAddress.s_addr));
    if (host != nullptr) {
        TRACE(frame, Trace::Detail, "Known unresolvable address @%p pUH @%p <%s> bypassed\n", address,
              static_cast<const void *>(host), DottedAddress(networkAddress).text());
    }
    return host != nullptr;
}

void remember(const Frame &frame, UnresolvedHost *newHost, in_addr networkAddress) noexcept
{
    newHost->address = ntohl(networkAddress.s_addr);
    const LockHolder holder(UnresolvedHostListLock);
    const UnresolvedHost *before = insertUnresolvedHost(newHost);
    if (before != nullptr) {
        TRACE(frame, Trace::Detail,
              "Unresolved host <%s> added to list, pUH @%p NewUH @%p UnresolvedHostList @%p\n",
              DottedAddress(networkAddress).text(), static_cast<const void *>(before),
              static_cast<void *>(newHost), static_cast<void *>(UnresolvedHostList));
    } else if (newHost->next == nullptr) {
        TRACE(frame, Trace::Detail, "Unresolved host @%p <%s> added to top of list\n",
              static_cast<void *>(newHost), DottedAddress(networkAddress).text());
    } else {
        // It goes first, whatever the message says; the message is kept.
        TRACE(frame, Trace::Detail, "Unresolved host @%p %s added as second entry in list\n",
              static_cast<void *>(newHost), DottedAddress(networkAddress).text());
    }
}

} // namespace

TRACE_CONTROL("dov0ghba", DOV0_GetHostByAddr);
extern "C" hostent *DOV0_GetHostByAddr(const void *address) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (address == nullptr) {
        TRACE(frame, Trace::Error, "*****Error: No address to look up\n");
        return frame.leave<hostent *>(nullptr);
    }
    in_addr networkAddress = {};
    std::memcpy(&networkAddress, address, sizeof networkAddress);
    if (isKnownUnresolvable(frame, address, networkAddress)) {
        return frame.leaveUnreported<hostent *>(nullptr);
    }

    const int32_t size = RecordSize + bufferDataSize();
    void *copy = DOV0_GetStorage(size);
    if (copy == nullptr) {
        return frame.leave<hostent *>(nullptr);
    }
    TRACE(frame, Trace::Storage, "Allocated Cptr @%p, size %d\n", copy, size);
    const hostent *record = gethostbyaddr(address, sizeof networkAddress, AF_INET);
    if (record != nullptr) {
        TRACE(frame, Trace::Detail, "Copying h2 @%p to Cptr @%p for length %d\n",
              static_cast<const void *>(record), copy, RecordSize);
        std::memcpy(copy, record, sizeof *record); // the area behind it stays unused, as it always did
        return frame.leave(static_cast<hostent *>(copy));
    }

    auto *newHost = static_cast<UnresolvedHost *>(DOV0_GetStorage(sizeof(UnresolvedHost)));
    if (newHost != nullptr) {
        TRACE(frame, Trace::Storage, "Allocated UnresolvedHost @%p, size %d\n", static_cast<void *>(newHost),
              static_cast<int32_t>(sizeof(UnresolvedHost)));
    }
    TRACE(frame, Trace::State, "cannot convert address to name %s\n", DottedAddress(networkAddress).text());
    TRACE(frame, Trace::Storage, "Freeing Cptr @%p\n", copy);
    DOV0_FreeStorage(&copy);
    if (newHost != nullptr) {
        remember(frame, newHost, networkAddress);
    }
    return frame.leave<hostent *>(nullptr);
}
