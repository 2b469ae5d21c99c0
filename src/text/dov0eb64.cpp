// Encodes a text into Base64.
#include "foundation/frame.h"
#include "text/base64_work_buffer.h"

#include <algorithm>
#include <cstring>

TRACE_CONTROL("dov0eb64", DOV0_EncodeBase64);
extern "C" int32_t DOV0_EncodeBase64(const char *input, char **output) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (input == nullptr || *input == '\0') {
        TRACE(frame, Trace::Error, "No input string was provided");
        return frame.leave<int32_t>(0);
    }
    if (output == nullptr) {
        TRACE(frame, Trace::Error, "*****Address of Base64 output is NULL\n");
        return frame.leave<int32_t>(0);
    }
    TRACE(frame, Trace::Detail, "Converting input string <%s> to Base64", input);
    const size_t length = std::strlen(input);
    const size_t resultSize = DOV0_BASE64_ENCODED_SIZE(length);
    auto *buffer = static_cast<char *>(DOV0_GetStorage(base64WorkBufferSize(resultSize)));
    if (buffer == nullptr) {
        return frame.leave<int32_t>(0);
    }
    auto *group = static_cast<DOV0_Base64Group *>(DOV0_GetStorage(sizeof(DOV0_Base64Group)));
    if (group == nullptr) {
        DOV0_FreeStorage(&buffer);
        return frame.leave<int32_t>(0);
    }

    char *target = buffer;
    for (size_t position = 0; position < length; position += 3) {
        const size_t count = std::min<size_t>(3, length - position);
        *group = {};
        std::memcpy(group->data, input + position, count);
        group->count = static_cast<int32_t>(count);
        DOV0_EncodeToBuffer(group, target);
        target += 4;
    }
    if (length % 3 != 0) {
        TRACE(frame, Trace::Detail, "pEncodeBuffer <%s>", buffer);
    }

    if (*output == nullptr) {
        *output = static_cast<char *>(DOV0_GetStorage(blockSize(resultSize)));
    }
    const int32_t done = *output != nullptr ? 1 : 0;
    if (done != 0) {
        std::memcpy(*output, buffer, resultSize);
    }
    DOV0_FreeStorage(&buffer);
    DOV0_FreeStorage(&group);
    return frame.leave<int32_t>(done);
}
