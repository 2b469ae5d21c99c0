// Turns a socket address into the name of its host, whole or without its domain.
#include "foundation/frame.h"
#include "net/dotted_address.h"

#include <cstring>

TRACE_CONTROL("dov0ca2n", DOV0_ConvertAddrToName);
extern "C" int32_t DOV0_ConvertAddrToName(const sockaddr_in *sockaddr, char **nameOut,
                                          int32_t shortName) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (sockaddr == nullptr || nameOut == nullptr) {
        TRACE(frame, Trace::Error, "*****Error: Socket address @%p or area for the name @%p missing\n",
              static_cast<const void *>(sockaddr), static_cast<void *>(nameOut));
        return frame.leave<int32_t>(0);
    }
    hostent *record = DOV0_GetHostByAddr(&sockaddr->sin_addr);
    if (record == nullptr) {
        return frame.leave<int32_t>(0);
    }
    if (record->h_name == nullptr) {
        DOV0_FreeStorage(&record);
        return frame.leave<int32_t>(0);
    }
    const auto size = static_cast<int32_t>(std::strlen(record->h_name) + 1);
    auto *name = static_cast<char *>(DOV0_GetStorage(size));
    if (name == nullptr) {
        DOV0_FreeStorage(&record);
        return frame.leave<int32_t>(0);
    }
    std::memcpy(name, record->h_name, static_cast<size_t>(size));
    *nameOut = name;
    TRACE(frame, Trace::Detail | Trace::Storage, "h @%p, AddrName @%p, AddrName %s, size %d\n",
          static_cast<void *>(record), static_cast<void *>(name), name, size);
    if (shortName != DOV0_FULL_NAME) {
        name[std::strcspn(name, ".")] = '\0';
    }
    TRACE(frame, Trace::Detail | Trace::Storage, "address %s -> name %s, freeing h @%p",
          DottedAddress(sockaddr->sin_addr).text(), name, static_cast<void *>(record));
    DOV0_FreeStorage(&record);
    return frame.leave<int32_t>(1);
}
