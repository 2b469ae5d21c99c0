// Splits a text into tokens, one per call, keeping the position for each thread by itself.
#include "foundation/first_use_lock.h"
#include "foundation/frame.h"

#include <atomic>
#include <cstring>

namespace {

struct SavedPosition {
    std::atomic<char *> savePointer;
    std::atomic<int32_t> threadID; // 0 when the slot is free
};

constinit SavedPosition arrayOfSavePtr[DOV0_STRTOK_SLOTS] = {};

// Slots from here on were never owned, so no look-up goes further.
constinit std::atomic<int32_t> slotsEverOwned = 0;

// Guards claim and release. A thread finds and uses its own slot without it: nobody else writes there.
constinit FirstUseLock arrayOfSavePtrLock;

constexpr int32_t NoSlot = -1;

constexpr int32_t NoThread = 0;

int32_t findSlot(int32_t threadID) noexcept
{
    const int32_t end =
        threadID != NoThread ? slotsEverOwned.load(std::memory_order_relaxed) : DOV0_STRTOK_SLOTS;
    for (int32_t index = 0; index < end; ++index) {
        if (arrayOfSavePtr[index].threadID.load(std::memory_order_relaxed) == threadID) {
            return index;
        }
    }
    return NoSlot;
}

// Takes the lowest free slot.
int32_t claimSlot(int32_t threadID) noexcept
{
    arrayOfSavePtrLock.ensureInitialized();
    const LockHolder holder(arrayOfSavePtrLock);
    const int32_t index = findSlot(NoThread);
    if (index == NoSlot) {
        return NoSlot;
    }
    if (index >= slotsEverOwned.load(std::memory_order_relaxed)) {
        slotsEverOwned.store(index + 1, std::memory_order_relaxed);
    }
    arrayOfSavePtr[index].threadID.store(threadID, std::memory_order_relaxed);
    return index;
}

// Leaves the save pointer as it is.
void releaseSlot(int32_t index) noexcept
{
    const LockHolder holder(arrayOfSavePtrLock);
    arrayOfSavePtr[index].threadID.store(NoThread, std::memory_order_relaxed);
}

bool hasCharacters(const char *text) noexcept
{
    return text != nullptr && text[0] != '\0';
}

} // namespace

TRACE_CONTROL("dov0stok", DOV0_strtok);
extern "C" char *DOV0_strtok(char *text, const char *delimiters) noexcept
{
    const Frame frame(TRC1__EPB_);

    const int32_t threadID = PLT1_ThreadID();
    int32_t index = findSlot(threadID);
    const bool isOwner = index != NoSlot;
    if (isOwner) {
        TRACE(frame, Trace::Detail, "Found a match on threadID %d in arrayOfSavePtr[%d]\n", threadID, index);
    } else {
        index = claimSlot(threadID);
        if (index == NoSlot) {
            TRACE(frame, Trace::Error, "***** No slots available in the arrayOfSavePtr\n");
            return frame.leave<char *>(nullptr);
        }
        TRACE(frame, Trace::Detail, "Found available arrayOfSavePtr[%d] with threadID=0\n", index);
    }

    char *savePointer = arrayOfSavePtr[index].savePointer.load(std::memory_order_relaxed);
    if (text == nullptr) {
        TRACE(frame, Trace::Detail, "Reusing savePointer index %d @%p\n", index,
              static_cast<void *>(savePointer));
        if (hasCharacters(delimiters)) {
            TRACE(frame, Trace::State, "Calling strtok_r with NULL string1 and string2 <%s>\n", delimiters);
        }
    } else {
        if (hasCharacters(text)) {
            TRACE(frame, Trace::Detail, "Using threadID %d index %d for input string <%s>\n", threadID, index,
                  text);
        }
        savePointer = nullptr;
        if (hasCharacters(text) && hasCharacters(delimiters)) {
            TRACE(frame, Trace::Detail,
                  "Calling strtok_r with string1 <%s> string2 <%s> arrayOfSavePtr[%d].savePointer @%p\n",
                  text, delimiters, index, static_cast<void *>(savePointer));
        }
    }

    // Null text in a slot that was only now claimed continues nothing: its save pointer is another text's, or none.
    const bool hasText = text != nullptr || (isOwner && savePointer != nullptr);
    char *token = hasText ? strtok_r(text, delimiters != nullptr ? delimiters : "", &savePointer) : nullptr;
    arrayOfSavePtr[index].savePointer.store(savePointer, std::memory_order_relaxed);
    if (token != nullptr) {
        TRACE(frame, Trace::Detail, "Returning tok <%s> savePointer index %d @%p\n", token, index,
              static_cast<void *>(savePointer));
        return frame.leave(token);
    }
    TRACE(frame, Trace::Detail, "Returning NULL\n");
    TRACE(frame, Trace::Detail, "Setting arrayOfSavePtr[%d].threadID %ld to 0\n", index,
          static_cast<long>(threadID));
    releaseSlot(index);
    return frame.leave<char *>(nullptr);
}
