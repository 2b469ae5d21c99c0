// Writes one message to the trace.
#include "foundation/trace_facility.h"
#include "foundation/trace_text.h"

extern "C" void TRC1_Printf(TRC1_EntryBlock *block, int32_t line, const char *format, ...)
{
    const int savedErrno = errno;
    TraceText text;
    text.beginLine(*block, line);
    va_list arguments;
    va_start(arguments, format);
    errno = savedErrno; // for %m
    text.appendMessage(format, arguments);
    va_end(arguments);
    TraceFacility().write(text.data(), text.length());
    errno = savedErrno;
}
