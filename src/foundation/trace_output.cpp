// Writes trace messages to their file. Several processes may share the file: each message is one
// write to a descriptor opened for appending, and a process that finds the file renamed follows.
#include "foundation/trace_output.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int StandardError = 2;
constexpr int PatienceInMilliseconds = 1000;

// A named pipe without a reader fails instead of holding the process up; once open it may block as any file.
int openToAppend(const char *fileName) noexcept
{
    const int opened =
        ::open(fileName, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0644);
    if (opened >= 0) {
        fcntl(opened, F_SETFL, fcntl(opened, F_GETFL) & ~O_NONBLOCK);
    }
    return opened;
}

// Whether the name still stands for the open file; another process may have renamed it.
bool isStillNamed(int descriptor, const char *fileName) noexcept
{
    struct stat byDescriptor = {};
    struct stat byName = {};
    return fstat(descriptor, &byDescriptor) == 0 && stat(fileName, &byName) == 0 &&
           byDescriptor.st_dev == byName.st_dev && byDescriptor.st_ino == byName.st_ino;
}

void renameWithSuffix(const char *fileName) noexcept
{
    char newName[PATH_MAX + 2];
    std::snprintf(newName, sizeof newName, "%s.1", fileName);
    std::rename(fileName, newName);
}

} // namespace

bool TraceOutput::open(const char *fileName) noexcept
{
    if (fileName == nullptr || fileName[0] == '\0') {
        return true;
    }
    const int opened = openToAppend(fileName); // which refuses names that are too long for ours
    if (opened < 0) {
        return false;
    }
    descriptor = opened;
    std::snprintf(name, sizeof name, "%s", fileName);
    return true;
}

void TraceOutput::write(const char *text, size_t length) noexcept
{
    if (limit != 0 && isFile()) {
        beginAgainIfFull(length);
    }
    while (length > 0) {
        const ssize_t written = ::write(descriptor, text, length);
        if (written > 0) {
            text += written;
            length -= static_cast<size_t>(written);
        } else if (written < 0 && errno == EAGAIN) {
            pollfd waiting = {descriptor, POLLOUT, 0};
            if (poll(&waiting, 1, PatienceInMilliseconds) <= 0) {
                return;
            }
        } else if (written == 0 || errno != EINTR) { // a full device may take nothing without an error
            return;
        }
    }
}

bool TraceOutput::isFullFile(size_t more) const noexcept
{
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0 &&
           static_cast<uint64_t>(status.st_size) + more > limit;
}

void TraceOutput::beginAgainIfFull(size_t more) noexcept
{
    if (!isFullFile(more)) {
        return;
    }
    // The lock on the file keeps a second process from renaming the new file that this one begins.
    flock(descriptor, LOCK_EX);
    if (isStillNamed(descriptor, name)) {
        renameWithSuffix(name);
    }
    const int opened = openToAppend(name);
    flock(descriptor, LOCK_UN);
    if (opened >= 0) {
        ::close(descriptor);
        descriptor = opened;
    }
}

void TraceOutput::swap(TraceOutput &other) noexcept
{
    std::swap(descriptor, other.descriptor);
    std::swap(name, other.name);
}

void TraceOutput::close() noexcept
{
    if (isFile()) {
        ::close(descriptor);
    }
    name[0] = '\0';
    descriptor = StandardError;
}
