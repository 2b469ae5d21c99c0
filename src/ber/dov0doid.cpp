// Decodes the content of an object identifier field to an array of sub-identifiers.
#include "ber/ber_length.h"
#include "foundation/frame.h"

#include <cstdio>

namespace {

constexpr int32_t ArraySize = DOV0_OID_LARGEST_COUNT * sizeof(uint32_t);

// Bytes of a sub-identifier that say that more follow: five bytes in all hold 32 bits.
constexpr int32_t MostContinuations = 4;

// Every element is followed by a dot here, the last one too.
void traceElements(const Frame &frame, const uint32_t *array, int32_t count) noexcept
{
    constexpr int32_t Size = DOV0_OID_TEXT_SIZE;
    auto *text = static_cast<char *>(DOV0_GetStorage(Size));
    if (text == nullptr) {
        TRACE(frame, Trace::Detail, "OID->%s", "...");
        return;
    }
    int32_t used = 0;
    for (int32_t i = 0; i < count && used < Size - 1; ++i) {
        used += std::snprintf(text + used, static_cast<size_t>(Size - used), "%d.",
                              static_cast<int32_t>(array[i]));
    }
    TRACE(frame, Trace::Detail, "OID->%s", text);
    DOV0_FreeStorage(&text);
}

} // namespace

TRACE_CONTROL("dov0doid", DOV0_DecodeOIDfromBER);
extern "C" uint32_t *DOV0_DecodeOIDfromBER(const unsigned char *content, int32_t length,
                                           int32_t *countOut) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (countOut != nullptr) {
        *countOut = 0;
    }
    if (content == nullptr || length < 1 || countOut == nullptr) {
        TRACE(frame, Trace::Error, "*****OID content @%p length %d invalid\n",
              static_cast<const void *>(content), length);
        return frame.leave<uint32_t *>(nullptr);
    }
    auto *array = static_cast<uint32_t *>(DOV0_GetStorage(ArraySize));
    if (array == nullptr) {
        return frame.leave(array);
    }
    if (length > DOV0_OID_LARGEST_CONTENT) {
        TRACE_ALWAYS(frame, "*****unsupported too large length field %d, for OIDlength\n", length);
        if (static_cast<uint32_t>(length) <= LargestTracedValue) {
            DUMP_ALWAYS(frame, content, length, "%02.2X");
        }
        return frame.leave(array);
    }
    // The first byte is taken whole, whatever its highest bit says.
    const uint32_t first = content[0] < 80 ? content[0] / 40 : 2;
    array[0] = first;
    array[1] = content[0] - 40 * first;
    int32_t count = 2;
    const unsigned char *next = content + 1;
    const unsigned char *const end = content + length;
    while (next < end) {
        int32_t continuations = 0;
        while (next + continuations < end && (next[continuations] & 0x80) != 0) {
            ++continuations;
        }
        if (continuations > MostContinuations || next + continuations == end) {
            DOV0_FreeStorage(&array);
            TRACE(frame, Trace::Error, "*****unsupported too large length field %d\n", continuations);
            DUMP(frame, Trace::Error, next, static_cast<int32_t>(end - next), "%02.2X");
            return frame.leave(array);
        }
        uint32_t element = 0;
        for (int32_t i = 0; i <= continuations; ++i) {
            element = element << 7 | (*next++ & 0x7FU);
        }
        array[count++] = element;
    }
    *countOut = count;
    if (frame.traces(Trace::Detail)) {
        traceElements(frame, array, count);
    }
    return frame.leave(array);
}
