// Reads a line of a file that has to be UTF-8, without the byte order mark that may stand before it.
#include "foundation/frame.h"

#include <cstdio>
#include <cstring>
#include <unicode/ucnv.h>

namespace {

constexpr size_t UTF8MarkLength = 3;

const char *detectEncoding(const char *buffer, int32_t size) noexcept
{
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    const char *encoding = ucnv_detectUnicodeSignature(buffer, size, &length, &status);
    return U_SUCCESS(status) ? encoding : nullptr;
}

} // namespace

TRACE_CONTROL("dov0fgts", DOV0_fgets);
extern "C" char *DOV0_fgets(char *buffer, int32_t size, FILE *stream) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (buffer == nullptr || stream == nullptr || size < 1 || std::fgets(buffer, size, stream) == nullptr) {
        return frame.leave<char *>(nullptr);
    }
    TRACE(frame, Trace::Dump, "Read: <%s>\n", buffer);
    char *record = buffer;
    const char *encoding = detectEncoding(buffer, size); // of the whole buffer, behind the record too
    if (encoding != nullptr && std::strcmp(encoding, "UTF-8") == 0) {
        TRACE(frame, Trace::Detail, "Skipping UTF-8 BOM at start of record\n");
        std::memmove(buffer, buffer + UTF8MarkLength, std::strlen(buffer + UTF8MarkLength) + 1);
    } else if (encoding != nullptr) {
        TRACE(frame, Trace::Error, "*** File record using %s encoding, only UTF-8 is supported\n", encoding);
        record = nullptr;
    }
    if (record != nullptr) {
        TRACE(frame, Trace::Detail, "Returning with data record <%s>\n", record);
    } else {
        TRACE(frame, Trace::Detail, "Returning with data record pointer = NULL\n");
    }
    return frame.leave(record);
}
