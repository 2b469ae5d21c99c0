// The one converter for UTF-8 that all threads share: opened once, used under its lock, never closed.
#ifndef DOV0610_NLS_UTF8_CONVERTER_H
#define DOV0610_NLS_UTF8_CONVERTER_H

#include "foundation/first_use_lock.h"

#include <cstdint>
#include <unicode/ucnv.h>

// Null until opened, or when opening failed. Lock held.
extern UConverter *UTF8_Converter;

// A converter serves one thread at a time.
extern FirstUseLock ThisConverterUseLock;

// Opens the converter on the first call in the process. The caller names itself for the trace.
void openUTF8ConverterOnce(const char *sourceFile, int32_t line) noexcept;

#endif
