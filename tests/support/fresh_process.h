// Runs a part of a test in a process of its own, which inherits what the library has kept so far.
#ifndef DOV0610_TESTS_FRESH_PROCESS_H
#define DOV0610_TESTS_FRESH_PROCESS_H

#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

// Whether the expectations of the part held.
inline bool holdsInFreshProcess(const std::function<void()> &part)
{
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        part();
        std::fflush(nullptr);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

#endif
