// Looks over the library's shoulder when it calls the system: which thread and descriptor functions it calls,
// and what it does when they fail.
//
//     const SystemFault fault("pthread_create", EAGAIN);
//     EXPECT_EQ(systemCallsOf([] { DOV0_CreateThread(start, nullptr, 0, &thread); }),
//               (SystemCalls{"pthread_attr_init", "pthread_create joinable", "pthread_attr_destroy"}));
//
// The functions: pthread_mutexattr_init, pthread_mutex_init, pthread_mutexattr_destroy,
// pthread_condattr_init, pthread_cond_init, pthread_condattr_destroy, pthread_cond_timedwait,
// pthread_attr_init, pthread_attr_destroy, pthread_create, pthread_detach, and the commands "F_GETFD" and
// "F_SETFD" of fcntl.
#ifndef DOV0610_TESTS_SYSTEM_CALLS_H
#define DOV0610_TESTS_SYSTEM_CALLS_H

#include <functional>
#include <string>
#include <vector>

using SystemCalls = std::vector<std::string>;

// The system functions that a call enters on the calling thread, oldest first, also those that are made to
// fail.
SystemCalls systemCallsOf(const std::function<void()> &call);

// Makes a system function fail on the calling thread for the length of a block: it does nothing, returns this
// result and leaves this in errno.
class SystemFault {
public:
    explicit SystemFault(const char *function, int result, int error = 0);
    ~SystemFault();
    SystemFault(const SystemFault &) = delete;
    SystemFault &operator=(const SystemFault &) = delete;

private:
    friend struct SystemFaults;

    const char *const function;
    const int result;
    const int error;
    const SystemFault *const outer;
};

#endif
