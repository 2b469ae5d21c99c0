// Reads records and their parts. Nothing is traced here: what is wrong with a record is reported by its reader.
#include "prodspec/product_spec_record.h"

#include "prodspec/product_spec_table.h"

#include <cstring>

int32_t readLinePiece(FILE *stream, ProductSpecRecord &record) noexcept
{
    int32_t length = 0;
    while (length < ProductSpecRecordLength) {
        const int byte = std::getc(stream);
        if (byte == EOF) {
            break;
        }
        record[length++] = static_cast<char>(byte);
        if (byte == '\n') {
            break;
        }
    }
    record[length] = '\0';
    return length;
}

bool readRecord(FILE *stream, uint32_t number, ProductSpecRecord &record) noexcept
{
    const int32_t length = readLinePiece(stream, record);
    if (length == 0) {
        return false;
    }
    // The key counts every byte of the record, its line end too, and wraps like any 32-bit number.
    DOV0_DecipherMetaRecord(record, static_cast<int32_t>(static_cast<uint32_t>(length) * number));
    return true;
}

char *skipBlanks(char *text) noexcept
{
    return text + std::strspn(text, " ");
}

bool meansNo(const char *value) noexcept
{
    const size_t length = std::strcspn(value, " ");
    const bool beginsWithN = value[0] == 'N' || value[0] == 'n';
    return beginsWithN && (length == 1 || (length == 2 && (value[1] == 'O' || value[1] == 'o')));
}

// The rows that no file can set hold a blank, which no keyword of a record begins with.
int32_t findKeyword(const char *keyword) noexcept
{
    for (int32_t index = 0; index < ProductSpecNameCount; ++index) {
        if (std::strcmp(keyword, ProductSpecNameArray[index]) == 0) {
            return index;
        }
    }
    return NoKeyword;
}

int32_t findDPtype(const char *code) noexcept
{
    for (int32_t type = 0; type < DPtypeCount; ++type) {
        if (std::strcmp(code, DPtypeString[type]) == 0) {
            return type;
        }
    }
    return -1;
}
