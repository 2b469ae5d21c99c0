// Converters that were opened before and wait for their next use. A converter serves one thread at a time, so each
// user takes one out of the pool and puts it back.
#ifndef DOV0610_NLS_CONVERTER_POOL_H
#define DOV0610_NLS_CONVERTER_POOL_H

#include <cstdint>
#include <unicode/ucnv.h>

struct IdleConverter;

// A converter of a code page for the length of a block.
class PooledConverter {
public:
    // Nothing is done when status is a failure already; it becomes U_FILE_ACCESS_ERROR for an unknown code page.
    PooledConverter(int32_t codepage, UErrorCode &status) noexcept;
    ~PooledConverter();
    PooledConverter(const PooledConverter &) = delete;
    PooledConverter &operator=(const PooledConverter &) = delete;

    // Null after a failure.
    UConverter *get() const noexcept;

private:
    IdleConverter *taken = nullptr;
};

#endif
