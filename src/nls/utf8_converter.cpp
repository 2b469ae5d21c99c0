#include "nls/utf8_converter.h"

#include "dov0610.h"

constinit UConverter *UTF8_Converter = nullptr;
constinit FirstUseLock ThisConverterUseLock;

namespace {

constinit int32_t ConverterInitializationLock = 0;

} // namespace

void openUTF8ConverterOnce(const char *sourceFile, int32_t line) noexcept
{
    if (__atomic_load_n(&ConverterInitializationLock, __ATOMIC_ACQUIRE) >= 0) {
        PLT1_InitializeOnce(&ConverterInitializationLock, DOV0_UTF8ConverterInitialization, nullptr,
                            sourceFile, line);
    }
}
