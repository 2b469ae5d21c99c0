#include "net/mutex_faults.h"
#include "net/resolver_stand_ins.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <thread>

namespace {

constexpr char Function[] = "DOV0_GetHostByName";
constexpr int RecordSize = sizeof(hostent);

// What DOV0_GetStorage() traces for a block.
TraceLog storage(const void *block)
{
    return {entry("DOV0_GetStorage"),
            message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n", block, RecordSize),
            leave("DOV0_GetStorage", block)};
}

TraceLog joined(std::initializer_list<TraceLog> parts)
{
    TraceLog all;
    for (const TraceLog &part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

std::string failure(const char *name, int error, int resolverError)
{
    return message(Function, "***** gethostbyname failed, host<%s> errno=%d h_errno=%d h_errnop=%d\n", name,
                   error, resolverError, 0);
}

// Finds the mutex of the look-ups while one is made. The third one is past every first use.
void aimAtTheMutexOfTheLookUps()
{
    for (int i = 0; i < 3; ++i) {
        standIns().byName = [](const char *) {
            mutexFaults.mutex = lastLockedMutex();
            return unknownHost();
        };
        DOV0_GetHostByName("first use");
    }
}

} // namespace

TEST(GetHostByName, CopiesTheResolversRecordAndNothingBehindIt)
{
    HostRecord known("host.site.example", {"192.0.2.7", "192.0.2.8"});
    std::string asked;
    standIns().byName = [&](const char *name) {
        asked = name;
        return known.get();
    };
    hostent *copy = DOV0_GetHostByName("host");
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(asked, "host");
    EXPECT_NE(copy, known.get());
    EXPECT_EQ(copy->h_name, known.get()->h_name);
    EXPECT_EQ(copy->h_aliases, known.get()->h_aliases);
    EXPECT_EQ(copy->h_addrtype, known.get()->h_addrtype);
    EXPECT_EQ(copy->h_length, known.get()->h_length);
    EXPECT_EQ(copy->h_addr_list, known.get()->h_addr_list);
    DOV0_FreeStorage(&copy);
}

TEST(GetHostByName, FindsLocalhostWithTheSystemsResolver)
{
    standIns().byName = realByName;
    hostent *copy = DOV0_GetHostByName("localhost");
    ASSERT_NE(copy, nullptr);
    EXPECT_STREQ(copy->h_name, "localhost");
    char dotted[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, copy->h_addr_list[0], dotted, sizeof dotted);
    EXPECT_STREQ(dotted, "127.0.0.1");
    DOV0_FreeStorage(&copy);
}

TEST(GetHostByName, TracesALookUp)
{
    HostRecord known("host.example");
    standIns().byName = [&](const char *) { return known.get(); };
    hostent *copy = nullptr;
    const TraceLog first = traceAt(Trace::All & ~Trace::State, [&] { copy = DOV0_GetHostByName("host"); });
    EXPECT_EQ(first,
              joined({{entry(Function), entry("DOV0_InitializeMutex"), leave("DOV0_InitializeMutex")},
                      storage(copy),
                      {message(Function, "Allocated hostent buffer @%p for length %d\n", copy, RecordSize),
                       leave(Function, copy)}}));
    DOV0_FreeStorage(&copy);
    const TraceLog second = traceAt(Trace::All & ~Trace::State, [&] { copy = DOV0_GetHostByName("host"); });
    EXPECT_EQ(second,
              joined({{entry(Function)},
                      storage(copy),
                      {message(Function, "Allocated hostent buffer @%p for length %d\n", copy, RecordSize),
                       leave(Function, copy)}}));
    DOV0_FreeStorage(&copy);
    const TraceLog rest =
        traceOf(Function, Trace::All & ~Trace::Storage, [&] { copy = DOV0_GetHostByName("host"); });
    EXPECT_EQ(rest, (TraceLog{entry(Function), leave(Function, copy)}));
    DOV0_FreeStorage(&copy);
    const TraceLog storageLog = traceOf(Function, Trace::Storage, [&] { copy = DOV0_GetHostByName("host"); });
    EXPECT_EQ(storageLog, (TraceLog{message(Function, "Allocated hostent buffer @%p for length %d\n", copy,
                                            RecordSize)}));
    DOV0_FreeStorage(&copy);
}

TEST(GetHostByName, ReportsAFailureWithBothErrorNumbers)
{
    standIns().byName = [](const char *) { return unknownHost(ETIMEDOUT, TRY_AGAIN); };
    hostent *copy = nullptr;
    const TraceLog log = traceAt(Trace::All & ~Trace::State, [&] { copy = DOV0_GetHostByName("nowhere"); });
    EXPECT_EQ(copy, nullptr);
    void *block = nullptr;
    ASSERT_GT(log.size(), 4U);
    ASSERT_EQ(std::sscanf(log[4].c_str(), "DOV0_GetStorage: Allocated storage at address @%p", &block), 1);
    EXPECT_EQ(log,
              joined({{entry(Function), entry("DOV0_InitializeMutex"), leave("DOV0_InitializeMutex")},
                      storage(block),
                      {message(Function, "Allocated hostent buffer @%p for length %d\n", block, RecordSize),
                       failure("nowhere", ETIMEDOUT, TRY_AGAIN),
                       message(Function, "Freeing hostent buffer @%p\n", block), entry("DOV0_FreeStorage"),
                       message("DOV0_FreeStorage", "Freeing storage at address @%p\n", block),
                       leave("DOV0_FreeStorage"), leave(Function, nullptr)}}));
    EXPECT_EQ(bitsThatShow(failure("nowhere", ETIMEDOUT, TRY_AGAIN), [] { DOV0_GetHostByName("nowhere"); }),
              Trace::Error);
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Error & ~Trace::Storage,
                      [] { DOV0_GetHostByName("nowhere"); }),
              (TraceLog{entry(Function), leave(Function, nullptr)}));
    EXPECT_EQ(traceOf(Function, Trace::Storage, [] { DOV0_GetHostByName("nowhere"); }).size(), 2U);
}

TEST(GetHostByName, AsksAgainForANameThatFailed)
{
    EXPECT_EQ(DOV0_GetHostByName("nowhere"), nullptr);
    EXPECT_EQ(DOV0_GetHostByName("nowhere"), nullptr);
    EXPECT_EQ(nameLookUps(), 2);
}

TEST(GetHostByName, PassesNamesOfAnyLengthOn)
{
    for (const size_t length : {0U, 255U, 256U, 10000U}) {
        const std::string name(length, 'h');
        std::string asked = "none";
        standIns().byName = [&](const char *text) {
            asked = text;
            return unknownHost();
        };
        EXPECT_EQ(traceOf(Function, Trace::Error, [&] { DOV0_GetHostByName(name.c_str()); }),
                  (TraceLog{failure(name.c_str(), 0, HOST_NOT_FOUND)}));
        EXPECT_EQ(asked, name);
    }
}

TEST(GetHostByName, ReportsNullWithoutAskingTheResolver)
{
    EXPECT_EQ(traceOf(Function, Trace::Error, [] { EXPECT_EQ(DOV0_GetHostByName(nullptr), nullptr); }),
              (TraceLog{failure("(null)", EINVAL, HOST_NOT_FOUND)}));
    EXPECT_EQ(nameLookUps(), 0);
}

TEST(GetHostByName, ReportsMissingStorageAndGivesTheMutexBack)
{
    HostRecord known("host.example");
    standIns().byName = [&](const char *) { return known.get(); };
    const std::string noStorage =
        message(Function, "***** storage allocation for %d bytes failed\n", RecordSize);
    hostent *copy = nullptr;
    const TraceLog log = traceAt(Trace::Error | Trace::Flow, [&] {
        EXPECT_TRUE(withHeapFailure(1, [&] { copy = DOV0_GetHostByName("host"); }));
    });
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(log,
              (TraceLog{entry(Function), entry("DOV0_InitializeMutex"), leave("DOV0_InitializeMutex"),
                        entry("DOV0_GetStorage"),
                        message("DOV0_GetStorage", "*****Unable to obtain storage, size %d\n", RecordSize),
                        leave("DOV0_GetStorage", nullptr), noStorage, leave(Function, nullptr)}));
    EXPECT_EQ(bitsThatShow(noStorage, [] { withHeapFailure(1, [] { DOV0_GetHostByName("host"); }); }),
              Trace::Error);
    EXPECT_EQ(nameLookUps(), 0);
    std::thread([&] { copy = DOV0_GetHostByName("host"); }).join();
    EXPECT_NE(copy, nullptr);
    DOV0_FreeStorage(&copy);
}

TEST(GetHostByName, ReportsAMutexThatCannotBeLocked)
{
    aimAtTheMutexOfTheLookUps();
    const int asked = nameLookUps();
    mutexFaults.onLock = EAGAIN;
    hostent *copy = nullptr;
    const auto call = [&] {
        errno = EINTR;
        copy = DOV0_GetHostByName("host");
    };
    const std::string text =
        message(Function, "***** pthread_mutex_lock failed, rc=%d errno=%d\n", EAGAIN, EINTR);
    EXPECT_EQ(traceAt(Trace::All, call), (TraceLog{entry(Function), text, leave(Function, nullptr)}));
    EXPECT_EQ(bitsThatShow(text, call), Trace::Error);
    mutexFaults.onLock = 0;
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(nameLookUps(), asked);
}

TEST(GetHostByName, ReportsAMutexThatCannotBeUnlocked)
{
    aimAtTheMutexOfTheLookUps();
    HostRecord known("host.example");
    standIns().byName = [&](const char *) { return known.get(); };
    mutexFaults.onUnlock = EPERM;
    hostent *copy = nullptr;
    const auto call = [&] {
        errno = EINTR;
        copy = DOV0_GetHostByName("host");
    };
    const std::string text =
        message(Function, "***** pthread_mutex_unlock failed, rc=%d errno=%d\n", EPERM, EINTR);
    const TraceLog log = traceOf(Function, Trace::All & ~Trace::Storage, call);
    EXPECT_EQ(log, (TraceLog{entry(Function), text, leave(Function, copy)}));
    EXPECT_NE(copy, nullptr);
    DOV0_FreeStorage(&copy);
    EXPECT_EQ(bitsThatShow(text,
                           [&] {
                               call();
                               DOV0_FreeStorage(&copy);
                           }),
              Trace::Error);
    mutexFaults.onUnlock = 0;
}

TEST(GetHostByName, MakesLookUpsOneAtATimeFromTheFirstOn)
{
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    HostRecord known("host.example");
    standIns().byName = [&](const char *) {
        const int now = ++inside;
        most = std::max(most.load(), now);
        std::this_thread::yield();
        --inside;
        return known.get();
    };
    const TraceLog initializations = traceOf("DOV0_InitializeMutex", Trace::Flow, [] {
        std::vector<std::thread> threads;
        for (int i = 0; i < 8; ++i) {
            threads.emplace_back([] {
                for (int round = 0; round < 200; ++round) {
                    hostent *copy = DOV0_GetHostByName("host");
                    EXPECT_NE(copy, nullptr);
                    DOV0_FreeStorage(&copy);
                }
            });
        }
        for (std::thread &thread : threads) {
            thread.join();
        }
    });
    EXPECT_EQ(most, 1);
    EXPECT_EQ(nameLookUps(), 1600);
    EXPECT_EQ(initializations, (TraceLog{entry("DOV0_InitializeMutex"), leave("DOV0_InitializeMutex")}));
}
