// Makes the heap fail on purpose: malloc, calloc and realloc as the library and the C library call them.
#ifndef DOV0610_TESTS_HEAP_FAULTS_H
#define DOV0610_TESTS_HEAP_FAULTS_H

#include <functional>

// Makes the n-th heap request (counted from 1) of the calling thread fail while a call runs; later ones
// succeed. Returns whether the call came as far as that request.
bool withHeapFailure(int n, const std::function<void()> &call);

// The same, and all later requests fail too: some callers try again with less.
bool withHeapFailureFrom(int n, const std::function<void()> &call);

// Makes every heap request of the calling thread fail while a call runs.
void withoutHeap(const std::function<void()> &call);

// The number of heap requests that a call makes on the calling thread.
int heapRequestsOf(const std::function<void()> &call);

// The blocks that the calling thread obtained during a call, less those that it gave back.
int heapBlocksKeptBy(const std::function<void()> &call);

// Takes the stand-ins of the tests themselves out of the count for the length of a block.
class HeapFaultPause {
public:
    HeapFaultPause() noexcept;
    ~HeapFaultPause();
    HeapFaultPause(const HeapFaultPause &) = delete;
    HeapFaultPause &operator=(const HeapFaultPause &) = delete;

private:
    const bool wasCounting;
};

#endif
