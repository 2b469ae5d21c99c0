// Resolves a dotted address to the name of its host.
#include "foundation/frame.h"
#include "net/host_name_text.h"

#include <arpa/inet.h>

namespace {

// The name of a record in working storage of its own, or null.
char *nameOf(const Frame &frame, const hostent &record) noexcept
{
    if (record.h_name == nullptr) {
        return nullptr;
    }
    auto *name = static_cast<char *>(DOV0_GetStorage(DOV0_HOST_NAME_SIZE));
    if (name != nullptr) {
        TRACE(frame, Trace::Storage, "Allocated ResolvedNameString @%p for length %d\n",
              static_cast<void *>(name), DOV0_HOST_NAME_SIZE);
        copyHostName(name, record.h_name);
    }
    return name;
}

} // namespace

TRACE_CONTROL("dov0ra2n", DOV0_ResolveAddressToName);
extern "C" char *DOV0_ResolveAddressToName(const char *dottedAddress) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (dottedAddress == nullptr) {
        TRACE(frame, Trace::Error, "*****Error: No address to resolve\n");
        return frame.leave<char *>(nullptr);
    }
    if (*dottedAddress != '\0') {
        TRACE(frame, Trace::Detail, "Calling inet_addr for address <%s>\n", dottedAddress);
    }
    const in_addr_t address = inet_addr(dottedAddress);
    hostent *record = DOV0_GetHostByAddr(&address);
    if (record == nullptr) {
        return frame.leave<char *>(nullptr);
    }
    char *name = nameOf(frame, *record);
    TRACE(frame, Trace::Storage, "Freeing hostent buffer @%p\n", static_cast<void *>(record));
    DOV0_FreeStorage(&record);
    return frame.leave(name);
}
