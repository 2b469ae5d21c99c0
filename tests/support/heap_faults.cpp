#include "support/heap_faults.h"

#include <cerrno>
#include <climits>
#include <cstddef>

// Whichever heap lies below: a sanitizer's, or the C library's.
extern "C" {
void *__interceptor_malloc(size_t) __attribute__((weak));
void *__interceptor_calloc(size_t, size_t) __attribute__((weak));
void *__interceptor_realloc(void *, size_t) __attribute__((weak));
void __interceptor_free(void *) __attribute__((weak));
void *__libc_malloc(size_t) __attribute__((weak));
void *__libc_calloc(size_t, size_t) __attribute__((weak));
void *__libc_realloc(void *, size_t) __attribute__((weak));
void __libc_free(void *) __attribute__((weak));
}

namespace {

// Plain thread-local numbers: nothing here may ask the heap for anything.
thread_local bool counting = false;
thread_local int requests = 0;
thread_local int firstFailure = 0;
thread_local int lastFailure = 0;
thread_local int blocksObtained = 0; // less those given back

bool failsNow() noexcept
{
    if (!counting) {
        return false;
    }
    ++requests;
    const bool fails = requests >= firstFailure && requests <= lastFailure;
    if (fails) {
        errno = ENOMEM;
    }
    return fails;
}

int runCounted(int first, int last, const std::function<void()> &call)
{
    firstFailure = first;
    lastFailure = last;
    requests = 0;
    counting = true;
    call();
    counting = false;
    return requests;
}

} // namespace

extern "C" void *malloc(size_t size) noexcept
{
    if (failsNow()) {
        return nullptr;
    }
    ++blocksObtained;
    return __interceptor_malloc != nullptr ? __interceptor_malloc(size) : __libc_malloc(size);
}

extern "C" void *calloc(size_t count, size_t size) noexcept
{
    if (failsNow()) {
        return nullptr;
    }
    ++blocksObtained;
    return __interceptor_calloc != nullptr ? __interceptor_calloc(count, size) : __libc_calloc(count, size);
}

extern "C" void *realloc(void *block, size_t size) noexcept
{
    if (failsNow()) {
        return nullptr;
    }
    blocksObtained += block == nullptr ? 1 : 0;
    return __interceptor_realloc != nullptr ? __interceptor_realloc(block, size)
                                            : __libc_realloc(block, size);
}

extern "C" void free(void *block) noexcept
{
    blocksObtained -= block != nullptr ? 1 : 0;
    __interceptor_free != nullptr ? __interceptor_free(block) : __libc_free(block);
}

bool withHeapFailure(int n, const std::function<void()> &call)
{
    return runCounted(n, n, call) >= n;
}

bool withHeapFailureFrom(int n, const std::function<void()> &call)
{
    return runCounted(n, INT_MAX, call) >= n;
}

void withoutHeap(const std::function<void()> &call)
{
    runCounted(1, INT_MAX, call);
}

int heapRequestsOf(const std::function<void()> &call)
{
    return runCounted(0, 0, call);
}

int heapBlocksKeptBy(const std::function<void()> &call)
{
    const int before = blocksObtained;
    call();
    return blocksObtained - before;
}

HeapFaultPause::HeapFaultPause() noexcept : wasCounting(counting)
{
    counting = false;
}

HeapFaultPause::~HeapFaultPause()
{
    counting = wasCounting;
}
