#include "nls/converter_pool.h"

#include "foundation/first_use_lock.h"
#include "nls/codepage_names.h"

#include <cstdlib>

struct IdleConverter {
    IdleConverter *next;
    UConverter *converter;
    int32_t codepage;
};

namespace {

// More than a process uses in turn; what comes back beyond that is closed.
constexpr int32_t LargestPool = 64;

constinit FirstUseLock poolLock;
constinit IdleConverter *pool = nullptr; // last used first
constinit int32_t poolSize = 0;

// Takes an idle converter of the code page out of the pool; null when there is none.
IdleConverter *takeIdle(int32_t codepage) noexcept
{
    poolLock.ensureInitialized();
    const LockHolder holder(poolLock);
    for (IdleConverter **link = &pool; *link != nullptr; link = &(*link)->next) {
        IdleConverter *found = *link;
        if (found->codepage == codepage) {
            *link = found->next;
            --poolSize;
            return found;
        }
    }
    return nullptr;
}

IdleConverter *openConverter(int32_t codepage, UErrorCode &status) noexcept
{
    char name[LNG2_CODEPAGE_NAME_SIZE];
    if (!nameConverterOf(codepage, name)) {
        status = U_FILE_ACCESS_ERROR;
        return nullptr;
    }
    UConverter *converter = ucnv_open(name, &status);
    if (U_FAILURE(status)) {
        return nullptr;
    }
    auto *opened = static_cast<IdleConverter *>(std::malloc(sizeof(IdleConverter)));
    if (opened == nullptr) {
        ucnv_close(converter);
        status = U_MEMORY_ALLOCATION_ERROR;
        return nullptr;
    }
    *opened = {nullptr, converter, codepage};
    return opened;
}

} // namespace

PooledConverter::PooledConverter(int32_t codepage, UErrorCode &status) noexcept
{
    if (U_FAILURE(status)) {
        return;
    }
    taken = takeIdle(codepage);
    if (taken == nullptr) {
        taken = openConverter(codepage, status);
    }
}

PooledConverter::~PooledConverter()
{
    if (taken == nullptr) {
        return;
    }
    {
        const LockHolder holder(poolLock);
        if (poolSize < LargestPool) {
            taken->next = pool;
            pool = taken;
            ++poolSize;
            return;
        }
    }
    ucnv_close(taken->converter);
    std::free(taken);
}

UConverter *PooledConverter::get() const noexcept
{
    return taken != nullptr ? taken->converter : nullptr;
}
