// Copies the node name that the system has for this machine. It answers 1 whatever happens, on purpose.
#include "foundation/frame.h"
#include "net/system_name_field.h"

#include <cerrno>

TRACE_CONTROL("dov0glcn", DOV0_GetLocalComputerName);
extern "C" int32_t DOV0_GetLocalComputerName(char *out) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (out == nullptr) {
        TRACE(frame, Trace::Error, "*****Error: No area for the computer name\n");
        return frame.leave<int32_t>(1);
    }
    utsname names = {};
    if (uname(&names) < 0) {
        const int error = errno;
        TRACE(frame, Trace::Error, "uname failed, errno %d\n", error);
        return frame.leave<int32_t>(1);
    }
    const SystemNameField nodeName(names.nodename);
    TRACE(frame, Trace::Detail, "uname returned utsName.nodename [%s]\n", nodeName.text());
    nodeName.copyUnterminated(out, DOV0_COMPUTER_NAME_SIZE - 1);
    return frame.leave<int32_t>(1);
}
