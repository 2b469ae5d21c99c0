// The records of a product specification file, and the rules by which their text is taken apart.
#ifndef DOV0610_PRODSPEC_PRODUCT_SPEC_RECORD_H
#define DOV0610_PRODSPEC_PRODUCT_SPEC_RECORD_H

#include <cstdint>
#include <cstdio>

// A record is a line with its end, or the next part of a line that is longer than this.
constexpr int32_t ProductSpecRecordLength = 511;
using ProductSpecRecord = char[ProductSpecRecordLength + 1];

// Reads a record as it stands in the file. Returns the number of bytes read, those behind a zero byte included; 0 at
// the end of the file or when it cannot be read.
int32_t readLinePiece(FILE *stream, ProductSpecRecord &record) noexcept;

// Reads a record and deciphers it. Records are numbered from 1 behind the first piece of the file, and the number is
// part of the key. False at the end of the file.
bool readRecord(FILE *stream, uint32_t number, ProductSpecRecord &record) noexcept;

// The text from its first character that is no blank.
char *skipBlanks(char *text) noexcept;

// Whether the first word of a value is "NO" or "N", in any case.
bool meansNo(const char *value) noexcept;

// What no keyword has for an index.
constexpr int32_t NoKeyword = -1;

// The index of a keyword in upper case, or NoKeyword.
int32_t findKeyword(const char *keyword) noexcept;

// The type of a data provider by its code in upper case, or -1.
int32_t findDPtype(const char *code) noexcept;

#endif
