// Makes a full path name of a bare file name, in the work directory or in one that the caller gives.
#include "foundation/frame.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>

namespace {

enum WorkFilePathState : int32_t { Unsettled, Settled, BeingStored };

constinit char workFilePath[DOV0_PATH_NAME_SIZE];
constinit std::atomic<int32_t> workFilePathInit = Unsettled;

// Finds out the work directory. Returns false when there is no storage for it.
bool determineWorkFilePath(const Frame &frame, char (&directory)[DOV0_PATH_NAME_SIZE]) noexcept
{
    const char *workPath = DOV0_GetEnv("DOV_WORK_PATH", nullptr);
    if (workPath == nullptr) { // or empty
        std::snprintf(directory, sizeof directory, ".%swork%s", "/", "/");
        TRACE(frame, Trace::Detail, "Using WorkFilePath <%s>\n", directory);
        return true;
    }
    char *checkedPath = DOV0_CheckPathSpec(workPath);
    if (checkedPath == nullptr) {
        TRACE(frame, Trace::Error, "****Error: unable to allocate path buffer storage for workfile {%s}\n",
              workPath);
        return false;
    }
    const size_t length = std::min(std::strlen(checkedPath), sizeof directory - 1);
    std::memcpy(directory, checkedPath, length);
    directory[length] = '\0';
    TRACE(frame, Trace::Detail, "Comparing WorkFileNamePtr <%s> against <%s>\n", workPath, checkedPath);
    TRACE(frame, Trace::Storage, "Freeing path buffer @%p", static_cast<const void *>(checkedPath));
    DOV0_FreeStorage(&checkedPath);
    return true;
}

// Keeps the work directory for later calls. Of several first callers, who all found the same one, one stores
// it and none waits.
void keepWorkFilePath(const char (&directory)[DOV0_PATH_NAME_SIZE]) noexcept
{
    int32_t state = Unsettled;
    if (workFilePathInit.compare_exchange_strong(state, BeingStored, std::memory_order_relaxed)) {
        std::memcpy(workFilePath, directory, sizeof workFilePath);
        workFilePathInit.store(Settled, std::memory_order_release);
    }
}

} // namespace

TRACE_CONTROL("dov0cfqn", DOV0_ConstructFullyQualifiedName);
extern "C" char *DOV0_ConstructFullyQualifiedName(const char *pathSpec, const char *nameSpec) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (nameSpec == nullptr) {
        TRACE(frame, Trace::Error, "***** Input NameSpec is NULL\n");
        return frame.leave<char *>(nullptr);
    }
    const char *directory = workFilePath;
    char ownWorkFilePath[DOV0_PATH_NAME_SIZE] = {};
    if (workFilePathInit.load(std::memory_order_acquire) != Settled) {
        if (!determineWorkFilePath(frame, ownWorkFilePath)) {
            return frame.leave<char *>(nullptr);
        }
        keepWorkFilePath(ownWorkFilePath);
        directory = ownWorkFilePath;
    }

    auto *pathName = static_cast<char *>(DOV0_GetStorage(DOV0_PATH_NAME_SIZE));
    if (pathName == nullptr) {
        if (pathSpec != nullptr) {
            TRACE(frame, Trace::Error,
                  "****Error: unable to allocate fully qualified pathname buffer for PathSpec <%s>, NameSpec "
                  "<%s>\n",
                  pathSpec, nameSpec);
        } else {
            TRACE(frame, Trace::Error,
                  "****Error: unable to allocate fully qualified pathname buffer for NameSpec <%s>\n",
                  nameSpec);
        }
        return frame.leave(pathName);
    }
    if (pathSpec != nullptr) {
        TRACE(frame, Trace::Detail, "Input PathSpec %s, NameSpec %s\n", pathSpec, nameSpec);
        directory = pathSpec;
    } else {
        TRACE(frame, Trace::Detail, "Input PathSpec NULL, NameSpec %s\n", nameSpec);
    }

    // No separator comes between the two: a directory ends in one. The block's last byte stays the
    // terminator.
    const size_t room = DOV0_PATH_NAME_SIZE - 1;
    const size_t directoryLength = std::strlen(directory);
    const size_t nameLength = std::strlen(nameSpec);
    const size_t directoryCopied = std::min(directoryLength, room);
    const size_t nameCopied = std::min(nameLength, room - directoryCopied);
    std::memcpy(pathName, directory, directoryCopied);
    std::memcpy(pathName + directoryCopied, nameSpec, nameCopied);
    if (directoryLength + nameLength > room) {
        TRACE(frame, Trace::Error, "Warning: only copied %d bytes of <%s> to pathname <%s>\n",
              static_cast<int32_t>(nameCopied), nameSpec, pathName);
    }
    return frame.leave(pathName);
}
