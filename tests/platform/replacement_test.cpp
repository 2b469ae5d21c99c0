// A host that defines a platform operation replaces the library's own: here the basic services.
#include "dov0610.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

const char *askedFor = nullptr;
int32_t locksInitialized = 0;
int32_t locksTaken = 0;
int32_t locksReleased = 0;
int32_t threadNumber = 0;

} // namespace

extern "C" const char *PLT1_GetEnv(const char *name, int32_t reserved)
{
    askedFor = reserved == 0 ? name : nullptr;
    return std::strcmp(name, "HOST_VARIABLE") == 0 ? "from the host" : nullptr;
}

extern "C" void PLT1_InitializeLock(PLT1_Lock * /*lock*/)
{
    ++locksInitialized;
}

extern "C" void PLT1_GetLock(PLT1_Lock * /*lock*/)
{
    ++locksTaken;
}

extern "C" void PLT1_ReleaseLock(PLT1_Lock * /*lock*/)
{
    ++locksReleased;
}

extern "C" int32_t PLT1_ThreadID()
{
    return threadNumber;
}

extern "C" void PLT1_GetTime(timespec *timeOut)
{
    *timeOut = {1, 0}; // long ago
}

TEST(Replacement, OfTheEnvironmentIsUsed)
{
    EXPECT_STREQ(DOV0_GetEnv("HOST_VARIABLE", nullptr), "from the host");
    EXPECT_STREQ(askedFor, "HOST_VARIABLE");
}

TEST(Replacement, OfTheLocksIsUsedAndEachIsInitializedOnce)
{
    EXPECT_EQ(DOV0_GetEnv("HOST_OTHER", nullptr), nullptr);
    EXPECT_EQ(DOV0_GetEnv("HOST_OTHER", nullptr), nullptr);
    EXPECT_EQ(locksInitialized, 1);
    EXPECT_EQ(locksTaken, 2);
    EXPECT_EQ(locksReleased, 2);
}

TEST(Replacement, OfTheThreadIdentityIsAskedAtEachCall)
{
    char one[] = "a,b";
    char two[] = "c,d";
    threadNumber = 1;
    EXPECT_STREQ(DOV0_strtok(one, ","), "a");
    threadNumber = 2;
    EXPECT_STREQ(DOV0_strtok(two, ","), "c");
    threadNumber = 1;
    EXPECT_STREQ(DOV0_strtok(nullptr, ","), "b");
    threadNumber = 2;
    EXPECT_STREQ(DOV0_strtok(nullptr, ","), "d");
}

TEST(Replacement, OfTheClockIsUsed)
{
    pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&mutex);
    EXPECT_EQ(DOV0_ConditionTimedWait(&condition, &mutex, 1000), ETIMEDOUT);
    pthread_mutex_unlock(&mutex);
}
