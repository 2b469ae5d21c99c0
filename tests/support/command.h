// Runs a command of the shell and takes what it writes. A command that is missing has status 127, like in the shell.
#ifndef DOV0610_TESTS_COMMAND_H
#define DOV0610_TESTS_COMMAND_H

#include <cstdio>
#include <string>
#include <sys/wait.h>

struct Outcome {
    int status = -1;    // as the command ended, or 128 and the signal that ended it
    std::string output; // standard output and error together
};

inline Outcome run(const std::string &command)
{
    Outcome outcome;
    FILE *const pipe = popen(("{ " + command + "\n} 2>&1").c_str(), "r");
    if (pipe == nullptr) {
        return outcome;
    }
    char piece[4096];
    for (size_t count = 0; (count = std::fread(piece, 1, sizeof piece, pipe)) > 0;) {
        outcome.output.append(piece, count);
    }
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return outcome;
}

#endif
