// The product specification of the process: its keywords, the values in effect and the texts that they are made
// of. Values are reached by keyword index; dov0610.h names the indexes.
#ifndef DOV0610_PRODSPEC_PRODUCT_SPEC_TABLE_H
#define DOV0610_PRODSPEC_PRODUCT_SPEC_TABLE_H

#include "dov0610.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

// What a product specification file begins with, and what it is called unless the environment says otherwise.
constexpr char DOV_PSF_FileID[] = "//PSF";
constexpr char DOV_PSF_FileName[] = "DOVPSF";

// The keywords by index. A blank stands for a row that no file can set.
constexpr int32_t ProductSpecNameCount = 49;
extern const char *const ProductSpecNameArray[ProductSpecNameCount];

// The type of each data provider is its position.
constexpr int32_t DPtypeCount = 10;
constexpr int32_t DPtypeNone = 9;
extern const char DPtypeString[DPtypeCount][5];

// Yes and no. Whether a value is one of them is told by its address, not by its text; they are shared by all
// keywords, so they are never changed, split or freed.
extern const char ProductSpecSelected[];
extern const char ProductSpecNotSelected[];

// 1 once a product specification is in effect.
extern std::atomic<int32_t> ProductSpecInitialized;

// The table has room for more entries than there are keywords; those stay unset.
constexpr int32_t ProductSpecValueCount = 256;

// A keyword's value, or null when it is unset.
const char *productSpecValue(int32_t index) noexcept;

inline bool isUnset(int32_t index) noexcept
{
    return productSpecValue(index) == nullptr;
}

// The same as a text that may be changed in place, or null when the keyword is unset or holds a shared constant.
char *ownedProductSpecValue(int32_t index) noexcept;

// Sets a keyword to a shared constant, to a block of working storage that the table owns from now on, or to
// null, and frees the text that the table owned for it before.
void setProductSpecValue(int32_t index, const char *value) noexcept;

// Frees the text that the table owned for a keyword and sets it to a copy of another, in this order; a text that is a
// part of the old one is copied first. Without storage the result is false: what was freed is then missing, anything else is as
// it was.
bool copyProductSpecValue(int32_t index, const char *text) noexcept;

// A block of working storage for a text of so many bytes, its terminator not counted; null without storage.
char *getTextStorage(size_t length) noexcept;

// Whether a value is yes or no.
bool isSharedConstant(const char *value) noexcept;

// Whether a keyword is a switch that is unset, rather than set to no, when it is turned off.
bool isUnsetWhenOff(int32_t index) noexcept;

#endif
