// Brings an integer between network order and the host's: on a little-endian host its bytes are reversed.
#include "foundation/frame.h"

#include <algorithm>
#include <bit>

TRACE_CONTROL("dov0ckie", DOV0_CheckIntegerEndian);
extern "C" void DOV0_CheckIntegerEndian(void *integer, int32_t size) noexcept
{
    const Frame frame(TRC1__EPB_);

    const bool needsReversal = std::endian::native == std::endian::little;
    if (needsReversal && integer != nullptr && (size == 2 || size == 4)) {
        auto *bytes = static_cast<unsigned char *>(integer);
        std::reverse(bytes, bytes + size);
    }
    frame.leave();
}
