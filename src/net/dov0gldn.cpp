// Works out the domain of the local host, from the environment or from the host's official name, and keeps it once
// it is found.
#include "foundation/frame.h"
#include "net/host_name_text.h"

#include <atomic>
#include <cerrno>

namespace {

constinit std::atomic<char *> DomainName = nullptr; // never freed

// With fewer dots than this a name has no domain: host.com is a host, host.site.com is one in site.com.
constexpr int DotsOfAQualifiedName = 2;

// Replaces the system's host name by the official one. False when there is none.
bool readOfficialName(const Frame &frame, char *name) noexcept
{
    TRACE(frame, Trace::Detail, "Calling gethostname to parse out domain name\n");
    if (!readHostName(name)) {
        const int error = errno;
        TRACE(frame, Trace::Error, "***** gethostname failed, errno=%d\n", error);
        return false;
    }
    hostent *record = DOV0_GetHostByName(name);
    if (record == nullptr) {
        if (*name != '\0') {
            TRACE(frame, Trace::Error, "cannot resolve domain name <%s>\n", name);
        }
        return false;
    }
    if (record->h_name != nullptr) {
        copyHostName(name, record->h_name);
    }
    DOV0_FreeStorage(&record);
    return true;
}

// Moves what follows the first dot of a name to its front. False when the name has no domain.
bool keepDomain(const Frame &frame, char *name) noexcept
{
    int dots = 0;
    for (const char *c = name; *c != '\0'; ++c) {
        dots += *c == '.' ? 1 : 0;
    }
    if (dots < DotsOfAQualifiedName) {
        TRACE(frame, Trace::Detail, "HostName is %s, No Domain Name\n", name);
        return false;
    }
    const char *domain = std::strchr(name, '.') + 1;
    TRACE(frame, Trace::Detail, "HostName is %s, Domain Name is %s\n", name, domain);
    std::memmove(name, domain, std::strlen(domain) + 1);
    return true;
}

// Keeps a domain for the life of the process, unless another thread has come first.
char *publish(char *domain) noexcept
{
    char *kept = nullptr;
    if (DomainName.compare_exchange_strong(kept, domain, std::memory_order_acq_rel)) {
        return domain;
    }
    DOV0_FreeStorage(&domain);
    return kept;
}

} // namespace

TRACE_CONTROL("dov0gldn", DOV0_GetLocalDomainName);
extern "C" char *DOV0_GetLocalDomainName(void) noexcept
{
    const Frame frame(TRC1__EPB_);

    char *kept = DomainName.load(std::memory_order_acquire);
    if (kept != nullptr) {
        return frame.leave(kept);
    }
    const char *use = DOV0_GetEnv("DOV_USE_DOMAIN_NAME", "Y");
    if (*use == 'N' || *use == 'n') {
        TRACE(frame, Trace::Detail, "Not using domain name per DOV_USE_DOMAIN_NAME environment variable\n");
        return frame.leave<char *>(nullptr);
    }
    auto *domain = static_cast<char *>(DOV0_GetStorage(DOV0_HOST_NAME_SIZE));
    if (domain == nullptr) {
        return frame.leave<char *>(nullptr);
    }
    const char *given = DOV0_GetEnv("DOV_TCPIP_DOMAIN_NAME", nullptr);
    if (given != nullptr) {
        TRACE(frame, Trace::Detail, "Copying DOV_TCPIP_DOMAIN_NAME value <%s>\n", given);
        copyHostName(domain, given); // taken as it is, however many dots it has
    } else if (!readOfficialName(frame, domain) || !keepDomain(frame, domain)) {
        DOV0_FreeStorage(&domain); // nothing is kept, so that the next call works it out again
        return frame.leave<char *>(nullptr);
    }
    return frame.leave(publish(domain));
}
