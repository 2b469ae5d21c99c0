// Runs an input at both trace levels, with the recorder of the tests in place of the trace facility and working storage
// that can run out.
#include "fuzz_target.h"

#include "support/heap_faults.h"

#include <dlfcn.h>
#include <utility>

namespace {

// Requests for working storage until one fails; 0 when none is to fail.
int requestsToFailure = 0;
bool aRequestFailed = false;

} // namespace

void checkEventPlace(const TRC1_EntryBlock & /*block*/, int32_t /*line*/, int32_t /*kind*/) {}

void failStorageRequest(int number)
{
    requestsToFailure = number;
}

namespace {

void runAt(uint32_t level, const uint8_t *data, size_t size)
{
    FuzzInput input(data, size, level);
    setTraceLevel(level);
    failStorageRequest(input.byte());
    aRequestFailed = false;
    fuzzOneInput(input);
    failStorageRequest(0);
    takeTrace();
}

} // namespace

// Stands in for the library's own, also within the library.
extern "C" void *DOV0_GetStorage(int32_t size) noexcept
{
    if (requestsToFailure > 0 && --requestsToFailure == 0) {
        aRequestFailed = true;
        return nullptr;
    }
    static const auto real =
        reinterpret_cast<decltype(&DOV0_GetStorage)>(dlsym(RTLD_NEXT, "DOV0_GetStorage"));
    return real(size);
}

// Nothing counts the heap requests of the recorder here.
HeapFaultPause::HeapFaultPause() noexcept : wasCounting(false) {}
HeapFaultPause::~HeapFaultPause()
{
    static_cast<void>(wasCounting);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    runAt(0, data, size);
    runAt(Trace::All, data, size);
    return 0;
}

bool takeStorageFailure()
{
    return std::exchange(aRequestFailed, false);
}
