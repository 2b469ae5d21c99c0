#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <atomic>
#include <cstdlib>
#include <dlfcn.h>
#include <latch>
#include <map>
#include <random>
#include <thread>

namespace {

constexpr char Function[] = "DOV0_GetEnv";
const char *const NotFound = nullptr;

std::atomic<int> lockInitializations = 0;

// Run in place of the look-up in the process environment, when there is one.
const char *(*lookUpInstead)(const char *name) = nullptr;

std::string calling(const char *name)
{
    return message(Function, "Calling PLT1_GetEnv for EnvString <%s>\n", name);
}

std::string returned(const char *name, const char *value)
{
    return message(Function, "PLT1_GetEnv <%s> returned EnvValue @%p <%s>\n", name,
                   static_cast<const void *>(value), value);
}

std::string local(const char *name, const char *value)
{
    return message(Function, "local GetEnv <%s> returned EnvValue @%p\n", name,
                   static_cast<const void *>(value));
}

std::string notSet(const char *name)
{
    return message(Function, "Env <%s> not set\n", name);
}

std::string valueOf(const char *name, const char *value)
{
    return message(Function, "Env <%s> value <%s>\n", name, value);
}

// The whole trace of one look-up.
TraceLog traceOfLookUp(const char *name, const char *defaultValue, uint32_t level = Trace::All)
{
    return traceAt(level, [&] { DOV0_GetEnv(name, defaultValue); });
}

std::string upper(std::string text)
{
    for (char &character : text) {
        if (character >= 'a' && character <= 'z') {
            character = static_cast<char>(character - 'a' + 'A');
        }
    }
    return text;
}

} // namespace

extern "C" const char *PLT1_GetEnv(const char *name, int32_t reserved)
{
    using LookUp = const char *(const char *, int32_t);
    static auto *const supplied = reinterpret_cast<LookUp *>(dlsym(RTLD_NEXT, "PLT1_GetEnv"));
    EXPECT_EQ(reserved, 0);
    return lookUpInstead != nullptr ? lookUpInstead(name) : supplied(name, reserved);
}

extern "C" void PLT1_InitializeLock(PLT1_Lock *lock)
{
    static auto *const supplied =
        reinterpret_cast<void (*)(PLT1_Lock *)>(dlsym(RTLD_NEXT, "PLT1_InitializeLock"));
    ++lockInitializations;
    supplied(lock);
}

TEST(GetEnv, FindsALocalVariableByItsUpperCaseNameOnly)
{
    DOV0_PutEnv("abc=1");
    EXPECT_STREQ(DOV0_GetEnv("ABC", "d"), "1");
    EXPECT_STREQ(DOV0_GetEnv("abc", "d"), "d");
    EXPECT_STREQ(DOV0_GetEnv("Abc", "d"), "d");
    EXPECT_STREQ(DOV0_GetEnv("AB", "d"), "d");
    EXPECT_STREQ(DOV0_GetEnv("ABCD", "d"), "d");
}

TEST(GetEnv, PrefersTheProcessEnvironment)
{
    setenv("DOV_TEST", "process", 1);
    DOV0_PutEnv("DOV_TEST=local");
    EXPECT_STREQ(DOV0_GetEnv("DOV_TEST", "default"), "process");
    EXPECT_EQ(DOV0_GetEnv("DOV_TEST", nullptr), getenv("DOV_TEST"));
}

TEST(GetEnv, TakesAnEmptyProcessVariableForUnsetWithoutLookingFurther)
{
    setenv("DOV_TEST", "", 1);
    DOV0_PutEnv("DOV_TEST=local");
    EXPECT_STREQ(DOV0_GetEnv("DOV_TEST", "default"), "default");
    EXPECT_EQ(DOV0_GetEnv("DOV_TEST", nullptr), NotFound);
}

TEST(GetEnv, SeesTheProcessEnvironmentOfTheMoment)
{
    DOV0_PutEnv("DOV_TEST=local");
    EXPECT_STREQ(DOV0_GetEnv("DOV_TEST", nullptr), "local");
    setenv("DOV_TEST", "one", 1);
    EXPECT_STREQ(DOV0_GetEnv("DOV_TEST", nullptr), "one");
    setenv("DOV_TEST", "two", 1);
    EXPECT_STREQ(DOV0_GetEnv("DOV_TEST", nullptr), "two");
    unsetenv("DOV_TEST");
    EXPECT_STREQ(DOV0_GetEnv("DOV_TEST", nullptr), "local");
}

TEST(GetEnv, TakesAnEmptyLocalVariableForUnset)
{
    DOV0_PutEnv("X=");
    EXPECT_STREQ(DOV0_GetEnv("X", "d"), "d");
    EXPECT_EQ(DOV0_GetEnv("X", nullptr), NotFound);
}

TEST(GetEnv, ReturnsTheDefaultItself)
{
    const char defaultValue[] = "d";
    EXPECT_EQ(DOV0_GetEnv("DOV_UNSET", defaultValue), defaultValue);
    EXPECT_EQ(DOV0_GetEnv("DOV_UNSET", nullptr), NotFound);
    const char *result = DOV0_GetEnv("DOV_UNSET", "");
    ASSERT_NE(result, NotFound);
    EXPECT_STREQ(result, "");
}

TEST(GetEnv, ReturnsNullForANullNameWhateverTheDefault)
{
    EXPECT_EQ(DOV0_GetEnv(nullptr, "d"), NotFound);
    EXPECT_EQ(DOV0_GetEnv(nullptr, nullptr), NotFound);
    EXPECT_EQ(traceOfLookUp(nullptr, "d"),
              (TraceLog{entry(Function), notSet("(null)"), leave(Function, nullptr)}));
    EXPECT_EQ(bitsThatShow(notSet("(null)"), [] { DOV0_GetEnv(nullptr, "d"); }), Trace::Detail);
}

TEST(GetEnv, LooksUpTheEmptyNameLikeAnyOther)
{
    EXPECT_STREQ(DOV0_GetEnv("", "d"), "d");
    DOV0_PutEnv("=v");
    EXPECT_STREQ(DOV0_GetEnv("", "d"), "v");
}

TEST(GetEnv, TracesAProcessVariable)
{
    setenv("DOV_TEST", "process value", 1);
    const char *value = getenv("DOV_TEST");
    EXPECT_EQ(traceOfLookUp("DOV_TEST", "d"),
              (TraceLog{entry(Function), calling("DOV_TEST"), returned("DOV_TEST", value),
                        valueOf("DOV_TEST", "process value"), leave(Function, value)}));
}

TEST(GetEnv, TracesAnEmptyProcessVariable)
{
    setenv("DOV_TEST", "", 1);
    const char *value = getenv("DOV_TEST");
    const char defaultValue[] = "d";
    EXPECT_EQ(traceOfLookUp("DOV_TEST", defaultValue),
              (TraceLog{entry(Function), calling("DOV_TEST"), returned("DOV_TEST", value),
                        valueOf("DOV_TEST", "d"), leave(Function, defaultValue)}));
    EXPECT_EQ(traceOfLookUp("DOV_TEST", nullptr),
              (TraceLog{entry(Function), calling("DOV_TEST"), returned("DOV_TEST", value), notSet("DOV_TEST"),
                        leave(Function, nullptr)}));
}

TEST(GetEnv, TracesALocalVariable)
{
    DOV0_PutEnv("DOV_TEST=local value");
    const char *value = DOV0_GetEnv("DOV_TEST", nullptr);
    EXPECT_EQ(traceOfLookUp("DOV_TEST", "d"),
              (TraceLog{entry(Function), calling("DOV_TEST"), local("DOV_TEST", value),
                        valueOf("DOV_TEST", "local value"), leave(Function, value)}));
}

TEST(GetEnv, TracesAnEmptyLocalVariable)
{
    DOV0_PutEnv("DOV_TEST=v");
    const char *value = DOV0_GetEnv("DOV_TEST", nullptr);
    DOV0_PutEnv("DOV_TEST=");
    EXPECT_EQ(traceOfLookUp("DOV_TEST", nullptr),
              (TraceLog{entry(Function), calling("DOV_TEST"), local("DOV_TEST", value), notSet("DOV_TEST"),
                        leave(Function, nullptr)}));
}

TEST(GetEnv, TracesAVariableThatIsNotSet)
{
    const char defaultValue[] = "d";
    EXPECT_EQ(traceOfLookUp("DOV_TEST", defaultValue),
              (TraceLog{entry(Function), calling("DOV_TEST"), local("DOV_TEST", nullptr),
                        valueOf("DOV_TEST", "d"), leave(Function, defaultValue)}));
    EXPECT_EQ(traceOfLookUp("DOV_TEST", nullptr),
              (TraceLog{entry(Function), calling("DOV_TEST"), local("DOV_TEST", nullptr), notSet("DOV_TEST"),
                        leave(Function, nullptr)}));
}

TEST(GetEnv, ShowsEachMessageUnderItsBitsOnly)
{
    setenv("DOV_PROCESS", "p", 1);
    DOV0_PutEnv("DOV_LOCAL=l");
    const auto process = [] { DOV0_GetEnv("DOV_PROCESS", nullptr); };
    const auto local1 = [] { DOV0_GetEnv("DOV_LOCAL", nullptr); };
    const auto unset = [] { DOV0_GetEnv("DOV_UNSET", nullptr); };
    EXPECT_EQ(bitsThatShow(calling("DOV_PROCESS"), process), Trace::State);
    EXPECT_EQ(bitsThatShow(returned("DOV_PROCESS", getenv("DOV_PROCESS")), process),
              Trace::State | Trace::Storage);
    EXPECT_EQ(bitsThatShow(valueOf("DOV_PROCESS", "p"), process), Trace::Detail);
    EXPECT_EQ(bitsThatShow(local("DOV_LOCAL", DOV0_GetEnv("DOV_LOCAL", nullptr)), local1), Trace::State);
    EXPECT_EQ(bitsThatShow(valueOf("DOV_LOCAL", "l"), local1), Trace::Detail);
    EXPECT_EQ(bitsThatShow(local("DOV_UNSET", nullptr), unset), Trace::State);
    EXPECT_EQ(bitsThatShow(notSet("DOV_UNSET"), unset), Trace::Detail);
    const uint32_t none = Trace::All & ~(Trace::State | Trace::Storage | Trace::Detail | Trace::Flow);
    for (const char *name : {"DOV_PROCESS", "DOV_LOCAL", "DOV_UNSET"}) {
        EXPECT_EQ(traceOfLookUp(name, "d", none), TraceLog{}) << name;
    }
}

TEST(GetEnv, ReturnsAPointerThatShowsLaterUpdates)
{
    DOV0_PutEnv("DOV_TEST=before");
    const char *value = DOV0_GetEnv("DOV_TEST", nullptr);
    EXPECT_STREQ(value, "before");
    DOV0_PutEnv("dov_test=after, and longer");
    EXPECT_STREQ(value, "after, and longer");
    EXPECT_EQ(DOV0_GetEnv("DOV_TEST", nullptr), value);
    DOV0_PutEnv("DOV_TEST=");
    EXPECT_STREQ(value, "");
}

TEST(GetEnv, TakesNamesOfAnyLength)
{
    for (const size_t length : {255U, 256U, 257U, 100000U}) {
        GuardedBuffer name(std::string(length, 'N'));
        EXPECT_STREQ(DOV0_GetEnv(name.text(), "d"), "d");
        DOV0_PutEnv((std::string(length, 'N') + "=v").c_str());
        EXPECT_STREQ(DOV0_GetEnv(name.text(), "d"), length <= 255 ? "v" : "d");
    }
}

TEST(GetEnv, ReturnsProcessValuesOfAnyLength)
{
    const std::string longValue(100000, 'v');
    setenv("DOV_TEST", longValue.c_str(), 1);
    EXPECT_EQ(DOV0_GetEnv("DOV_TEST", nullptr), longValue);
    EXPECT_EQ(traceOfLookUp("DOV_TEST", nullptr, Trace::Detail),
              (TraceLog{valueOf("DOV_TEST", longValue.c_str())}));
}

TEST(GetEnv, TakesNothingFromTheHeap)
{
    DOV0_PutEnv("DOV_TEST=v");
    EXPECT_EQ(heapRequestsOf([] {
                  DOV0_GetEnv("DOV_TEST", nullptr);
                  DOV0_GetEnv("DOV_UNSET", nullptr);
                  DOV0_GetEnv("PATH", nullptr);
              }),
              0);
}

TEST(GetEnv, HoldsNoLockWhileItLooksIntoTheProcessEnvironment)
{
    lookUpInstead = [](const char *) -> const char * {
        DOV0_PutEnv("DOV_TEST=set on the way"); // would never get the lock
        return nullptr;
    };
    EXPECT_STREQ(DOV0_GetEnv("DOV_TEST", "d"), "set on the way");
    lookUpInstead = nullptr;
}

TEST(GetEnv, AgreesWithAModel)
{
    clearenv(); // shells define "_"
    std::mt19937 random(20);
    const auto below = [&](unsigned bound) { return static_cast<unsigned>(random()) % bound; };
    const std::string alphabet = "aAbBzZ0_\xE9 ";
    std::map<std::string, std::string> variables;
    std::map<std::string, const char *> addresses;
    for (int round = 0; round < 20000; ++round) {
        std::string name(below(4), ' ');
        for (char &character : name) {
            character = alphabet[below(static_cast<unsigned>(alphabet.size()))];
        }
        if (below(3) == 0) {
            std::string value(below(4) == 0 ? below(256) : below(3), static_cast<char>('!' + below(90)));
            DOV0_PutEnv((name + "=" + value).c_str());
            variables[upper(name)] = value;
        } else {
            const char *const defaultValue = below(2) == 0 ? "default" : nullptr;
            const auto known = variables.find(name);
            const char *result = DOV0_GetEnv(name.c_str(), defaultValue);
            if (known == variables.end() || known->second.empty()) {
                ASSERT_EQ(result, defaultValue) << name;
            } else {
                ASSERT_STREQ(result, known->second.c_str()) << name;
                ASSERT_EQ(addresses.try_emplace(name, result).first->second, result) << name;
            }
        }
    }
}

TEST(GetEnv, InitializesItsLockWithTheFirstCallOfEither)
{
    EXPECT_EQ(lockInitializations, 0);
    DOV0_GetEnv(nullptr, nullptr);
    EXPECT_EQ(lockInitializations, 1);
    DOV0_GetEnv("DOV_TEST", nullptr);
    DOV0_PutEnv("DOV_TEST=v");
    EXPECT_EQ(lockInitializations, 1);
}

TEST(GetEnv, FindsTheLockInitializedByPutEnv)
{
    DOV0_PutEnv("no equals sign");
    EXPECT_EQ(lockInitializations, 1);
    DOV0_PutEnv("DOV_TEST=v");
    DOV0_GetEnv("DOV_TEST", nullptr);
    EXPECT_EQ(lockInitializations, 1);
}

namespace {

// Four threads set variables while four others look them up until the end, from the first call on.
void lookUpWhileOthersSet(int rounds)
{
    std::latch start(8);
    std::atomic<int> setters = 4;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&, number] {
            const std::string own = "OWN" + std::to_string(number);
            start.arrive_and_wait();
            for (int round = 0; round < rounds; ++round) {
                DOV0_PutEnv(("shared=" + std::string(1 + static_cast<size_t>(round) % 40, 's')).c_str());
                DOV0_PutEnv((own + "=" + std::to_string(round)).c_str());
                wrong += DOV0_GetEnv(own.c_str(), "none") == std::to_string(round) ? 0 : 1;
            }
            setters.fetch_sub(1, std::memory_order_relaxed);
        });
        threads.emplace_back([&] {
            const char defaultValue[] = "none";
            start.arrive_and_wait();
            while (setters.load(std::memory_order_relaxed) > 0) {
                wrong += DOV0_GetEnv("UNSET", defaultValue) == defaultValue ? 0 : 1;
                DOV0_GetEnv("SHARED", nullptr);
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(lockInitializations, 1);
    EXPECT_NE(DOV0_GetEnv("SHARED", nullptr), NotFound);
}

} // namespace

TEST(GetEnv, IsUsedWhileOtherThreadsSetVariables)
{
    lookUpWhileOthersSet(2000);
}

TEST(GetEnv, ShowsNoHalfWrittenValue)
{
    setTraceLevel(Function, Trace::Detail);
    lookUpWhileOthersSet(500);
    setTraceLevel(0);
    const std::string start = message(Function, "Env <SHARED> value <");
    int shown = 0;
    for (const std::string &line : takeTrace()) {
        if (line.compare(0, start.size(), start) == 0) {
            const size_t end = line.find_first_not_of('s', start.size());
            ASSERT_EQ(line.substr(end), ">\n");
            ++shown;
        }
    }
    EXPECT_GT(shown, 0);
}
