// Writes a flow event to the trace: entry, exit, or exit with a value.
#include "foundation/trace_facility.h"
#include "foundation/trace_text.h"

#include <cinttypes>

extern "C" void TRC1_Event(TRC1_EntryBlock *block, int32_t line, int32_t kind, ...)
{
    const int savedErrno = errno;
    TraceText text;
    text.beginLine(*block, line);
    if (kind == TRC1_EVENT_EXIT_VALUE) {
        va_list arguments;
        va_start(arguments, kind);
        const intptr_t value = va_arg(arguments, intptr_t);
        va_end(arguments);
        if (value >= INT32_MIN && value <= INT32_MAX) {
            text.append("exit %" PRIdPTR, value);
        } else {
            text.append("exit 0x%" PRIxPTR, static_cast<uintptr_t>(value));
        }
    } else {
        text.append(kind == TRC1_EVENT_ENTRY ? "entry" : "exit");
    }
    text.endLine();
    TraceFacility().write(text.data(), text.length());
    errno = savedErrno;
}
