// Turns a host name or a dotted address, and a port, into a socket address.
#include "foundation/frame.h"
#include "net/dotted_address.h"

#include <cstring>

TRACE_CONTROL("dov0cn2a", DOV0_ConvertNameToAddr);
extern "C" int32_t DOV0_ConvertNameToAddr(const char *name, int32_t port, sockaddr_in *sockaddrOut) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (sockaddrOut == nullptr) {
        TRACE(frame, Trace::Error, "*****Error: No area for the address of host <%s>\n", shown(name));
        return frame.leave<int32_t>(0);
    }
    *sockaddrOut = {};
    sockaddrOut->sin_family = AF_INET;
    sockaddrOut->sin_port = htons(static_cast<uint16_t>(port));
    if (name != nullptr && *name != '\0') {
        TRACE(frame, Trace::Detail, "Converting hostname <%s> to dotted decimal address\n", name);
    }
    if (DOV0_IsThisAddressString(name) == DOV0_ADDRESS_DOTS) {
        sockaddrOut->sin_addr.s_addr = inet_addr(name);
        return frame.leave<int32_t>(1);
    }

    hostent *record = DOV0_GetHostByName(name);
    const char *address =
        record != nullptr && record->h_addr_list != nullptr ? record->h_addr_list[0] : nullptr;
    if (address != nullptr) {
        const int32_t length = sizeof sockaddrOut->sin_addr;
        TRACE(frame, Trace::Detail, "Copying %d bytes to address @%p from hostent @%p\n", length,
              static_cast<void *>(&sockaddrOut->sin_addr), static_cast<void *>(record));
        std::memcpy(&sockaddrOut->sin_addr, address, length);
        TRACE(frame, Trace::Detail, "address %s port %d\n", DottedAddress(sockaddrOut->sin_addr).text(),
              ntohs(sockaddrOut->sin_port));
    } else {
        TRACE(frame, Trace::Error, "cannot convert name <%s> to address\n", shown(name));
    }
    if (record != nullptr) {
        TRACE(frame, Trace::Storage, "Freeing hostent buffer @%p\n", static_cast<void *>(record));
        DOV0_FreeStorage(&record);
    }
    return frame.leave<int32_t>(address != nullptr ? 1 : 0);
}
