// Runs a program of the project as its user does, and keeps what it says.
#ifndef DOV0610_TESTS_PROGRAM_H
#define DOV0610_TESTS_PROGRAM_H

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

struct ProgramResult {
    int status = -1; // exit status, or -1 when a signal ended the program
    std::string output;
    std::string errors;
};

// A folder that is gone with everything in it when the test ends.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        char pattern[] = "/tmp/dov0test.XXXXXX";
        if (mkdtemp(pattern) == nullptr) {
            std::abort();
        }
        path = pattern;
    }
    ~TemporaryFolder()
    {
        if (std::system(("rm -rf " + path).c_str()) != 0) {
            std::abort();
        }
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    std::string file(const std::string &name) const { return path + "/" + name; }

    std::string write(const std::string &name, const std::string &contents) const
    {
        std::ofstream(file(name), std::ios::binary) << contents;
        return file(name);
    }

    std::string path;
};

inline std::string contentsOf(const std::string &file)
{
    std::ostringstream contents;
    contents << std::ifstream(file, std::ios::binary).rdbuf();
    return contents.str();
}

// Runs a command line in the shell and keeps output and errors apart; support/command.h has them together.
inline ProgramResult runProgram(const std::string &command)
{
    const TemporaryFolder folder;
    const int status =
        std::system((command + " >" + folder.file("output") + " 2>" + folder.file("errors")).c_str());
    ProgramResult result;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.output = contentsOf(folder.file("output"));
    result.errors = contentsOf(folder.file("errors"));
    return result;
}

#endif
