// Sizes of blocks whose length follows from a caller's text.
#ifndef DOV0610_TEXT_BLOCK_SIZE_H
#define DOV0610_TEXT_BLOCK_SIZE_H

#include <cstddef>
#include <cstdint>

// A size as DOV0_GetStorage takes it. One beyond its range becomes -1, which is refused like every
// other invalid size, instead of a small number that it happens to wrap to.
constexpr int32_t blockSize(size_t bytes) noexcept
{
    return bytes <= INT32_MAX ? static_cast<int32_t>(bytes) : -1;
}
static_assert(blockSize(INT32_MAX) == INT32_MAX && blockSize(size_t{INT32_MAX} + 1) == -1);

#endif
