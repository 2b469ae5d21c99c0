// Opens the converter for UTF-8 that all threads share; run once, by the first operation that needs it.
#include "foundation/frame.h"
#include "nls/utf8_converter.h"

TRACE_CONTROL("dov0ucin", DOV0_UTF8ConverterInitialization);
extern "C" void DOV0_UTF8ConverterInitialization(void * /*ignored*/) noexcept
{
    const Frame frame(TRC1__EPB_);

    ThisConverterUseLock.ensureInitialized();
    UErrorCode status = U_ZERO_ERROR;
    UConverter *opened = ucnv_open("UTF8", &status);
    if (U_FAILURE(status)) {
        TRACE(frame, Trace::Error, "*ERROR: Create standard converter failed, Status %d <%s>\n", status,
              u_errorName(status));
        return frame.leave();
    }
    {
        // A direct call may come when the converter is in use already.
        const LockHolder holder(ThisConverterUseLock);
        if (UTF8_Converter != nullptr) {
            ucnv_close(UTF8_Converter);
        }
        UTF8_Converter = opened;
    }
    TRACE(frame, Trace::Detail, "*INFO: Standard code converter created\n");
    frame.leave();
}
