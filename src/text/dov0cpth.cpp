// Makes a directory name end in a separator, in a copy.
#include "foundation/frame.h"
#include "text/block_size.h"

#include <cstring>

TRACE_CONTROL("dov0cpth", DOV0_CheckPathSpec);
extern "C" char *DOV0_CheckPathSpec(const char *pathSpec) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (pathSpec == nullptr) {
        return frame.leaveUnreported<char *>(nullptr);
    }
    TRACE(frame, Trace::Detail, "Input path spec ->{%s}\n", pathSpec);
    const size_t length = std::strlen(pathSpec);
    const int32_t size = blockSize(length + 2);
    auto *path = static_cast<char *>(DOV0_GetStorage(size));
    if (path == nullptr) {
        TRACE(frame, Trace::Error,
              "****Error: unable to allocate path buffer storage for path specification {%s}\n", pathSpec);
        return frame.leave(path);
    }
    TRACE(frame, Trace::Storage, "Allocated path buffer @%p for length %d\n", static_cast<const void *>(path),
          size);
    std::memcpy(path, pathSpec, length);
    // Appended also behind a separator that is there already; the file system takes a doubled one for one.
    path[length] = '/';
    return frame.leave(path);
}
