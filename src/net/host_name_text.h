// The fixed text area that a host name, a domain name or a resolved name is kept in: what does not fit is cut,
// and there is always a terminator.
#ifndef DOV0610_NET_HOST_NAME_TEXT_H
#define DOV0610_NET_HOST_NAME_TEXT_H

#include "dov0610.h"

#include <cstring>
#include <unistd.h>

constexpr size_t HostNameSize = DOV0_HOST_NAME_SIZE;

// Fills the area with a text, from an offset on.
inline void copyHostName(char *area, const char *text, size_t offset = 0) noexcept
{
    const size_t length = strnlen(text, HostNameSize - 1 - offset);
    std::memcpy(area + offset, text, length);
    area[offset + length] = '\0';
}

// Fills the area with the system's host name, or with the empty text and false when there is none to be had.
inline bool readHostName(char *area) noexcept
{
    if (gethostname(area, HostNameSize) != 0) {
        area[0] = '\0';
        return false;
    }
    area[HostNameSize - 1] = '\0'; // the system leaves a name that fills the area without one
    return true;
}

#endif
