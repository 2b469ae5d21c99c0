// Environment, locks, once control, thread identity and clock.
#include "dov0610.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <mutex>
#include <set>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

TEST(GetEnv, ReadsTheProcessEnvironmentAnew)
{
    unsetenv("DOV0610_TEST");
    EXPECT_EQ(PLT1_GetEnv("DOV0610_TEST", 0), nullptr);
    setenv("DOV0610_TEST", "one", 1);
    EXPECT_STREQ(PLT1_GetEnv("DOV0610_TEST", 0), "one");
    setenv("DOV0610_TEST", "", 1);
    EXPECT_STREQ(PLT1_GetEnv("DOV0610_TEST", 0), "");
}

TEST(Lock, InZeroedStorageIsAFreeLock)
{
    PLT1_Lock zeroed;
    std::memset(&zeroed, 0, sizeof zeroed);
    const pthread_mutex_t initial = PTHREAD_MUTEX_INITIALIZER;
    EXPECT_EQ(std::memcmp(&zeroed.mutex, &initial, sizeof initial), 0);
}

TEST(Lock, ExcludesOtherThreads)
{
    static PLT1_Lock lock;
    PLT1_InitializeLock(&lock);
    int64_t count = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 5000; ++i) {
                PLT1_GetLock(&lock);
                ++count;
                PLT1_ReleaseLock(&lock);
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(count, 40000);
}

TEST(Lock, MayBeInitializedAgainWhileItIsHeld)
{
    static PLT1_Lock lock;
    PLT1_InitializeLock(&lock);
    PLT1_GetLock(&lock);
    PLT1_InitializeLock(&lock);
    std::atomic<bool> entered = false;
    std::thread other([&] {
        PLT1_GetLock(&lock);
        entered = true;
        PLT1_ReleaseLock(&lock);
    });
    usleep(20000);
    EXPECT_FALSE(entered);
    PLT1_ReleaseLock(&lock);
    other.join();
    EXPECT_TRUE(entered);
}

namespace {

std::atomic<int> runs = 0;
int32_t innerControl = 0;

void slowRun(void *argument)
{
    usleep(20000);
    ++runs;
    *static_cast<int *>(argument) = 42;
}

void outerRun(void *argument)
{
    PLT1_InitializeOnce(&innerControl, slowRun, argument, __FILE__, __LINE__);
}

} // namespace

TEST(InitializeOnce, RunsOnceAndLetsNobodyPassBefore)
{
    static int32_t control = 0;
    int argument = 0;
    std::vector<std::thread> threads;
    std::atomic<int> early = 0;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&] {
            if (__atomic_load_n(&control, __ATOMIC_ACQUIRE) >= 0) {
                PLT1_InitializeOnce(&control, slowRun, &argument, __FILE__, __LINE__);
            }
            early += argument == 42 ? 0 : 1;
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(early, 0);
    EXPECT_LT(control, 0);
    PLT1_InitializeOnce(&control, slowRun, &argument, __FILE__, __LINE__);
    EXPECT_EQ(runs, 1);
}

TEST(InitializeOnce, MayInitializeSomethingElseInside)
{
    static int32_t control = 5;
    int argument = 0;
    PLT1_InitializeOnce(&control, outerRun, &argument, __FILE__, __LINE__);
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(argument, 42);
    EXPECT_LT(control, 0);
    EXPECT_LT(innerControl, 0);
}

TEST(ThreadID, IsStableAndDistinct)
{
    std::set<int32_t> identities;
    std::atomic<int> waiting = 0;
    std::mutex lock;
    std::vector<std::thread> threads;
    for (int t = 0; t < 50; ++t) {
        threads.emplace_back([&] {
            const int32_t own = PLT1_ThreadID();
            EXPECT_EQ(PLT1_ThreadID(), own);
            EXPECT_NE(own, 0);
            {
                const std::lock_guard<std::mutex> guard(lock);
                identities.insert(own);
            }
            ++waiting;
            while (waiting < 50) {
                std::this_thread::yield(); // all alive at once
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(identities.size(), 50U);
    EXPECT_EQ(identities.count(PLT1_ThreadID()), 0U);
}

TEST(ThreadID, IsTheChildsOwnAfterAFork)
{
    const int32_t own = PLT1_ThreadID();
    const pid_t child = fork();
    if (child == 0) {
        _exit(PLT1_ThreadID() != own && PLT1_ThreadID() == gettid() ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(GetTime, IsTheWallClock)
{
    timespec before = {};
    timespec now = {};
    timespec after = {};
    clock_gettime(CLOCK_REALTIME, &before);
    PLT1_GetTime(&now);
    clock_gettime(CLOCK_REALTIME, &after);
    EXPECT_TRUE(now.tv_sec > before.tv_sec || (now.tv_sec == before.tv_sec && now.tv_nsec >= before.tv_nsec));
    EXPECT_TRUE(now.tv_sec < after.tv_sec || (now.tv_sec == after.tv_sec && now.tv_nsec <= after.tv_nsec));
}
