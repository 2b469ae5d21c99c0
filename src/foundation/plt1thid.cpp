// Identifies the calling thread by its kernel thread number, which is never 0. The number is kept per
// thread, since asking the kernel costs far more than a tokenizer step; after a fork the one thread of
// the child has a new number and asks again.
#include "dov0610_platform.h"

#include <unistd.h>

namespace {

constinit thread_local int32_t ownNumber = 0;
constinit pthread_once_t forkHandlerControl = PTHREAD_ONCE_INIT;

void forgetOwnNumber() noexcept
{
    ownNumber = 0;
}

void installForkHandler() noexcept
{
    pthread_atfork(nullptr, nullptr, forgetOwnNumber);
}

} // namespace

extern "C" int32_t PLT1_ThreadID(void)
{
    if (ownNumber == 0) {
        pthread_once(&forkHandlerControl, installForkHandler);
        ownNumber = gettid();
    }
    return ownNumber;
}
