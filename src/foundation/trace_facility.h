// The state of the trace facility: the levels in force, the output, and the generation that tells
// every function when to ask for its level again.
#ifndef DOV0610_FOUNDATION_TRACE_FACILITY_H
#define DOV0610_FOUNDATION_TRACE_FACILITY_H

#include "dov0610_platform.h"
#include "foundation/trace_level_list.h"
#include "foundation/trace_output.h"

#include <cerrno>
#include <pthread.h>

// Puts off the cancellation of the calling thread for the length of a block, so that no write to the trace ends it while
// it holds a lock.
class CancellationPause {
public:
    CancellationPause() noexcept { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &savedState); }
    ~CancellationPause() { pthread_setcancelstate(savedState, nullptr); }
    CancellationPause(const CancellationPause &) = delete;
    CancellationPause &operator=(const CancellationPause &) = delete;

private:
    int savedState = PTHREAD_CANCEL_ENABLE;
};

// Holds the facility for the length of a block; the first holder reads the environment. What the system's
// functions leave in errno meanwhile is undone, since tracing must not change what its caller is about to
// report.
class TraceFacility {
public:
    TraceFacility() noexcept;
    ~TraceFacility();
    TraceFacility(const TraceFacility &) = delete;
    TraceFacility &operator=(const TraceFacility &) = delete;

    // Stores the level that applies to the block's function and the current generation, in this order.
    uint32_t synchronise(TRC1_EntryBlock &block) noexcept;

    // Writes a message whole.
    void write(const char *text, size_t length) noexcept;

    // Exchanges levels and output, and advances the generation.
    void take(TraceLevelList &levels, TraceOutput &output) noexcept;

private:
    void readEnvironment() noexcept;
    void settleOutput() noexcept;
    void readLimit() noexcept;
    void report(TRC1_EntryBlock &block, int32_t line, const char *format, ...) noexcept
        DOV0_PRINTF_FORMAT(4, 5);

    const int savedErrno = errno;
    const CancellationPause pause;
};

// Collects the malformed pieces of a level list for one report.
class MalformedPieces {
public:
    static void add(const TextPiece &piece, void *collection) noexcept;

    bool none() const noexcept { return used == 0; }

    // Every piece in angle brackets, the list cut at the size of the buffer.
    const char *listed() const noexcept { return text; }

private:
    char text[512] = "";
    size_t used = 0;
};

#endif
