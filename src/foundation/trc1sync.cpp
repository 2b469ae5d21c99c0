// Gives a function the trace level that applies to it now.
#include "foundation/trace_facility.h"

extern "C" uint32_t TRC1_Sync(TRC1_EntryBlock *block)
{
    return TraceFacility().synchronise(*block);
}
