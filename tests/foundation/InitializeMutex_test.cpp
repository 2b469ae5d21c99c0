#include "support/system_calls.h"
#include "support/trace_recorder.h"

#include <cerrno>
#include <thread>

namespace {

constexpr char Function[] = "DOV0_InitializeMutex";
const SystemCalls AllSteps = {"pthread_mutexattr_init", "pthread_mutex_init with attributes",
                              "pthread_mutexattr_destroy"};

std::string failure(const char *step, int rc, int error)
{
    return message(Function, "***** %s failed: rc=%d errno=%d\n", step, rc, error);
}

// Has one step fail and compares the trace and the steps made.
void expectReported(const char *step)
{
    pthread_mutex_t mutex;
    const SystemFault fault(step, ENOMEM, 34);
    TraceLog log;
    EXPECT_EQ(systemCallsOf([&] { log = traceAt(Trace::All, [&] { DOV0_InitializeMutex(&mutex); }); }),
              AllSteps);
    EXPECT_EQ(log, (TraceLog{entry(Function), failure(step, ENOMEM, 34), leave(Function)}));
    EXPECT_EQ(bitsThatShow(failure(step, ENOMEM, 34), [&] { DOV0_InitializeMutex(&mutex); }), Trace::Error);
}

} // namespace

TEST(InitializeMutex, MakesAPlainMutexThatIsFree)
{
    pthread_mutex_t mutex;
    memset(&mutex, 0xA5, sizeof mutex);
    DOV0_InitializeMutex(&mutex);
    EXPECT_EQ(pthread_mutex_lock(&mutex), 0);
    EXPECT_EQ(pthread_mutex_trylock(&mutex), EBUSY); // a recursive one would let its owner in
    std::thread([&] { EXPECT_EQ(pthread_mutex_trylock(&mutex), EBUSY); }).join();
    EXPECT_EQ(pthread_mutex_unlock(&mutex), 0);
    std::thread([&] {
        EXPECT_EQ(pthread_mutex_trylock(&mutex), 0);
        EXPECT_EQ(pthread_mutex_unlock(&mutex), 0);
    }).join();
    EXPECT_EQ(pthread_mutex_destroy(&mutex), 0);
}

TEST(InitializeMutex, TracesEntryAndExitOnly)
{
    pthread_mutex_t mutex;
    TraceLog log;
    EXPECT_EQ(systemCallsOf([&] { log = traceAt(Trace::All, [&] { DOV0_InitializeMutex(&mutex); }); }),
              AllSteps);
    EXPECT_EQ(log, (TraceLog{entry(Function), leave(Function)}));
}

TEST(InitializeMutex, ReportsAttributesThatCannotBeInitialized)
{
    expectReported("pthread_mutexattr_init");
}

TEST(InitializeMutex, ReportsAMutexThatCannotBeInitialized)
{
    expectReported("pthread_mutex_init");
}

TEST(InitializeMutex, ReportsAttributesThatCannotBeDestroyed)
{
    expectReported("pthread_mutexattr_destroy");
}

TEST(InitializeMutex, ReportsEachStepThatFails)
{
    pthread_mutex_t mutex;
    const SystemFault first("pthread_mutexattr_init", ENOMEM, 1);
    const SystemFault second("pthread_mutex_init", EAGAIN, 2);
    const SystemFault third("pthread_mutexattr_destroy", -1, 3);
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_InitializeMutex(&mutex); }),
              (TraceLog{entry(Function), failure("pthread_mutexattr_init", ENOMEM, 1),
                        failure("pthread_mutex_init", EAGAIN, 2), failure("pthread_mutexattr_destroy", -1, 3),
                        leave(Function)}));
    EXPECT_EQ(traceAt(Trace::All & ~(Trace::Error | Trace::Flow), [&] { DOV0_InitializeMutex(&mutex); }),
              TraceLog{});
}

TEST(InitializeMutex, MakesAPlainMutexWithoutInitializedAttributes)
{
    pthread_mutex_t mutex;
    memset(&mutex, 0xA5, sizeof mutex);
    const SystemFault fault("pthread_mutexattr_init", ENOMEM, ENOMEM);
    DOV0_InitializeMutex(&mutex);
    EXPECT_EQ(pthread_mutex_lock(&mutex), 0);
    EXPECT_EQ(pthread_mutex_trylock(&mutex), EBUSY);
    EXPECT_EQ(pthread_mutex_unlock(&mutex), 0);
    EXPECT_EQ(pthread_mutex_destroy(&mutex), 0);
}

TEST(InitializeMutex, ReportsNullAsAFailedInitialization)
{
    errno = 0;
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_InitializeMutex(nullptr); }),
              (TraceLog{entry(Function), failure("pthread_mutex_init", EINVAL, 0), leave(Function)}));
}
