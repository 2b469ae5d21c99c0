// Tells whether a name is that of the local host, with or without its domain and in any case of letters.
#include "foundation/frame.h"

#include <atomic>
#include <cstring>

namespace {

constinit std::atomic<const char *> LocalHost = nullptr;

const char *localHost() noexcept
{
    const char *kept = LocalHost.load(std::memory_order_acquire);
    if (kept == nullptr) {
        kept = DOV0_LocalHostNameString();
        LocalHost.store(kept, std::memory_order_release);
    }
    return kept;
}

bool isEmpty(const char *text) noexcept
{
    return text == nullptr || *text == '\0';
}

// The text is only read when a copy is asked for.
char *upperCaseCopy(const char *text) noexcept
{
    return DOV0_ConvertStringToUpper(const_cast<char *>(text), 1);
}

// Compares two names of one case. A name without a domain stands for itself in any domain, so the other one is cut.
bool denoteOneHost(char *one, char *other) noexcept
{
    if (std::strcmp(one, other) == 0) {
        return true;
    }
    char *dotOfOne = std::strchr(one, '.');
    char *dotOfOther = std::strchr(other, '.');
    if ((dotOfOne == nullptr) == (dotOfOther == nullptr)) {
        return false;
    }
    *(dotOfOne != nullptr ? dotOfOne : dotOfOther) = '\0';
    return std::strcmp(one, other) == 0;
}

} // namespace

TRACE_CONTROL("dov0iohn", DOV0_IsOwnHostName);
extern "C" int32_t DOV0_IsOwnHostName(const char *name) noexcept
{
    const Frame frame(TRC1__EPB_);

    const char *own = localHost();
    if (isEmpty(name) || isEmpty(own)) {
        return frame.leave<int32_t>(0);
    }
    if (std::strcmp(name, own) == 0) {
        return frame.leave<int32_t>(1);
    }
    TRACE(frame, Trace::Detail, "I InHost->%s, OwnHost->%s", name, own);
    char *upperName = upperCaseCopy(name);
    if (upperName == nullptr) {
        return frame.leave<int32_t>(0);
    }
    char *upperOwn = upperCaseCopy(own);
    if (upperOwn == nullptr) {
        DOV0_FreeStorage(&upperName);
        return frame.leave<int32_t>(0);
    }
    TRACE(frame, Trace::Detail, "U InHost->%s, OwnHost->%s", upperName, upperOwn);
    const int32_t result = denoteOneHost(upperName, upperOwn) ? 1 : 0;
    DOV0_FreeStorage(&upperName);
    DOV0_FreeStorage(&upperOwn);
    return frame.leave<int32_t>(result);
}
