#include "support/system_calls.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>

namespace {

// What the threads of the tests do on their own account is not looked at.
thread_local SystemCalls *calls = nullptr;
thread_local const SystemFault *innermostFault = nullptr;

[[gnu::format(printf, 1, 2)]] void record(const char *format, ...)
{
    if (calls == nullptr) {
        return;
    }
    char text[128];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    calls->push_back(text);
}

int failed(const SystemFault *fault)
{
    errno = fault->error;
    return fault->result;
}

// The function that the stand-in hides.
template <typename Function> Function *system(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

const char *attributesShown(const void *attributes)
{
    return attributes != nullptr ? "with attributes" : "without attributes";
}

const char *detachStateShown(const pthread_attr_t *attributes)
{
    if (attributes == nullptr) {
        return "without attributes";
    }
    int state = -1;
    pthread_attr_getdetachstate(attributes, &state);
    return state == PTHREAD_CREATE_JOINABLE ? "joinable" : "detached";
}

} // namespace

SystemCalls systemCallsOf(const std::function<void()> &call)
{
    SystemCalls made;
    calls = &made;
    call();
    calls = nullptr;
    return made;
}

SystemFault::SystemFault(const char *failingFunction, int failingResult, int failingError)
    : function(failingFunction), outer(innermostFault), result(failingResult), error(failingError)
{
    innermostFault = this;
}

SystemFault::~SystemFault()
{
    innermostFault = outer;
}

const SystemFault *faultOf(const char *function)
{
    const SystemFault *fault = innermostFault;
    while (fault != nullptr && std::strcmp(fault->function, function) != 0) {
        fault = fault->outer;
    }
    return fault;
}

extern "C" {

int pthread_mutexattr_init(pthread_mutexattr_t *attributes) noexcept
{
    record("pthread_mutexattr_init");
    const SystemFault *fault = faultOf("pthread_mutexattr_init");
    static auto *const real = system<int(pthread_mutexattr_t *)>("pthread_mutexattr_init");
    return fault != nullptr ? failed(fault) : real(attributes);
}

int pthread_mutex_init(pthread_mutex_t *mutex, const pthread_mutexattr_t *attributes) noexcept
{
    record("pthread_mutex_init %s", attributesShown(attributes));
    const SystemFault *fault = faultOf("pthread_mutex_init");
    static auto *const real =
        system<int(pthread_mutex_t *, const pthread_mutexattr_t *)>("pthread_mutex_init");
    return fault != nullptr ? failed(fault) : real(mutex, attributes);
}

int pthread_mutexattr_destroy(pthread_mutexattr_t *attributes) noexcept
{
    record("pthread_mutexattr_destroy");
    const SystemFault *fault = faultOf("pthread_mutexattr_destroy");
    static auto *const real = system<int(pthread_mutexattr_t *)>("pthread_mutexattr_destroy");
    return fault != nullptr ? failed(fault) : real(attributes);
}

int pthread_condattr_init(pthread_condattr_t *attributes) noexcept
{
    record("pthread_condattr_init");
    const SystemFault *fault = faultOf("pthread_condattr_init");
    static auto *const real = system<int(pthread_condattr_t *)>("pthread_condattr_init");
    return fault != nullptr ? failed(fault) : real(attributes);
}

int pthread_cond_init(pthread_cond_t *condVar, const pthread_condattr_t *attributes) noexcept
{
    record("pthread_cond_init %s", attributesShown(attributes));
    const SystemFault *fault = faultOf("pthread_cond_init");
    static auto *const real = system<int(pthread_cond_t *, const pthread_condattr_t *)>("pthread_cond_init");
    return fault != nullptr ? failed(fault) : real(condVar, attributes);
}

int pthread_condattr_destroy(pthread_condattr_t *attributes) noexcept
{
    record("pthread_condattr_destroy");
    const SystemFault *fault = faultOf("pthread_condattr_destroy");
    static auto *const real = system<int(pthread_condattr_t *)>("pthread_condattr_destroy");
    return fault != nullptr ? failed(fault) : real(attributes);
}

// A point where a thread can be cancelled, so not noexcept.
int pthread_cond_timedwait(pthread_cond_t *condVar, pthread_mutex_t *mutex, const timespec *deadline)
{
    record("pthread_cond_timedwait until %lld.%09lld", static_cast<long long>(deadline->tv_sec),
           static_cast<long long>(deadline->tv_nsec));
    const SystemFault *fault = faultOf("pthread_cond_timedwait");
    static auto *const real =
        system<int(pthread_cond_t *, pthread_mutex_t *, const timespec *)>("pthread_cond_timedwait");
    return fault != nullptr ? failed(fault) : real(condVar, mutex, deadline);
}

int pthread_attr_init(pthread_attr_t *attributes) noexcept
{
    record("pthread_attr_init");
    const SystemFault *fault = faultOf("pthread_attr_init");
    static auto *const real = system<int(pthread_attr_t *)>("pthread_attr_init");
    return fault != nullptr ? failed(fault) : real(attributes);
}

int pthread_attr_destroy(pthread_attr_t *attributes) noexcept
{
    record("pthread_attr_destroy");
    const SystemFault *fault = faultOf("pthread_attr_destroy");
    static auto *const real = system<int(pthread_attr_t *)>("pthread_attr_destroy");
    return fault != nullptr ? failed(fault) : real(attributes);
}

int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*start)(void *),
                   void *argument) noexcept
{
    record("pthread_create %s", detachStateShown(attributes));
    const SystemFault *fault = faultOf("pthread_create");
    static auto *const real =
        system<int(pthread_t *, const pthread_attr_t *, void *(*)(void *), void *)>("pthread_create");
    return fault != nullptr ? failed(fault) : real(thread, attributes, start, argument);
}

int pthread_detach(pthread_t thread) noexcept
{
    record("pthread_detach");
    const SystemFault *fault = faultOf("pthread_detach");
    static auto *const real = system<int(pthread_t)>("pthread_detach");
    return fault != nullptr ? failed(fault) : real(thread);
}

int fcntl(int descriptor, int command, ...)
{
    // Whatever the third argument is, it is passed on as a word, as the C library itself does.
    va_list arguments;
    va_start(arguments, command);
    void *word = va_arg(arguments, void *);
    va_end(arguments);
    const SystemFault *fault = nullptr;
    if (command == F_GETFD) {
        record("fcntl %d F_GETFD", descriptor);
        fault = faultOf("F_GETFD");
    } else if (command == F_SETFD) {
        record("fcntl %d F_SETFD %d", descriptor, static_cast<int>(reinterpret_cast<intptr_t>(word)));
        fault = faultOf("F_SETFD");
    }
    static auto *const real = system<int(int, int, ...)>("fcntl");
    return fault != nullptr ? failed(fault) : real(descriptor, command, word);
}
}
