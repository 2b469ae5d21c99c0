// Gives the dotted address of the local host, kept once it is known.
#include "foundation/frame.h"
#include "net/dotted_address.h"

#include <atomic>
#include <cstring>

namespace {

constexpr int32_t AddressSize = 80;
constinit std::atomic<char *> AddrString = nullptr; // never freed

// The address of a host name as a new text, or null.
char *dottedAddressOf(const Frame &frame, const char *name) noexcept
{
    sockaddr_in address = {};
    if (DOV0_ConvertNameToAddr(name, 0, &address) == 0) {
        return nullptr;
    }
    auto *text = static_cast<char *>(DOV0_GetStorage(AddressSize));
    if (text != nullptr) {
        TRACE(frame, Trace::Storage, "Allocated AddrString @%p for length 80\n", static_cast<void *>(text));
        const DottedAddress dotted(address.sin_addr);
        std::memcpy(text, dotted.text(), std::strlen(dotted.text()) + 1);
    }
    return text;
}

// Keeps an address for the life of the process, unless another thread has come first.
char *publish(char *text) noexcept
{
    char *kept = nullptr;
    if (text == nullptr || AddrString.compare_exchange_strong(kept, text, std::memory_order_acq_rel)) {
        return text;
    }
    DOV0_FreeStorage(&text);
    return kept;
}

} // namespace

TRACE_CONTROL("dov0lhas", DOV0_LocalHostAddrString);
extern "C" char *DOV0_LocalHostAddrString(void) noexcept
{
    const Frame frame(TRC1__EPB_);

    char *address = AddrString.load(std::memory_order_acquire);
    if (address != nullptr) {
        return frame.leave(address);
    }
    const char *name = DOV0_LocalHostNameString();
    if (name == nullptr) {
        TRACE(frame, Trace::Detail, "Note: Unable to determine local hostname string\n");
    } else {
        TRACE(frame, Trace::Detail, "Calling ConvertNameToAddr with NameSpec @%p <%s>\n",
              static_cast<const void *>(name), name);
        address = publish(dottedAddressOf(frame, name));
    }
    if (address != nullptr) {
        TRACE(frame, Trace::Detail, "Local host address in effect is %s", address);
    } else {
        TRACE(frame, Trace::Detail, "Local host address unavailable\n");
    }
    return frame.leave(address);
}
