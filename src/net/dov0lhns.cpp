// Gives the name under which the agent presents the local host: chosen on the first call, by the environment or the
// system, and fixed from then on.
#include "foundation/first_use_lock.h"
#include "foundation/frame.h"
#include "net/host_name_text.h"

#include <atomic>

namespace {

constinit char OwnHostName[HostNameSize] = {};
constinit std::atomic<char *> NameString = nullptr; // OwnHostName once it is filled
constinit FirstUseLock OwnHostNameLock;             // held while it is filled

struct NameVariables {
    const char *dch = DOV0_GetEnv("DOV_DCH_HOSTNAME", nullptr);
    const char *dp = DOV0_GetEnv("DOV_DP_HOSTNAME", nullptr);
    const char *rpc = DOV0_GetEnv("RPCB0_HOSTNAME", nullptr);
    const char *interfaces = DOV0_GetEnv("NETB_INTERFACELIST", nullptr);
};

void chooseName(const Frame &frame, const NameVariables &variables) noexcept
{
    if (variables.rpc != nullptr) {
        TRACE(frame, Trace::Detail, "Using RPCB0_HOSTNAME value <%s>\n", variables.rpc);
        copyHostName(OwnHostName, variables.rpc);
    } else if (variables.dch != nullptr && variables.dp == nullptr) {
        TRACE(frame, Trace::Detail, "Using DOV_DCH_HOSTNAME value <%s>\n", variables.dch);
        copyHostName(OwnHostName, variables.dch);
    } else if (variables.dch == nullptr && variables.dp != nullptr) {
        TRACE(frame, Trace::Detail, "Using DOV_DP_HOSTNAME value <%s>\n", variables.dp);
        copyHostName(OwnHostName, variables.dp);
    } else if (variables.dch != nullptr && std::strcmp(variables.dch, variables.dp) == 0) {
        TRACE(frame, Trace::Detail, "Using either DOV_DCH_HOSTNAME or DOV_DP_HOSTNAME value <%s>\n",
              variables.dch);
        copyHostName(OwnHostName, variables.dch);
    } else {
        readHostName(OwnHostName);
        TRACE(frame, Trace::Detail, "Use gethostname value <%s>\n", OwnHostName);
    }
}

void qualifyName(const Frame &frame, const char *domain) noexcept
{
    const char *dot = std::strchr(OwnHostName, '.');
    if (dot != nullptr) {
        TRACE(frame, Trace::Detail, "Found dot at <%s> in NameString <%s>\n", dot, OwnHostName);
        return;
    }
    TRACE(frame, Trace::Detail, "Appending domain name <%s> to NameString <%s>\n", domain, OwnHostName);
    copyHostName(OwnHostName, ".", std::strlen(OwnHostName));
    copyHostName(OwnHostName, domain, std::strlen(OwnHostName));
}

// Fills OwnHostName. False when there is no scratch storage.
bool fillName(const Frame &frame) noexcept
{
    const NameVariables variables;
    if (variables.interfaces != nullptr) {
        TRACE(frame, Trace::Detail, "NETB_INTERFACELIST environment variable set to <%s>\n",
              variables.interfaces);
    }
    auto *scratch = static_cast<char *>(DOV0_GetStorage(DOV0_HOST_NAME_SIZE));
    if (scratch == nullptr) {
        TRACE(frame, Trace::Error, "****Error: Unable to allocate %d bytes for local hostname buffer\n",
              DOV0_HOST_NAME_SIZE);
        return false;
    }
    readHostName(scratch); // for the trace alone, and made whatever the level
    TRACE(frame, Trace::Detail, "gethostname returned Hptr <%s>\n", scratch);
    const char *domain = DOV0_GetLocalDomainName();
    if (domain != nullptr) {
        TRACE(frame, Trace::Storage, "Allocated LocalDomainName object @%p\n",
              static_cast<const void *>(domain));
    }
    chooseName(frame, variables);
    if (domain != nullptr) {
        qualifyName(frame, domain);
    }
    DOV0_FreeStorage(&scratch);
    TRACE(frame, Trace::Detail, "Local hostname in effect is <%s>\n", OwnHostName);
    return true;
}

} // namespace

TRACE_CONTROL("dov0lhns", DOV0_LocalHostNameString);
extern "C" char *DOV0_LocalHostNameString(void) noexcept
{
    const Frame frame(TRC1__EPB_);

    char *kept = NameString.load(std::memory_order_acquire);
    if (kept != nullptr) {
        return frame.leave(kept);
    }
    OwnHostNameLock.ensureInitialized();
    const LockHolder holder(OwnHostNameLock);
    if (NameString.load(std::memory_order_relaxed) == nullptr) {
        if (!fillName(frame)) {
            return frame.leaveUnreported<char *>(nullptr); // the next call tries again
        }
        NameString.store(OwnHostName, std::memory_order_release);
    }
    return frame.leave<char *>(OwnHostName);
}
