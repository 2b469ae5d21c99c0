// Reads a line of a text file in any encoding, if wanted as UTF-8.
#include "foundation/frame.h"
#include "nls/encoding_type.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

constexpr int32_t ChunkSize = 64; // bytes that are read at a time
constexpr int32_t LargestUnit = 4;

struct Newline {
    const char *bytes;
    int32_t width;
};

// A type without a byte order is read as big-endian.
Newline newlineOf(const Frame &frame, uint16_t type) noexcept
{
    if (!isFixedWidth(type)) {
        TRACE(frame, Trace::Detail, "Unknown UTF encoding type %d supplied.  Using single char newline\n",
              type);
        return {"\n", 1};
    }
    const int32_t width = unitWidth(type);
    if ((type & DOV0_UTF_LITTLE_ENDIAN) != 0) {
        return {"\n\0\0\0", width};
    }
    return {width == 2 ? "\0\n" : "\0\0\0\n", width};
}

int32_t chunkSizeFor(const Frame &frame, int32_t readBufferSize) noexcept
{
    if (readBufferSize >= ChunkSize) {
        return ChunkSize;
    }
    const int32_t readSize = std::max(readBufferSize, 0) / LargestUnit * LargestUnit;
    TRACE(frame, Trace::Detail, "readSize is bigger than readBufferSize, resetting readSize to %d\n",
          readSize);
    return readSize;
}

// Gives the stream back what the last read took beyond the line. The distance is that of a line within the first
// chunk; behind a longer one it is too short, or even leads forward.
void giveBack(const Frame &frame, FILE *stream, int32_t distance) noexcept
{
    if (distance == 0) {
        return;
    }
    const off_t from = ftello(stream);
    const off_t to = from - distance;
    TRACE(frame, Trace::Detail, "Moving file descriptor from %d to %d\n", static_cast<int32_t>(from),
          static_cast<int32_t>(to));
    fseeko(stream, to, SEEK_SET);
}

// Reads up to and with the next newline unit, as long as whole chunks fit. Returns the bytes of the line.
int32_t readUnits(const Frame &frame, char *buffer, int32_t readBufferSize, FILE *stream,
                  uint16_t type) noexcept
{
    const int32_t readSize = chunkSizeFor(frame, readBufferSize);
    const Newline newline = newlineOf(frame, type);
    int32_t count = 0;
    while (count <= readBufferSize - readSize) {
        char *chunk = buffer + count;
        const auto bytesRead =
            static_cast<int32_t>(std::fread(chunk, 1, static_cast<size_t>(readSize), stream));
        if (bytesRead == 0) { // also after an error, which ends the line like the end of the file
            TRACE(frame, Trace::Detail, "Reached end of file\n");
            break;
        }
        if (frame.traces(Trace::Dump)) {
            TRACE_ALWAYS(frame, "Read %d bytes\n", bytesRead);
            DUMP_ALWAYS(frame, chunk, bytesRead, "%c");
        }
        const char *found = DOV0_FindChar(chunk, bytesRead, newline.bytes, type, 1);
        if (found != nullptr) {
            count = static_cast<int32_t>(found - buffer) + newline.width;
            TRACE(frame, Trace::Detail, "Newline found, readCount is now %d\n", count);
            giveBack(frame, stream, bytesRead - count);
            break;
        }
        count += bytesRead;
    }
    if (count != 0 && frame.traces(Trace::Dump)) {
        TRACE_ALWAYS(frame, "Setting string to readBuffer.\n");
        DUMP_ALWAYS(frame, buffer, count, "%c");
    }
    return count;
}

// Replaces the line by its translation to UTF-8, which zeros terminate unless it fills the buffer. False when it
// cannot be translated.
bool convertLine(const Frame &frame, char *buffer, int32_t readBufferSize, int32_t count,
                 const char *encoding) noexcept
{
    TRACE(frame, Trace::Detail, "Converting string buffer from %s to UTF-8.\n", encoding);
    char converted[DOV0_LINE_CONVERSION_SIZE] = {};
    const int32_t capacity = std::min<int32_t>(readBufferSize, sizeof converted);
    int32_t status = 0;
    const int32_t codepage = LNG2_GetCodepageId(encoding, &status);
    int32_t consumed = 0;
    LNG2_TranslateString(LNG2_CODEPAGE_UTF8, converted, capacity, codepage, buffer, count, &consumed, 0,
                         &status);
    if (status == LNG2_STATUS_BUFFER_OVERFLOW) {
        TRACE(frame, Trace::Error,
              "Error: A buffer overflow occurred while converting the string %.*s from %s to UTF-8. The "
              "truncated "
              "converted string %.*s will be used\n",
              count, buffer, encoding, capacity, converted);
    } else if (status > 0) {
        TRACE(frame, Trace::Error, "Error: Unable to convert string from %s to UTF-8. LNG2 Error: %d\n",
              encoding, status);
        return false;
    }
    std::memcpy(buffer, converted, static_cast<size_t>(capacity));
    return true;
}

} // namespace

TRACE_CONTROL("dov0fget", DOV0_Fgets);
extern "C" char *DOV0_Fgets(char *buffer, int32_t readBufferSize, FILE *stream, int32_t *byteCount,
                            const char *encoding, uint16_t type, int32_t convertToUTF8) noexcept
{
    const Frame frame(TRC1__EPB_);

    TRACE(frame, Trace::Detail, "readBufferSize = %d, encoding = %s, convertToUTF8 = %d\n", readBufferSize,
          shown(encoding), convertToUTF8);
    char *result = nullptr;
    int32_t count = 0;
    if (buffer == nullptr || stream == nullptr) {
        // nothing can be read
    } else if (type == DOV0_UTF_BYTES || encoding == nullptr) {
        TRACE(frame, Trace::Detail, "Using fgets() to get string from file.\n");
        result = std::fgets(buffer, readBufferSize, stream);
        count = result != nullptr ? static_cast<int32_t>(std::strlen(result)) : 0;
    } else {
        count = readUnits(frame, buffer, readBufferSize, stream, type);
        result = count != 0 ? buffer : nullptr;
    }
    if (convertToUTF8 != 0 && result != nullptr && encoding != nullptr &&
        std::strcmp(encoding, "UTF-8") != 0 && !convertLine(frame, buffer, readBufferSize, count, encoding)) {
        result = nullptr;
    }
    if (byteCount != nullptr) {
        *byteCount = count; // what was read from the file, also when it was converted
    }
    return frame.leave(result);
}
