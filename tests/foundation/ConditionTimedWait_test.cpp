#include "support/system_calls.h"
#include "support/trace_recorder.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <dlfcn.h>
#include <limits>
#include <thread>

namespace {

constexpr char Function[] = "DOV0_ConditionTimedWait";

// The clock of the calling thread, when it is not the real one.
thread_local const timespec *pretendedTime = nullptr;

struct ConditionTimedWait : testing::Test {
    pthread_cond_t condVar = PTHREAD_COND_INITIALIZER;
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;

    void SetUp() override { pthread_mutex_lock(&mutex); }

    void TearDown() override
    {
        // The function gives the mutex back to its caller, whatever the result.
        std::thread([&] { EXPECT_EQ(pthread_mutex_trylock(&mutex), EBUSY); }).join();
        EXPECT_EQ(pthread_mutex_unlock(&mutex), 0);
    }

    // The deadline that is computed from this time, without waiting for it.
    std::string deadline(timespec now, int32_t seconds)
    {
        const SystemFault noWait("pthread_cond_timedwait", ETIMEDOUT);
        pretendedTime = &now;
        const SystemCalls calls =
            systemCallsOf([&] { EXPECT_EQ(DOV0_ConditionTimedWait(&condVar, &mutex, seconds), ETIMEDOUT); });
        pretendedTime = nullptr;
        return calls.size() == 1 ? calls[0] : "not one call";
    }

    std::string announcement(int32_t seconds)
    {
        return message(Function, "Calling pthread_cond_timedwait for %d seconds, condVar @%p mutex @%p\n",
                       seconds, static_cast<void *>(&condVar), static_cast<void *>(&mutex));
    }
};

} // namespace

extern "C" void PLT1_GetTime(timespec *timeOut)
{
    static auto *const supplied = reinterpret_cast<void (*)(timespec *)>(dlsym(RTLD_NEXT, "PLT1_GetTime"));
    if (pretendedTime != nullptr) {
        *timeOut = *pretendedTime;
    } else {
        supplied(timeOut);
    }
}

TEST_F(ConditionTimedWait, TimesOutAtOnceForZeroSeconds)
{
    EXPECT_EQ(DOV0_ConditionTimedWait(&condVar, &mutex, 0), ETIMEDOUT);
}

TEST_F(ConditionTimedWait, TimesOutAtOnceForNegativeSeconds)
{
    EXPECT_EQ(DOV0_ConditionTimedWait(&condVar, &mutex, -1), ETIMEDOUT);
    EXPECT_EQ(DOV0_ConditionTimedWait(&condVar, &mutex, INT32_MIN), ETIMEDOUT); // before 1970
}

TEST_F(ConditionTimedWait, WaitsForItsTime)
{
    timespec before = {};
    timespec after = {};
    clock_gettime(CLOCK_REALTIME, &before);
    int32_t rc = 0;
    while (rc == 0) { // a wait may end for no reason
        rc = DOV0_ConditionTimedWait(&condVar, &mutex, 1);
    }
    clock_gettime(CLOCK_REALTIME, &after);
    EXPECT_EQ(rc, ETIMEDOUT);
    EXPECT_GE((after.tv_sec - before.tv_sec) * 1000000000LL + (after.tv_nsec - before.tv_nsec), 1000000000LL);
}

TEST_F(ConditionTimedWait, EndsWithZeroWhenSignalled)
{
    bool ready = false;
    std::thread signaller([&] {
        pthread_mutex_lock(&mutex); // to be had only while the other thread waits
        ready = true;
        pthread_cond_signal(&condVar);
        pthread_mutex_unlock(&mutex);
    });
    int32_t rc = 0;
    while (!ready && rc == 0) {
        rc = DOV0_ConditionTimedWait(&condVar, &mutex, 250);
    }
    EXPECT_EQ(rc, 0);
    EXPECT_TRUE(ready);
    signaller.join();
}

TEST_F(ConditionTimedWait, WakesEveryWaiterOfABroadcast)
{
    int waiting = 0;
    bool ready = false;
    std::atomic<int> woken = 0;
    std::vector<std::thread> waiters;
    for (int i = 0; i < 8; ++i) {
        waiters.emplace_back([&] {
            pthread_mutex_lock(&mutex);
            ++waiting;
            int32_t rc = 0;
            while (!ready && rc == 0) {
                rc = DOV0_ConditionTimedWait(&condVar, &mutex, 250);
            }
            pthread_mutex_unlock(&mutex);
            woken += rc == 0 ? 1 : 0;
        });
    }
    while (waiting < 8) {
        pthread_mutex_unlock(&mutex);
        std::this_thread::yield();
        pthread_mutex_lock(&mutex);
    }
    ready = true;
    pthread_cond_broadcast(&condVar);
    pthread_mutex_unlock(&mutex);
    for (std::thread &waiter : waiters) {
        waiter.join();
    }
    pthread_mutex_lock(&mutex);
    EXPECT_EQ(woken, 8);
}

TEST_F(ConditionTimedWait, AddsTheSecondsToTheTimeOfDay)
{
    EXPECT_EQ(deadline({1000, 999999999}, 0), "pthread_cond_timedwait until 1000.999999999");
    EXPECT_EQ(deadline({1000, 1}, 30), "pthread_cond_timedwait until 1030.000000001");
    EXPECT_EQ(deadline({1000, 5}, -30), "pthread_cond_timedwait until 970.000000005");
    if (sizeof(time_t) > sizeof(int32_t)) {
        EXPECT_EQ(deadline({1800000000, 0}, INT32_MAX), "pthread_cond_timedwait until 3947483647.000000000");
    }
}

TEST_F(ConditionTimedWait, HoldsADeadlineThatIsOutOfRangeAtTheLimit)
{
    constexpr time_t last = std::numeric_limits<time_t>::max();
    constexpr time_t first = std::numeric_limits<time_t>::min();
    EXPECT_EQ(deadline({last, 7}, 1), "pthread_cond_timedwait until " + std::to_string(last) + ".000000007");
    EXPECT_EQ(deadline({first, 7}, -1),
              "pthread_cond_timedwait until " + std::to_string(first) + ".000000007");
}

TEST_F(ConditionTimedWait, ReturnsAnErrorNumberAsItIs)
{
    const timespec impossible = {1000, -1};
    pretendedTime = &impossible;
    EXPECT_EQ(DOV0_ConditionTimedWait(&condVar, &mutex, 0), EINVAL);
    pretendedTime = nullptr;
    const SystemFault fault("pthread_cond_timedwait", EPERM);
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_ConditionTimedWait(&condVar, &mutex, 1), EPERM); }),
              (TraceLog{entry(Function), announcement(1), leave(Function, EPERM)}));
}

TEST_F(ConditionTimedWait, TracesTheWaitAsADetail)
{
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_ConditionTimedWait(&condVar, &mutex, 0); }),
              (TraceLog{entry(Function), announcement(0), leave(Function, ETIMEDOUT)}));
    EXPECT_EQ(bitsThatShow(announcement(-5), [&] { DOV0_ConditionTimedWait(&condVar, &mutex, -5); }),
              Trace::Detail);
    EXPECT_EQ(traceAt(Trace::All & ~(Trace::Detail | Trace::Flow),
                      [&] { DOV0_ConditionTimedWait(&condVar, &mutex, 0); }),
              TraceLog{});
}

TEST_F(ConditionTimedWait, ReportsNothingWhenSignalled)
{
    const SystemFault noWait("pthread_cond_timedwait", 0, 41);
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_ConditionTimedWait(&condVar, &mutex, 1), 0); }),
              (TraceLog{entry(Function), announcement(1), leave(Function, intptr_t{0})}));
}

TEST_F(ConditionTimedWait, ReportsANegativeResult)
{
    const SystemFault fault("pthread_cond_timedwait", -3, 41);
    const std::string report = message(Function, "conditional timed wait rc = %d, errno = %d\n", -3, 41);
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_ConditionTimedWait(&condVar, &mutex, 2), -3); }),
              (TraceLog{entry(Function), announcement(2), report, leave(Function, -3)}));
    EXPECT_EQ(bitsThatShow(report, [&] { DOV0_ConditionTimedWait(&condVar, &mutex, 2); }), Trace::Error);
}

TEST_F(ConditionTimedWait, RefusesNull)
{
    TraceLog log;
    EXPECT_EQ(systemCallsOf([&] {
                  log = traceAt(Trace::Flow, [&] {
                      DOV0_ConditionTimedWait(nullptr, &mutex, 0);
                      DOV0_ConditionTimedWait(&condVar, nullptr, 0);
                  });
              }),
              SystemCalls{});
    EXPECT_EQ(log,
              (TraceLog{entry(Function), leave(Function, EINVAL), entry(Function), leave(Function, EINVAL)}));
}
