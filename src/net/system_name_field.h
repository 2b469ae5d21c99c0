// A field of the system's own description as a terminated text, even where the field is full.
#ifndef DOV0610_NET_SYSTEM_NAME_FIELD_H
#define DOV0610_NET_SYSTEM_NAME_FIELD_H

#include <cstring>
#include <sys/utsname.h>

class SystemNameField {
public:
    template <size_t Size> explicit SystemNameField(const char (&field)[Size]) noexcept
    {
        static_assert(Size < sizeof terminated);
        std::memcpy(terminated, field, strnlen(field, Size));
    }

    const char *text() const noexcept { return terminated; }

    // Copies at most so many bytes, and no terminator.
    void copyUnterminated(char *out, size_t most) const noexcept
    {
        std::memcpy(out, terminated, strnlen(terminated, most));
    }

private:
    char terminated[sizeof(utsname::nodename) + 1] = {};
};

#endif
