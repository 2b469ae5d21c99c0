#include "net/socket_faults.h"

#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

SocketFaults socketFaults;

namespace {

template <typename Function> Function real(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

// 0, or the result of a call that fails.
int faultWith(int error)
{
    if (error == 0) {
        return 0;
    }
    errno = error;
    return -1;
}

} // namespace

extern "C" int socket(int domain, int type, int protocol) noexcept
{
    static const auto next = real<int (*)(int, int, int)>("socket");
    return faultWith(socketFaults.onSocket) != 0 ? -1 : next(domain, type, protocol);
}

extern "C" int setsockopt(int descriptor, int level, int name, const void *value, socklen_t length) noexcept
{
    static const auto next = real<int (*)(int, int, int, const void *, socklen_t)>("setsockopt");
    int fault = 0;
    if (level == SOL_SOCKET && name == SO_REUSEADDR) {
        fault = faultWith(socketFaults.onReuse);
    } else if (level == IPPROTO_TCP && name == TCP_NODELAY) {
        fault = faultWith(socketFaults.onNoDelay);
    }
    return fault != 0 ? fault : next(descriptor, level, name, value, length);
}

extern "C" int bind(int descriptor, const sockaddr *address, socklen_t length) noexcept
{
    static const auto next = real<int (*)(int, const sockaddr *, socklen_t)>("bind");
    return faultWith(socketFaults.onBind) != 0 ? -1 : next(descriptor, address, length);
}

extern "C" int getsockname(int descriptor, sockaddr *address, socklen_t *length) noexcept
{
    static const auto next = real<int (*)(int, sockaddr *, socklen_t *)>("getsockname");
    return faultWith(socketFaults.onName) != 0 ? -1 : next(descriptor, address, length);
}

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    static const auto next = real<int (*)(int, unsigned long, void *)>("ioctl");
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    return faultWith(socketFaults.onControl) != 0 ? -1 : next(descriptor, request, argument);
}

extern "C" int close(int descriptor)
{
    static const auto next = real<int (*)(int)>("close");
    return faultWith(socketFaults.onClose) != 0 ? -1 : next(descriptor);
}
