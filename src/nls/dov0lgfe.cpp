// Finds a text file's encoding by its byte order mark.
#include "foundation/frame.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <unicode/ucnv.h>

namespace {

constexpr size_t BytesRead = 20; // more than the longest mark

} // namespace

TRACE_CONTROL("dov0lgfe", DOV0_LNG2_GetFileEncoding);
extern "C" const char *DOV0_LNG2_GetFileEncoding(const char *path, int32_t *markLength,
                                                 unsigned char *mark) noexcept
{
    const Frame frame(TRC1__EPB_);

    unsigned char bom[DOV0_BYTE_ORDER_MARK_SIZE] = {};
    if (markLength != nullptr) {
        *markLength = 0;
    }
    if (mark != nullptr) {
        std::memcpy(mark, bom, sizeof bom);
    }
    std::FILE *file = path != nullptr ? std::fopen(path, "rb") : nullptr;
    if (file == nullptr) {
        return frame.leave<const char *>(nullptr);
    }
    char buffer[BytesRead + 1] = {};
    const size_t count = std::fread(buffer, 1, BytesRead, file);
    if (count == 0) {
        return frame.leave<const char *>(nullptr); // the stream of a file without content stays open
    }
    std::fclose(file);
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    const char *encoding = ucnv_detectUnicodeSignature(buffer, static_cast<int32_t>(count), &length, &status);
    if (U_FAILURE(status)) {
        return frame.leave<const char *>(nullptr);
    }
    if (encoding != nullptr) {
        std::memcpy(bom, buffer, std::min<size_t>(static_cast<size_t>(length), sizeof bom));
        if (mark != nullptr) {
            std::memcpy(mark, bom, sizeof bom);
        }
        if (markLength != nullptr) {
            *markLength = length;
        }
    }
    TRACE(frame, Trace::Detail, "Encoding is %s  \n", shown(encoding));
    TRACE(frame, Trace::Detail, "Byte order mark length is %d \n", length);
    TRACE(frame, Trace::Detail, "bom[0] is %x \n", bom[0]);
    TRACE(frame, Trace::Detail, "bom[1] is %x \n", bom[1]);
    TRACE(frame, Trace::Detail, "bom[2] is %x \n", bom[2]);
    TRACE(frame, Trace::Detail, "bom[3] is %x \n", bom[3]);
    return frame.leave(encoding);
}
