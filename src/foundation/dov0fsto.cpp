// Takes working storage back and clears the caller's pointer, so that no dangling copy stays in it.
#include "foundation/frame.h"
#include "foundation/working_storage_accounting.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

TRACE_CONTROL("dov0fsto", DOV0_FreeStorage);
extern "C" void DOV0_FreeStorage(void *pointerAddress) noexcept
{
    const Frame frame(TRC1__EPB_);

    // The caller's variable may be a pointer of any type, so it is read and written as bytes.
    void *block = nullptr;
    if (pointerAddress != nullptr) {
        std::memcpy(&block, pointerAddress, sizeof block);
    }
    if (block == nullptr) {
        return frame.leave();
    }
    TRACE(frame, Trace::Detail, "Freeing storage at address @%p\n", block);
    const auto address = reinterpret_cast<uintptr_t>(block);
    std::free(block);
    if (frame.traces(Trace::State)) {
        // The state bit may have come on only after the block was allocated.
        WorkingStorageCounterLock.ensureInitialized();
        const LockHolder holder(WorkingStorageCounterLock);
        const int32_t visited = forgetBlock(address);
        TRACE_ALWAYS(frame, "After free, Total Working Storage Size %.2fK, WSB %d heap limit @%p\n",
                     TotalWorkingStorage / 1024.0, visited, sbrk(0));
    }
    block = nullptr;
    std::memcpy(pointerAddress, &block, sizeof block);
    frame.leave();
}
