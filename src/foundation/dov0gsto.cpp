// Gives out zero-filled working storage: every block that the library hands to a caller or keeps for itself.
#include "foundation/frame.h"
#include "foundation/working_storage_accounting.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

TRACE_CONTROL("dov0gsto", DOV0_GetStorage);
extern "C" void *DOV0_GetStorage(int32_t size) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (frame.traces(Trace::State)) {
        if (WorkingStorageCounterInitialized.exchange(1) == 0) {
            TRACE_ALWAYS(frame, "Initializing WorkingStorageCounterLock\n");
        }
        WorkingStorageCounterLock.ensureInitialized();
    }
    if (size < 1) {
        TRACE(frame, Trace::Error, "*****Invalid get storage size %d\n", size);
        return frame.leave<void *>(nullptr);
    }
    void *block = std::malloc(static_cast<size_t>(size));
    if (block == nullptr) {
        TRACE(frame, Trace::Error, "*****Unable to obtain storage, size %d\n", size);
        return frame.leave<void *>(nullptr);
    }
    TRACE(frame, Trace::Detail, "Allocated storage at address @%p size %d\n", block, size);
    std::memset(block, 0, static_cast<size_t>(size));
    if (frame.traces(Trace::State)) {
        const LockHolder holder(WorkingStorageCounterLock);
        const int32_t position = recordBlock(block, size);
        if (position != 0) {
            TRACE_ALWAYS(frame, "After allocation, Total Working Storage Size %.2fK, WSB %d heap limit @%p\n",
                         TotalWorkingStorage / 1024.0, position, sbrk(0));
        }
    }
    return frame.leave(block);
}
