// Initialises a condition variable with default attributes.
#include "foundation/frame.h"

TRACE_CONTROL("dov0icnd", DOV0_InitializeCondVar);
extern "C" void DOV0_InitializeCondVar(pthread_cond_t *condVar) noexcept
{
    const Frame frame(TRC1__EPB_);

    // No result is checked; should the attributes fail, zeroed ones are the defaults.
    pthread_condattr_t attributes = {};
    pthread_condattr_init(&attributes);
    if (condVar != nullptr) {
        pthread_cond_init(condVar, &attributes);
    }
    pthread_condattr_destroy(&attributes);
    frame.leave();
}
