// Copies the name of the operating system. It answers 1 whatever happens, on purpose.
#include "foundation/frame.h"
#include "net/system_name_field.h"

#include <cerrno>

TRACE_CONTROL("dov0glhi", DOV0_GetLocalHostInfo);
extern "C" int32_t DOV0_GetLocalHostInfo(char *out) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (out == nullptr) {
        TRACE(frame, Trace::Error, "*****Error: No area for the system name\n");
        return frame.leave<int32_t>(1);
    }
    utsname names = {};
    if (uname(&names) < 0) {
        const int error = errno;
        TRACE(frame, Trace::Error, "uname failed, errno %d\n", error);
        return frame.leave<int32_t>(1);
    }
    const SystemNameField systemName(names.sysname);
    TRACE(frame, Trace::Detail, "utsName.sysname  [%s]\n", systemName.text());
    TRACE(frame, Trace::Detail, "utsName.nodename [%s]\n", SystemNameField(names.nodename).text());
    TRACE(frame, Trace::Detail, "utsName.release  [%s]\n", SystemNameField(names.release).text());
    TRACE(frame, Trace::Detail, "utsName.version  [%s]\n", SystemNameField(names.version).text());
    TRACE(frame, Trace::Detail, "utsName.machine  [%s]\n", SystemNameField(names.machine).text());
    systemName.copyUnterminated(out, DOV0_HOST_INFO_SIZE - 1);
    return frame.leave<int32_t>(1);
}
