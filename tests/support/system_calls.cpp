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

} // namespace

struct SystemFaults {
    // Whether a function is to fail; if so, with which result, and errno is set.
    static bool apply(const char *function, int &result)
    {
        for (const SystemFault *fault = innermostFault; fault != nullptr; fault = fault->outer) {
            if (std::strcmp(fault->function, function) == 0) {
                result = fault->result;
                errno = fault->error;
                return true;
            }
        }
        return false;
    }
};

namespace {

// What a system function, or a sanitizer in its place, calls on its own account is not looked at either.
class Pause {
public:
    Pause() noexcept : pausedCalls(calls), pausedFault(innermostFault)
    {
        calls = nullptr;
        innermostFault = nullptr;
    }
    ~Pause()
    {
        calls = pausedCalls;
        innermostFault = pausedFault;
    }
    Pause(const Pause &) = delete;
    Pause &operator=(const Pause &) = delete;

private:
    SystemCalls *const pausedCalls;
    const SystemFault *const pausedFault;
};

// Fails if that is asked for, else runs the function that the stand-in hides. It is looked up each time,
// because a sanitizer calls some of these when it is not yet ready for a guarded static.
template <typename... Arguments> int answer(const char *name, Arguments... arguments)
{
    int result = 0;
    if (SystemFaults::apply(name, result)) {
        return result;
    }
    auto *const hidden = reinterpret_cast<int (*)(Arguments...)>(dlsym(RTLD_NEXT, name));
    const Pause pause;
    return hidden(arguments...);
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
    : function(failingFunction), result(failingResult), error(failingError), outer(innermostFault)
{
    innermostFault = this;
}

SystemFault::~SystemFault()
{
    innermostFault = outer;
}

extern "C" {

int pthread_mutexattr_init(pthread_mutexattr_t *attributes) noexcept
{
    record("pthread_mutexattr_init");
    return answer("pthread_mutexattr_init", attributes);
}

int pthread_mutex_init(pthread_mutex_t *mutex, const pthread_mutexattr_t *attributes) noexcept
{
    record("pthread_mutex_init %s", attributesShown(attributes));
    return answer("pthread_mutex_init", mutex, attributes);
}

int pthread_mutexattr_destroy(pthread_mutexattr_t *attributes) noexcept
{
    record("pthread_mutexattr_destroy");
    return answer("pthread_mutexattr_destroy", attributes);
}

int pthread_condattr_init(pthread_condattr_t *attributes) noexcept
{
    record("pthread_condattr_init");
    return answer("pthread_condattr_init", attributes);
}

int pthread_cond_init(pthread_cond_t *condVar, const pthread_condattr_t *attributes) noexcept
{
    record("pthread_cond_init %s", attributesShown(attributes));
    return answer("pthread_cond_init", condVar, attributes);
}

int pthread_condattr_destroy(pthread_condattr_t *attributes) noexcept
{
    record("pthread_condattr_destroy");
    return answer("pthread_condattr_destroy", attributes);
}

// A point where a thread can be cancelled, so not noexcept.
int pthread_cond_timedwait(pthread_cond_t *condVar, pthread_mutex_t *mutex, const timespec *deadline)
{
    record("pthread_cond_timedwait until %lld.%09lld", static_cast<long long>(deadline->tv_sec),
           static_cast<long long>(deadline->tv_nsec));
    return answer("pthread_cond_timedwait", condVar, mutex, deadline);
}

int pthread_attr_init(pthread_attr_t *attributes) noexcept
{
    record("pthread_attr_init");
    return answer("pthread_attr_init", attributes);
}

int pthread_attr_destroy(pthread_attr_t *attributes) noexcept
{
    record("pthread_attr_destroy");
    return answer("pthread_attr_destroy", attributes);
}

int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*start)(void *),
                   void *argument) noexcept
{
    record("pthread_create %s", detachStateShown(attributes));
    return answer("pthread_create", thread, attributes, start, argument);
}

int pthread_detach(pthread_t thread) noexcept
{
    record("pthread_detach");
    return answer("pthread_detach", thread);
}

int fcntl(int descriptor, int command, ...)
{
    // Whatever the third argument is, it is passed on as a word, as the C library itself does.
    va_list arguments;
    va_start(arguments, command);
    void *word = va_arg(arguments, void *);
    va_end(arguments);
    const char *fault = "";
    if (command == F_GETFD) {
        fault = "F_GETFD";
        record("fcntl %d F_GETFD", descriptor);
    } else if (command == F_SETFD) {
        fault = "F_SETFD";
        record("fcntl %d F_SETFD %d", descriptor, static_cast<int>(reinterpret_cast<intptr_t>(word)));
    }
    int result = 0;
    if (SystemFaults::apply(fault, result)) {
        return result;
    }
    auto *const hidden = reinterpret_cast<int (*)(int, int, ...)>(dlsym(RTLD_NEXT, "fcntl"));
    return hidden(descriptor, command, word);
}
}
