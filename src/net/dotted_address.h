// The dotted text of an IPv4 address, in storage of its own, so that threads do not disturb each other.
#ifndef DOV0610_NET_DOTTED_ADDRESS_H
#define DOV0610_NET_DOTTED_ADDRESS_H

#include <arpa/inet.h>

class DottedAddress {
public:
    explicit DottedAddress(in_addr address) noexcept { inet_ntop(AF_INET, &address, dotted, sizeof dotted); }

    const char *text() const noexcept { return dotted; }

private:
    char dotted[INET_ADDRSTRLEN] = "";
};

#endif
