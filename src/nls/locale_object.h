// Makes the locale objects that the language support gives out. Each is private to its user, who may write to it.
#ifndef DOV0610_NLS_LOCALE_OBJECT_H
#define DOV0610_NLS_LOCALE_OBJECT_H

#include "dov0610_platform.h"

// A new locale object of this name without a code page; null when there is no storage. A longer name is cut.
LNG2_Locale *newLocaleObject(const char *name, int32_t *status) noexcept;

// The Windows code page of a locale's language; UTF-8 where Windows has none.
int32_t windowsCodepageOf(const char *localeName) noexcept;

#endif
