#include "support/system_calls.h"
#include "support/trace_recorder.h"

#include <cerrno>
#include <ctime>
#include <thread>

namespace {

constexpr char Function[] = "DOV0_InitializeCondVar";
const SystemCalls AllSteps = {"pthread_condattr_init", "pthread_cond_init with attributes",
                              "pthread_condattr_destroy"};

// Waits until another thread signals: true when the condition variable works.
bool carriesASignal(pthread_cond_t &condVar)
{
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    bool ready = false;
    pthread_mutex_lock(&mutex);
    std::thread signaller([&] {
        pthread_mutex_lock(&mutex);
        ready = true;
        pthread_cond_signal(&condVar);
        pthread_mutex_unlock(&mutex);
    });
    int rc = 0;
    while (!ready && rc == 0) {
        rc = pthread_cond_wait(&condVar, &mutex);
    }
    pthread_mutex_unlock(&mutex);
    signaller.join();
    return rc == 0;
}

} // namespace

TEST(InitializeCondVar, MakesAConditionVariable)
{
    pthread_cond_t condVar;
    memset(&condVar, 0xA5, sizeof condVar);
    DOV0_InitializeCondVar(&condVar);
    EXPECT_TRUE(carriesASignal(condVar));
    EXPECT_EQ(pthread_cond_destroy(&condVar), 0);
}

TEST(InitializeCondVar, MakesOneThatWaitsByTheWallClock)
{
    pthread_cond_t condVar;
    DOV0_InitializeCondVar(&condVar);
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now); // far in the future by the time since start
    pthread_mutex_lock(&mutex);
    EXPECT_EQ(pthread_cond_timedwait(&condVar, &mutex, &now), ETIMEDOUT);
    pthread_mutex_unlock(&mutex);
    EXPECT_EQ(pthread_cond_destroy(&condVar), 0);
}

TEST(InitializeCondVar, TracesEntryAndExitOnly)
{
    pthread_cond_t condVar;
    TraceLog log;
    EXPECT_EQ(systemCallsOf([&] { log = traceAt(Trace::All, [&] { DOV0_InitializeCondVar(&condVar); }); }),
              AllSteps);
    EXPECT_EQ(log, (TraceLog{entry(Function), leave(Function)}));
}

TEST(InitializeCondVar, GoesOnSilentlyAfterEachFailure)
{
    for (const char *step : {"pthread_condattr_init", "pthread_cond_init", "pthread_condattr_destroy"}) {
        pthread_cond_t condVar;
        const SystemFault fault(step, ENOMEM, ENOMEM);
        TraceLog log;
        EXPECT_EQ(
            systemCallsOf([&] { log = traceAt(Trace::All, [&] { DOV0_InitializeCondVar(&condVar); }); }),
            AllSteps);
        EXPECT_EQ(log, (TraceLog{entry(Function), leave(Function)})) << step;
    }
}

TEST(InitializeCondVar, MakesAConditionVariableWithoutInitializedAttributes)
{
    pthread_cond_t condVar;
    memset(&condVar, 0xA5, sizeof condVar);
    {
        const SystemFault fault("pthread_condattr_init", ENOMEM, ENOMEM);
        DOV0_InitializeCondVar(&condVar);
    }
    EXPECT_TRUE(carriesASignal(condVar));
    EXPECT_EQ(pthread_cond_destroy(&condVar), 0);
}

TEST(InitializeCondVar, DoesNothingForNull)
{
    TraceLog log;
    EXPECT_EQ(systemCallsOf([&] { log = traceAt(Trace::All, [] { DOV0_InitializeCondVar(nullptr); }); }),
              (SystemCalls{"pthread_condattr_init", "pthread_condattr_destroy"}));
    EXPECT_EQ(log, (TraceLog{entry(Function), leave(Function)}));
}
