// Stand-ins for the resolver and for the system's names, so that no test asks a name server. What a test does not
// set fails as an unknown host, or with ENOSYS.
#ifndef DOV0610_TESTS_NET_RESOLVER_STAND_INS_H
#define DOV0610_TESTS_NET_RESOLVER_STAND_INS_H

#include <functional>
#include <netdb.h>
#include <string>
#include <sys/utsname.h>
#include <vector>

struct ResolverStandIns {
    std::function<hostent *(const char *name)> byName;
    std::function<hostent *(const void *address, socklen_t length, int family)> byAddress;
    std::function<int(char *area, size_t size)> hostName;
    std::function<int(utsname *names)> systemNames;
};

// Shared by all threads; set before they start.
ResolverStandIns &standIns();

// How often each was called.
int nameLookUps();
int addressLookUps();

// A look-up that fails with these numbers.
hostent *unknownHost(int error = 0, int resolverError = HOST_NOT_FOUND);

// The resolver itself: for localhost and 127.0.0.1, which it finds in a file.
hostent *realByName(const char *name);
hostent *realByAddress(const void *address, socklen_t length, int family);

// Sets the system's host name.
void setHostName(const std::string &name);

// A resolver's record that answers with this name and these dotted addresses.
class HostRecord {
public:
    explicit HostRecord(std::string name, const std::vector<std::string> &dottedAddresses = {"192.0.2.1"});
    HostRecord(const HostRecord &) = delete;
    HostRecord &operator=(const HostRecord &) = delete;

    hostent *get() { return &record; }

private:
    std::string ownName;
    std::vector<std::string> addresses;
    std::vector<char *> addressList;
    char *noAliases[1] = {nullptr};
    hostent record = {};
};

#endif
