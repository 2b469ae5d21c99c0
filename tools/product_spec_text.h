// Product specification files as bytes: how they are cut into records, ciphered, read and replaced.
#ifndef DOV0610_TOOLS_PRODUCT_SPEC_TEXT_H
#define DOV0610_TOOLS_PRODUCT_SPEC_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

constexpr std::string_view FileID = "//PSF";

// The library reads no more than this at a time, the line end included. The rest of a longer line is another record.
constexpr size_t RecordLength = 511;

struct Piece {
    std::string bytes; // its line end included
    size_t line;       // of the file, from 1
    bool continues;    // the line of the piece before
};

// Cuts a file as the library does. The first piece is the identification, the others are the records 1, 2, ...
std::vector<Piece> piecesOf(const std::string &contents);

// A record, its line end included, under its number.
std::string enciphered(std::string record, uint32_t number);
std::string deciphered(std::string record, uint32_t number);

// Both throw std::runtime_error that names the file.
std::string readFile(const std::string &name);

// Puts new contents in the place of a file at once: whatever fails, the file is what it was.
void replaceFile(const std::string &name, const std::string &contents);

#endif
