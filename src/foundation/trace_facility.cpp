// Keeps the trace configuration of the process. One lock guards it and the output, so that the lines of one
// message follow each other; it is taken only when something is traced or a level is asked for.
#include "foundation/trace_facility.h"

#include "foundation/frame.h"
#include "foundation/trace_text.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constinit pthread_mutex_t facilityLock = PTHREAD_MUTEX_INITIALIZER;
constinit bool environmentWasRead = false;
constinit bool outputIsSettled = false;
constinit TraceLevelList levelsInForce;
constinit TraceOutput outputInForce;
constinit int32_t generationInForce = 1;

constexpr uint64_t Megabyte = 1U << 20;

void lockFacility() noexcept
{
    pthread_mutex_lock(&facilityLock);
}

void unlockFacility() noexcept
{
    pthread_mutex_unlock(&facilityLock);
}

// Megabytes as an operator writes them: digits only, above 0, and few enough to count bytes in 64 bits.
bool readMegabytes(const char *text, uint64_t &bytes) noexcept
{
    constexpr uint64_t Most = UINT64_MAX / Megabyte;
    uint64_t megabytes = 0;
    for (const char *digit = text; *digit != '\0'; ++digit) {
        if (*digit < '0' || *digit > '9') {
            return false;
        }
        megabytes = megabytes * 10 + static_cast<uint64_t>(*digit - '0');
        if (megabytes > Most) { // at every digit, before the next could pass 64 bits
            return false;
        }
    }
    bytes = megabytes * Megabyte;
    return megabytes > 0;
}

} // namespace

TraceFacility::TraceFacility() noexcept
{
    lockFacility();
    if (!environmentWasRead) {
        environmentWasRead = true;
        // A child that is forked while another thread traces must not inherit a lock that nobody releases.
        pthread_atfork(lockFacility, unlockFacility, unlockFacility);
        readEnvironment();
    }
}

TraceFacility::~TraceFacility()
{
    unlockFacility();
    errno = savedErrno;
}

TRACE_CONTROL("trace_facility", TRC1_Configure);
void TraceFacility::readEnvironment() noexcept
{
    const char *levels = secure_getenv("DOV_TRACE");
    if (levels != nullptr && levels[0] != '\0') {
        settleOutput(); // now: the first message may be one of exhausted storage
    }
    MalformedPieces malformed;
    if (!levelsInForce.read(levels, MalformedPieces::add, &malformed)) {
        report(TRC1__EPB_, __LINE__,
               "*****Error: no storage for the levels of DOV_TRACE. Nothing is traced\n");
    }
    if (!malformed.none()) {
        report(TRC1__EPB_, __LINE__, "*****Error: malformed in DOV_TRACE, ignored: %s\n", malformed.listed());
    }
}

// Opens the file that the environment names. Where nothing is to be traced that waits for a message all the same, so that
// a process without a trace leaves no file and says nothing.
void TraceFacility::settleOutput() noexcept
{
    if (outputIsSettled) {
        return;
    }
    outputIsSettled = true;
    const char *fileName = secure_getenv("DOV_TRACE_FILE");
    if (!outputInForce.open(fileName)) {
        report(TRC1__EPB_, __LINE__,
               "*****Error: DOV_TRACE_FILE <%s> cannot be opened, errno %d. Standard error is used\n",
               fileName, errno);
    }
    readLimit();
}

void TraceFacility::readLimit() noexcept
{
    const char *text = secure_getenv("DOV_TRACE_LIMIT");
    uint64_t limit = 0;
    if (text == nullptr || text[0] == '\0') {
        return;
    }
    if (readMegabytes(text, limit)) {
        outputInForce.setLimit(limit);
    } else {
        report(TRC1__EPB_, __LINE__,
               "*****Error: DOV_TRACE_LIMIT <%s> is not a number of megabytes. Ignored\n", text);
    }
}

// What the facility says of its own configuration.
void TraceFacility::report(TRC1_EntryBlock &block, int32_t line, const char *format, ...) noexcept
{
    TraceText text;
    text.beginLine(block, line);
    va_list arguments;
    va_start(arguments, format);
    text.appendMessage(format, arguments);
    va_end(arguments);
    write(text.data(), text.length());
}

uint32_t TraceFacility::synchronise(TRC1_EntryBlock &block) noexcept
{
    const uint32_t level =
        levelsInForce.levelOf(sourceFileOf(block), block.name != nullptr ? block.name : "");
    __atomic_store_n(&block.level, level, __ATOMIC_RELAXED);
    __atomic_store_n(&block.generation, generationInForce, __ATOMIC_RELEASE);
    __atomic_store_n(&block.generationWord, &generationInForce, __ATOMIC_RELEASE);
    return level;
}

void TraceFacility::write(const char *text, size_t length) noexcept
{
    settleOutput();
    outputInForce.write(text, length);
}

void TraceFacility::take(TraceLevelList &levels, TraceOutput &output) noexcept
{
    levelsInForce.swap(levels);
    outputInForce.swap(output);
    if (!outputIsSettled) { // the file of the environment is not opened any more, its bound stays in force
        outputIsSettled = true;
        readLimit();
    }
    const auto next = static_cast<uint32_t>(generationInForce) + 1;
    // 0 stays the generation that no function has ever seen.
    __atomic_store_n(&generationInForce, static_cast<int32_t>(next != 0 ? next : 1), __ATOMIC_RELEASE);
}

void MalformedPieces::add(const TextPiece &piece, void *collection) noexcept
{
    auto &pieces = *static_cast<MalformedPieces *>(collection);
    const size_t room = sizeof pieces.text - pieces.used;
    const int written =
        std::snprintf(pieces.text + pieces.used, room, "%s<%.*s>", pieces.used > 0 ? " " : "",
                      static_cast<int>(piece.length < room ? piece.length : room), piece.start);
    pieces.used += static_cast<size_t>(written) < room ? static_cast<size_t>(written) : room - 1;
}
