// A host that defines a platform operation replaces the library's own: here the basic services.
#include "dov0610.h"

#include <atomic>
#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>

namespace {

std::atomic<const char *> askedFor = nullptr;
std::atomic<int32_t> locksInitialized = 0;
std::atomic<int32_t> locksTaken = 0;
std::atomic<int32_t> locksReleased = 0;
std::atomic<bool> initializationWaits = false;
int32_t threadNumber = 0;
int32_t exits = 0;
int32_t exitsUnderALock = 0;

} // namespace

extern "C" const char *PLT1_GetEnv(const char *name, int32_t reserved)
{
    askedFor = reserved == 0 ? name : nullptr;
    return std::strcmp(name, "HOST_VARIABLE") == 0 ? "from the host" : nullptr;
}

extern "C" void PLT1_InitializeLock(PLT1_Lock * /*lock*/)
{
    ++locksInitialized;
    while (initializationWaits) {
        std::this_thread::yield();
    }
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

extern "C" void TRC1_Event(TRC1_EntryBlock *block, int32_t /*line*/, int32_t kind, ...)
{
    if (kind != TRC1_EVENT_ENTRY && std::strstr(block->name, "UTF8") != nullptr) {
        ++exits;
        exitsUnderALock += locksTaken != locksReleased ? 1 : 0;
    }
}

TEST(Replacement, OfTheEnvironmentIsUsed)
{
    EXPECT_STREQ(DOV0_GetEnv("HOST_VARIABLE", nullptr), "from the host");
    EXPECT_STREQ(askedFor.load(), "HOST_VARIABLE");
}

TEST(Replacement, OfTheLocksIsUsedAndEachIsInitializedOnce)
{
    EXPECT_EQ(DOV0_GetEnv("HOST_OTHER", nullptr), nullptr);
    EXPECT_EQ(DOV0_GetEnv("HOST_OTHER", nullptr), nullptr);
    EXPECT_EQ(locksInitialized, 1);
    EXPECT_EQ(locksTaken, 2);
    EXPECT_EQ(locksReleased, 2);
}

TEST(Replacement, OfTheLocksIsNotUsedBeforeItIsInitialized)
{
    initializationWaits = true;
    std::atomic<int> begun = 0;
    const auto use = [&] {
        ++begun;
        EXPECT_EQ(DOV0_GetEnv("HOST_OTHER", nullptr), nullptr);
    };
    std::thread first(use);
    while (locksInitialized == 0) {
        std::this_thread::yield();
    }
    std::thread second(use);
    while (begun < 2) {
        std::this_thread::yield();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50)); // the second comes to the lock meanwhile
    EXPECT_EQ(locksTaken, 0);
    initializationWaits = false;
    first.join();
    second.join();
    EXPECT_EQ(locksInitialized, 1);
    EXPECT_EQ(locksTaken, 2);
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
    EXPECT_EQ(locksInitialized, 1) << "the lock of the slots is taken only after that";
}

TEST(Replacement, OfTheClockIsUsed)
{
    pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&mutex);
    EXPECT_EQ(DOV0_ConditionTimedWait(&condition, &mutex, 1000), ETIMEDOUT);
    pthread_mutex_unlock(&mutex);
}

TEST(Replacement, OfEventsSeesNoExitUnderTheConvertersLock)
{
    char text[10] = "";
    char16_t *units = nullptr;
    EXPECT_EQ(DOV0_ConvertUnicodeToUTF8(u"a", 1, text, sizeof text), 1); // opens it, under another
    ASSERT_EQ(TRC1_Configure("flow", nullptr), 0);
    EXPECT_EQ(DOV0_ConvertUnicodeToUTF8(u"abc", 3, text, sizeof text), 3);
    EXPECT_EQ(DOV0_ConvertUnicodeToUTF8(u"abc", 3, text, 2), 0); // cut
    EXPECT_EQ(DOV0_GetUTF8CharacterCount(text, 1, nullptr), 1);
    EXPECT_EQ(DOV0_GetUTF8CharacterCount(text, 1, &units), 1);
    DOV0_FreeStorage(&units);
    EXPECT_GE(locksTaken, 4);
    EXPECT_EQ(exits, 4);
    EXPECT_EQ(exitsUnderALock, 0);
}

TEST(Replacement, OfTheIdentityByZeroMatchesEachFreeSlot)
{
    threadNumber = 0;
    EXPECT_EQ(DOV0_strtok(nullptr, ","), nullptr); // nothing was begun
    char first[] = "a,b";
    EXPECT_STREQ(DOV0_strtok(first, ","), "a");
    EXPECT_STREQ(DOV0_strtok(nullptr, ","), "b");
    EXPECT_EQ(locksTaken, 1) << "a slot is given back, and none is claimed";
    threadNumber = 5; // another thread takes the slot
    char second[] = "c;d";
    EXPECT_STREQ(DOV0_strtok(second, ";"), "c");
    EXPECT_EQ(locksTaken, 2);
    threadNumber = 0;
    char third[] = "e,f";
    EXPECT_STREQ(DOV0_strtok(third, ","), "e");
    threadNumber = 5;
    EXPECT_STREQ(DOV0_strtok(nullptr, ";"), "d");
}
