// Tells whether data is pure 7-bit ASCII.
#include "foundation/frame.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int32_t LongestDump = 64;

// Eight bytes are tested at a time, and what is left over one by one.
bool isPureASCII(const unsigned char *bytes, size_t length) noexcept
{
    const unsigned char *const end = bytes + length;
    for (uint64_t eight = 0; static_cast<size_t>(end - bytes) >= sizeof eight; bytes += sizeof eight) {
        std::memcpy(&eight, bytes, sizeof eight);
        if ((eight & 0x8080808080808080U) != 0) {
            return false;
        }
    }
    return std::all_of(bytes, end, [](unsigned char byte) { return byte < 0x80; });
}

} // namespace

TRACE_CONTROL("dov0isas", DOV0_IsSourceASCII);
extern "C" int32_t DOV0_IsSourceASCII(const void *buffer, int32_t length) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (buffer == nullptr || length < 1) {
        return frame.leave<int32_t>(1);
    }
    DUMP(frame, Trace::Dump, buffer, std::min(length, LongestDump), "%02.2X");
    const bool pure = isPureASCII(static_cast<const unsigned char *>(buffer), static_cast<size_t>(length));
    return frame.leave<int32_t>(pure ? 1 : 0);
}
