// Changes trace levels and output while the process runs.
#include "foundation/frame.h"
#include "foundation/trace_facility.h"

TRACE_CONTROL("trc1cnfg", TRC1_Configure);
extern "C" int32_t TRC1_Configure(const char *levels, const char *file)
{
    const int savedErrno = errno;
    const CancellationPause pause;
    TraceLevelList newLevels;
    TraceOutput newOutput;
    MalformedPieces malformed;
    int32_t result = -1;

    if (!newLevels.read(levels, MalformedPieces::add, &malformed)) {
        TRACE_ALWAYS(TraceLevel(TRC1__EPB_),
                     "*****Error: no storage for the trace levels. Nothing is changed\n");
    } else if (!malformed.none()) {
        TRACE_ALWAYS(TraceLevel(TRC1__EPB_), "*****Error: malformed trace levels %s. Nothing is changed\n",
                     malformed.listed());
    } else if (!newOutput.open(file)) {
        TRACE_ALWAYS(TraceLevel(TRC1__EPB_),
                     "*****Error: trace file <%s> cannot be opened, errno %d. Nothing is changed\n", file,
                     errno);
    } else {
        TraceFacility().take(newLevels, newOutput);
        result = 0;
    }
    newLevels.clear();
    newOutput.close();
    errno = savedErrno;
    return result;
}
