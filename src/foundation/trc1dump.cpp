// Writes memory to the trace as a dump.
#include "foundation/trace_facility.h"
#include "foundation/trace_text.h"

#include <cstdio>

namespace {

constexpr int32_t BytesPerLine = 16;

void appendItem(TraceText &text, const char *itemFormat, unsigned char byte) noexcept
{
    char item[64];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::snprintf(item, sizeof item, itemFormat, static_cast<unsigned int>(byte));
#pragma GCC diagnostic pop
    for (char *c = item; *c != '\0'; ++c) {
        const auto character = static_cast<unsigned char>(*c);
        *c = character < 0x20 || character == 0x7F ? '.' : *c;
    }
    text.append(" %s", item);
}

} // namespace

extern "C" void TRC1_Dump(TRC1_EntryBlock *block, int32_t line, const void *address, int32_t length,
                          const char *itemFormat)
{
    const int savedErrno = errno;
    {
        TraceText text;
        const auto *bytes = static_cast<const unsigned char *>(address);
        if (bytes == nullptr || length < 1) {
            text.beginLine(*block, line);
            text.append("nothing to dump");
            text.endLine();
        } else {
            for (int32_t offset = 0;; offset += BytesPerLine) {
                text.beginLine(*block, line);
                text.append("%04X:", static_cast<unsigned int>(offset));
                const int32_t left = length - offset;
                for (int32_t i = 0; i < left && i < BytesPerLine; ++i) {
                    appendItem(text, itemFormat, bytes[offset + i]);
                }
                text.endLine();
                if (left <= BytesPerLine) {
                    break;
                }
            }
        }
        TraceFacility().write(text.data(), text.length());
    }
    errno = savedErrno;
}
