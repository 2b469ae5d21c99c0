#include "net/resolver_stand_ins.h"

#include "support/heap_faults.h"

#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <unistd.h>

namespace {

std::atomic<int> countOfNames = 0;
std::atomic<int> countOfAddresses = 0;

} // namespace

ResolverStandIns &standIns()
{
    static auto *const instance = new ResolverStandIns;
    return *instance;
}

int nameLookUps()
{
    return countOfNames;
}

int addressLookUps()
{
    return countOfAddresses;
}

hostent *unknownHost(int error, int resolverError)
{
    errno = error;
    h_errno = resolverError;
    return nullptr;
}

hostent *realByName(const char *name)
{
    static const auto real = reinterpret_cast<hostent *(*)(const char *)>(dlsym(RTLD_NEXT, "gethostbyname"));
    return real(name);
}

hostent *realByAddress(const void *address, socklen_t length, int family)
{
    static const auto real =
        reinterpret_cast<hostent *(*)(const void *, socklen_t, int)>(dlsym(RTLD_NEXT, "gethostbyaddr"));
    return real(address, length, family);
}

void setHostName(const std::string &name)
{
    standIns().hostName = [name](char *area, size_t size) {
        std::strncpy(area, name.c_str(),
                     size); // no terminator where the name fills the area, as with the real one
        return 0;
    };
}

HostRecord::HostRecord(std::string name, const std::vector<std::string> &dottedAddresses)
    : ownName(std::move(name))
{
    for (const std::string &dotted : dottedAddresses) {
        const in_addr_t address = inet_addr(dotted.c_str());
        addresses.emplace_back(reinterpret_cast<const char *>(&address), sizeof address);
    }
    for (std::string &address : addresses) {
        addressList.push_back(address.data());
    }
    addressList.push_back(nullptr);
    record.h_name = ownName.data();
    record.h_aliases = noAliases;
    record.h_addrtype = AF_INET;
    record.h_length = sizeof(in_addr_t);
    record.h_addr_list = addressList.data();
}

extern "C" hostent *gethostbyname(const char *name)
{
    const HeapFaultPause pause;
    ++countOfNames;
    return standIns().byName ? standIns().byName(name) : unknownHost();
}

extern "C" hostent *gethostbyaddr(const void *address, socklen_t length, int family)
{
    const HeapFaultPause pause;
    ++countOfAddresses;
    return standIns().byAddress ? standIns().byAddress(address, length, family) : unknownHost();
}

extern "C" int gethostname(char *area, size_t size) noexcept
{
    const HeapFaultPause pause;
    if (!standIns().hostName) {
        errno = ENOSYS;
        return -1;
    }
    return standIns().hostName(area, size);
}

extern "C" int uname(utsname *names) noexcept
{
    const HeapFaultPause pause;
    if (!standIns().systemNames) {
        errno = ENOSYS;
        return -1;
    }
    return standIns().systemNames(names);
}
