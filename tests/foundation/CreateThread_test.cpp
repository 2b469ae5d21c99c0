#include "support/system_calls.h"
#include "support/trace_recorder.h"

#include <atomic>
#include <cerrno>

namespace {

constexpr char Function[] = "DOV0_CreateThread";

// A thread that lives until it is let go, so that its state can be looked at.
class Gate {
public:
    static void *pass(void *argument)
    {
        auto *gate = static_cast<Gate *>(argument);
        pthread_mutex_lock(&gate->mutex);
        ++gate->passed;
        pthread_cond_broadcast(&gate->changed);
        while (!gate->open) {
            pthread_cond_wait(&gate->changed, &gate->mutex);
        }
        --gate->inside;
        pthread_cond_broadcast(&gate->changed);
        pthread_mutex_unlock(&gate->mutex);
        return argument;
    }

    // Waits for a thread to come.
    void awaitThread()
    {
        pthread_mutex_lock(&mutex);
        while (passed == 0) {
            pthread_cond_wait(&changed, &mutex);
        }
        --passed;
        ++inside;
        pthread_mutex_unlock(&mutex);
    }

    // Lets the threads go, and waits until they no longer need the gate.
    void release()
    {
        pthread_mutex_lock(&mutex);
        open = true;
        pthread_cond_broadcast(&changed);
        while (inside > 0) {
            pthread_cond_wait(&changed, &mutex);
        }
        open = false;
        pthread_mutex_unlock(&mutex);
    }

private:
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t changed = PTHREAD_COND_INITIALIZER;
    int passed = 0;
    int inside = 0;
    bool open = false;
};

// Gates outlive the detached threads that may still be leaving them.
Gate &gate()
{
    static auto *const instance = new Gate;
    return *instance;
}

int detachStateOf(pthread_t thread)
{
    pthread_attr_t attributes;
    int state = -1;
    EXPECT_EQ(pthread_getattr_np(thread, &attributes), 0);
    EXPECT_EQ(pthread_attr_getdetachstate(&attributes, &state), 0);
    pthread_attr_destroy(&attributes);
    return state;
}

void *doNothing(void * /*argument*/)
{
    return nullptr;
}

int32_t createAndJoin()
{
    pthread_t thread;
    const int32_t rc = DOV0_CreateThread(doNothing, nullptr, DOV0_THREAD_JOINABLE, &thread);
    pthread_join(thread, nullptr);
    return rc;
}

int32_t createDetached(int32_t detachState)
{
    pthread_t thread;
    return DOV0_CreateThread(doNothing, nullptr, detachState, &thread);
}

// The attribute object is on the function's own stack, so its address is taken from the trace.
std::string destroying(const TraceLog &log)
{
    const std::string start = message(Function, "Destroying threadAttr @0x");
    for (const std::string &line : log) {
        const size_t digits = line.find_first_not_of("0123456789abcdef", start.size());
        if (line.compare(0, start.size(), start) == 0 && digits > start.size() &&
            line.substr(digits) == "\n") {
            return line;
        }
    }
    return "no destruction of threadAttr";
}

std::string notStarted(int error)
{
    return message(Function, "Error: thread not started: errno=%d\n", error);
}

std::string invalidState(int32_t detachState)
{
    return message(Function, "Error: Invalid pthread detach state %d\n", detachState);
}

const std::string Joinable = message(Function, "Received PTHREAD_CREATE_JOINABLE\n");
const std::string Detached = message(Function, "Received PTHREAD_CREATE_DETACHED\n");

} // namespace

TEST(CreateThread, NamesTheDetachStates)
{
    EXPECT_EQ(DOV0_THREAD_JOINABLE, 0);
    EXPECT_EQ(DOV0_THREAD_DETACHED, 1);
}

TEST(CreateThread, RunsAJoinableThread)
{
    pthread_t thread;
    TraceLog log;
    const SystemCalls calls = systemCallsOf([&] {
        log = traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_CreateThread(Gate::pass, &gate(), 0, &thread), 0); });
    });
    EXPECT_EQ(calls, (SystemCalls{"pthread_attr_init", "pthread_create joinable", "pthread_attr_destroy"}));
    EXPECT_EQ(log, (TraceLog{entry(Function), Joinable, destroying(log), leave(Function, intptr_t{0})}));
    ASSERT_FALSE(HasFailure()); // nobody to wait for
    gate().awaitThread();
    EXPECT_EQ(detachStateOf(thread), PTHREAD_CREATE_JOINABLE);
    gate().release();
    void *result = nullptr;
    EXPECT_EQ(pthread_join(thread, &result), 0);
    EXPECT_EQ(result, &gate());
}

TEST(CreateThread, DetachesAThreadAfterItsCreation)
{
    pthread_t thread;
    TraceLog log;
    const SystemCalls calls = systemCallsOf([&] {
        log = traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_CreateThread(Gate::pass, &gate(), 1, &thread), 0); });
    });
    EXPECT_EQ(calls, (SystemCalls{"pthread_attr_init", "pthread_create joinable", "pthread_detach",
                                  "pthread_attr_destroy"}));
    EXPECT_EQ(log, (TraceLog{entry(Function), Detached, destroying(log), leave(Function, intptr_t{0})}));
    ASSERT_FALSE(HasFailure()); // nobody to wait for
    gate().awaitThread();
    EXPECT_EQ(detachStateOf(thread), PTHREAD_CREATE_DETACHED);
    gate().release();
}

TEST(CreateThread, CreatesAndDetachesAThreadOfAnInvalidState)
{
    for (const int32_t state : {2, 3, -1, 512, INT32_MAX, INT32_MIN}) {
        pthread_t thread;
        TraceLog log;
        const SystemCalls calls = systemCallsOf([&] {
            log = traceAt(Trace::All,
                          [&] { EXPECT_EQ(DOV0_CreateThread(Gate::pass, &gate(), state, &thread), -1); });
        });
        EXPECT_EQ(calls, (SystemCalls{"pthread_attr_init", "pthread_create joinable", "pthread_detach",
                                      "pthread_attr_destroy"}));
        EXPECT_EQ(log,
                  (TraceLog{entry(Function), invalidState(state), destroying(log), leave(Function, -1)}));
        ASSERT_FALSE(HasFailure()); // nobody to wait for
        gate().awaitThread();
        EXPECT_EQ(detachStateOf(thread), PTHREAD_CREATE_DETACHED);
        gate().release();
    }
}

TEST(CreateThread, PassesTheArgumentOn)
{
    int value = 0;
    const auto increment = [](void *argument) -> void * {
        ++*static_cast<int *>(argument);
        return argument;
    };
    for (int i = 1; i <= 20; ++i) {
        pthread_t thread;
        ASSERT_EQ(DOV0_CreateThread(increment, &value, DOV0_THREAD_JOINABLE, &thread), 0);
        void *result = nullptr;
        ASSERT_EQ(pthread_join(thread, &result), 0);
        EXPECT_EQ(result, &value);
        EXPECT_EQ(value, i);
    }
}

TEST(CreateThread, StoresTheIdentityForTheThreadItself)
{
    // A thread may look at its own identity where it was asked to be stored.
    struct Self {
        pthread_t identity;
        bool matches;
    } self = {};
    const auto compare = [](void *argument) -> void * {
        auto *own = static_cast<Self *>(argument);
        own->matches = pthread_equal(own->identity, pthread_self()) != 0;
        return nullptr;
    };
    ASSERT_EQ(DOV0_CreateThread(compare, &self, DOV0_THREAD_JOINABLE, &self.identity), 0);
    ASSERT_EQ(pthread_join(self.identity, nullptr), 0);
    EXPECT_TRUE(self.matches);
}

TEST(CreateThread, ReportsAFailedCreationAndDetachesNothing)
{
    const SystemFault fault("pthread_create", EAGAIN, 99); // its errno means nothing
    const std::string received[] = {Joinable, Detached, invalidState(2)};
    for (int32_t state = 0; state <= 2; ++state) {
        pthread_t thread = pthread_self();
        TraceLog log;
        const SystemCalls calls = systemCallsOf([&] {
            log = traceAt(Trace::All, [&] {
                EXPECT_EQ(DOV0_CreateThread(doNothing, nullptr, state, &thread), -1);
                EXPECT_EQ(errno, EAGAIN);
            });
        });
        EXPECT_EQ(calls,
                  (SystemCalls{"pthread_attr_init", "pthread_create joinable", "pthread_attr_destroy"}));
        EXPECT_EQ(log, (TraceLog{entry(Function), received[state], notStarted(EAGAIN), destroying(log),
                                 leave(Function, -1)}));
        EXPECT_TRUE(pthread_equal(thread, pthread_self()));
    }
}

TEST(CreateThread, ReportsFailedAttributesWithoutFailingItself)
{
    const SystemFault fault("pthread_attr_destroy", EBUSY, 55);
    const std::string report =
        message(Function, "Error: pthread_attr_destroy returned %d, errno=%d\n", EBUSY, 55);
    const TraceLog log = traceAt(Trace::All, [] { EXPECT_EQ(createAndJoin(), 0); });
    EXPECT_EQ(log,
              (TraceLog{entry(Function), Joinable, destroying(log), report, leave(Function, intptr_t{0})}));
    EXPECT_EQ(bitsThatShow(report, [] { createAndJoin(); }), Trace::Error);
}

TEST(CreateThread, GoesWithoutAttributesThatCannotBeInitialized)
{
    const SystemFault fault("pthread_attr_init", ENOMEM, ENOMEM);
    for (int32_t state = 0; state <= 1; ++state) {
        pthread_t thread;
        TraceLog log;
        SystemCalls calls = systemCallsOf([&] {
            log = traceAt(Trace::All,
                          [&] { EXPECT_EQ(DOV0_CreateThread(Gate::pass, &gate(), state, &thread), 0); });
        });
        EXPECT_EQ(
            log, (TraceLog{entry(Function), state == 0 ? Joinable : Detached, leave(Function, intptr_t{0})}));
        SystemCalls expected = {"pthread_attr_init", "pthread_create without attributes"};
        if (state == 1) {
            expected.push_back("pthread_detach");
        }
        EXPECT_EQ(calls, expected);
        ASSERT_FALSE(HasFailure()); // nobody to wait for
        gate().awaitThread();
        EXPECT_EQ(detachStateOf(thread), state == 0 ? PTHREAD_CREATE_JOINABLE : PTHREAD_CREATE_DETACHED);
        gate().release();
        if (state == 0) {
            EXPECT_EQ(pthread_join(thread, nullptr), 0);
        }
    }
}

TEST(CreateThread, ReportsEachMessageUnderItsBitOnly)
{
    EXPECT_EQ(bitsThatShow(Joinable, [] { createAndJoin(); }), Trace::Detail);
    EXPECT_EQ(bitsThatShow(Detached, [] { createDetached(1); }), Trace::Detail);
    EXPECT_EQ(bitsThatShow(invalidState(7), [] { createDetached(7); }), Trace::Error);
    EXPECT_EQ(traceAt(Trace::All & ~(Trace::Flow | Trace::Detail | Trace::Storage | Trace::Error),
                      [] { createDetached(7); }),
              TraceLog{});
    for (uint32_t bit = 1; bit <= 0x8000; bit <<= 1) {
        const TraceLog log = traceAt(bit, [] { createAndJoin(); });
        EXPECT_EQ(destroying(log) != "no destruction of threadAttr", bit == Trace::Storage) << bit;
    }
    const SystemFault fault("pthread_create", EPERM);
    EXPECT_EQ(bitsThatShow(notStarted(EPERM), [] { createDetached(1); }), Trace::Error);
}

TEST(CreateThread, RefusesANullStartRoutine)
{
    pthread_t thread = pthread_self();
    TraceLog log;
    const SystemCalls calls = systemCallsOf([&] {
        log = traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_CreateThread(nullptr, &thread, 1, &thread), -1); });
    });
    EXPECT_EQ(calls, (SystemCalls{"pthread_attr_init", "pthread_attr_destroy"}));
    EXPECT_EQ(
        log, (TraceLog{entry(Function), Detached, notStarted(EINVAL), destroying(log), leave(Function, -1)}));
}

TEST(CreateThread, NeedsNoPlaceForTheIdentity)
{
    EXPECT_EQ(DOV0_CreateThread(Gate::pass, &gate(), DOV0_THREAD_DETACHED, nullptr), 0);
    ASSERT_FALSE(HasFailure()); // nobody to wait for
    gate().awaitThread();
    gate().release();
}

TEST(CreateThread, IsUsedByManyThreadsAtOnce)
{
    std::atomic<int> failures = 0;
    pthread_t creators[8];
    for (pthread_t &creator : creators) {
        ASSERT_EQ(DOV0_CreateThread(
                      [](void *argument) -> void * {
                          for (int i = 0; i < 50; ++i) {
                              if (createAndJoin() != 0) {
                                  ++*static_cast<std::atomic<int> *>(argument);
                              }
                          }
                          return nullptr;
                      },
                      &failures, DOV0_THREAD_JOINABLE, &creator),
                  0);
    }
    for (const pthread_t creator : creators) {
        EXPECT_EQ(pthread_join(creator, nullptr), 0);
    }
    EXPECT_EQ(failures, 0);
}
