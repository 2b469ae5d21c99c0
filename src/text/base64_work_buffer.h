// The buffer in which a result of the Base64 conversions is built before it is copied to the caller.
#ifndef DOV0610_TEXT_BASE64_WORK_BUFFER_H
#define DOV0610_TEXT_BASE64_WORK_BUFFER_H

#include "text/block_size.h"

#include <algorithm>

// 512 bytes, and more only for a result that needs more.
inline int32_t base64WorkBufferSize(size_t resultSize) noexcept
{
    return blockSize(std::max<size_t>(512, resultSize));
}

#endif
