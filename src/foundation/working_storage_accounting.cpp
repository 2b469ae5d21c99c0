// A chain of slots, one for each recorded block. It grows by whole pages and never shrinks: it is a
// diagnostic aid, searched from its head each time, and not an owner of the blocks.
#include "foundation/working_storage_accounting.h"

#include <cstdlib>

constinit FirstUseLock WorkingStorageCounterLock;
constinit std::atomic<int32_t> WorkingStorageCounterInitialized = 0;
constinit double TotalWorkingStorage = 0;

namespace {

constexpr int32_t SlotsPerPage = 341;

struct WorkingStorageSlot {
    WorkingStorageSlot *next;
    uintptr_t address; // 0 when the slot is free
    int32_t size;      // kept when the slot becomes free
};

constinit WorkingStorageSlot *pWS = nullptr;

struct FoundSlot {
    WorkingStorageSlot *slot; // null when there is none
    WorkingStorageSlot *last; // the last slot visited
    int32_t count;            // slots visited, the found one included
};

// The first slot that holds this address; address 0 finds the first free slot.
FoundSlot findSlot(uintptr_t address) noexcept
{
    FoundSlot found = {nullptr, nullptr, 0};
    for (WorkingStorageSlot *slot = pWS; slot != nullptr; slot = slot->next) {
        ++found.count;
        found.last = slot;
        if (slot->address == address) {
            found.slot = slot;
            break;
        }
    }
    return found;
}

// A page of free slots behind the last one, or null when the heap is exhausted.
WorkingStorageSlot *appendPage(WorkingStorageSlot *last) noexcept
{
    auto *page = static_cast<WorkingStorageSlot *>(std::calloc(SlotsPerPage, sizeof(WorkingStorageSlot)));
    if (page == nullptr) {
        return nullptr;
    }
    for (int32_t i = 0; i + 1 < SlotsPerPage; ++i) {
        page[i].next = &page[i + 1];
    }
    (last != nullptr ? last->next : pWS) = page;
    return page;
}

} // namespace

int32_t recordBlock(const void *block, int32_t size) noexcept
{
    FoundSlot found = findSlot(0);
    if (found.slot == nullptr) {
        found.slot = appendPage(found.last);
        if (found.slot == nullptr) {
            return 0;
        }
        ++found.count;
    }
    found.slot->address = reinterpret_cast<uintptr_t>(block);
    found.slot->size = size;
    TotalWorkingStorage += size;
    return found.count;
}

int32_t forgetBlock(uintptr_t address) noexcept
{
    const FoundSlot found = findSlot(address);
    if (found.slot != nullptr) {
        found.slot->address = 0;
        TotalWorkingStorage -= found.slot->size;
    }
    return found.count;
}
