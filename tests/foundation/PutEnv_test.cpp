#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <cstdlib>
#include <latch>
#include <thread>

namespace {

constexpr char Function[] = "DOV0_PutEnv";
constexpr char GetStorage[] = "DOV0_GetStorage";
constexpr char FreeStorage[] = "DOV0_FreeStorage";
constexpr char ToUpper[] = "DOV0_ConvertStringToUpper";

// A pointer and two areas of 256 bytes.
constexpr int EntrySize = sizeof(void *) + 256 + 256;

// What all bits show but that of the storage accounting, whose figures depend on the heap.
constexpr uint32_t AllButState = Trace::All & ~Trace::State;

std::string badSyntax(const char *text)
{
    return message(Function, "*****Error: Invalid environment syntax ignored. <%s>\n", text);
}

std::string tooLong(const char *text)
{
    return message(Function, "*****Error: Environment specification <%s> exceeds maximum size %d\n", text,
                   255);
}

std::string allocated(const void *entry, const char *text)
{
    return message(Function, "Allocated NewEnv @%p length %d for EnvString <%s>\n", entry, EntrySize, text);
}

std::string freeing(const void *entry)
{
    return message(Function, "Freeing NewEnv @%p\n", entry);
}

std::string added(const char *name, const char *value)
{
    return message(Function, "New local Env <%s> value <%s> added to array\n", name, value);
}

std::string updated(const char *name, const char *before, const char *after)
{
    return message(Function, "Env <%s> value updated from <%s> to <%s>\n", name, before, after);
}

// The entry that a value stands in, behind the link and the name.
const char *entryOf(const char *value)
{
    return value - 256 - sizeof(void *);
}

// The address in the message about a new entry, which may be free again by now.
const void *newEntry(const TraceLog &log)
{
    const std::string start = message(Function, "Allocated NewEnv @");
    for (const std::string &line : log) {
        if (line.compare(0, start.size(), start) == 0) {
            return reinterpret_cast<const void *>(std::strtoull(line.c_str() + start.size(), nullptr, 16));
        }
    }
    return nullptr;
}

// The calls of others that every new entry begins with, and those that end one that is not needed.
TraceLog storageTaken(const void *block)
{
    return {entry(GetStorage),
            message(GetStorage, "Allocated storage at address @%p size %d\n", block, EntrySize),
            leave(GetStorage, block)};
}

TraceLog storageFreed(const void *block)
{
    return {entry(FreeStorage), message(FreeStorage, "Freeing storage at address @%p\n", block),
            leave(FreeStorage)};
}

TraceLog upperCased(const char *name, const char *address, const char *upperName)
{
    return {entry(ToUpper), message(ToUpper, "InString <%s>\n", name),
            message(ToUpper, "OutString <%s>\n", upperName), leave(ToUpper, address)};
}

TraceLog joined(const std::vector<TraceLog> &parts)
{
    TraceLog whole;
    for (const TraceLog &part : parts) {
        whole.insert(whole.end(), part.begin(), part.end());
    }
    return whole;
}

// The value, which must be set.
std::string valueOf(const char *name)
{
    const char *value = DOV0_GetEnv(name, nullptr);
    return value != nullptr ? value : "not set";
}

} // namespace

TEST(PutEnv, StoresTheNameInUpperCaseAndTheValueAsGiven)
{
    DOV0_PutEnv("dov_Test1=Some Value");
    EXPECT_EQ(valueOf("DOV_TEST1"), "Some Value");
}

TEST(PutEnv, NeverChangesTheProcessEnvironment)
{
    setenv("DOV_TEST", "process", 1);
    DOV0_PutEnv("DOV_TEST=local");
    DOV0_PutEnv("DOV_OTHER=local");
    EXPECT_STREQ(getenv("DOV_TEST"), "process");
    EXPECT_EQ(getenv("DOV_OTHER"), nullptr);
    unsetenv("DOV_TEST");
    EXPECT_EQ(valueOf("DOV_TEST"), "local");
}

TEST(PutEnv, DividesAtTheFirstEqualsSign)
{
    DOV0_PutEnv("A=b=c");
    EXPECT_EQ(valueOf("A"), "b=c");
    DOV0_PutEnv("B==");
    EXPECT_EQ(valueOf("B"), "=");
    DOV0_PutEnv(" C =  c ");
    EXPECT_EQ(valueOf(" C "), "  c ");
}

TEST(PutEnv, StoresAnEmptyValue)
{
    DOV0_PutEnv("X=");
    EXPECT_EQ(from(Function, traceAt(Trace::State, [] { DOV0_PutEnv("X=1"); })),
              (TraceLog{updated("X", "", "1")}));
}

TEST(PutEnv, StoresAnEmptyNameAfterTheErrorOfTheUpperCasing)
{
    const TraceLog log = traceAt(AllButState, [] { DOV0_PutEnv("=v"); });
    EXPECT_EQ(valueOf(""), "v");
    const char *block = entryOf(DOV0_GetEnv("", nullptr));
    EXPECT_EQ(log, joined({{entry(Function)},
                           storageTaken(block),
                           {allocated(block, "=v"), entry(ToUpper),
                            message(ToUpper, "***** Input string is NULL\n"), leave(ToUpper, nullptr),
                            leave(Function)}}));
    DOV0_PutEnv("=w");
    EXPECT_EQ(valueOf(""), "w");
    DOV0_PutEnv("=");
    EXPECT_EQ(valueOf(""), "not set");
}

TEST(PutEnv, RefusesATextWithoutAnEqualsSign)
{
    for (const char *text : {"", "A", "no equals sign"}) {
        EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_PutEnv(text); }),
                  (TraceLog{entry(Function), badSyntax(text), leave(Function)}));
        EXPECT_EQ(bitsThatShow(badSyntax(text), [&] { DOV0_PutEnv(text); }), Trace::Error);
        EXPECT_EQ(DOV0_GetEnv(text, nullptr), nullptr);
    }
    const std::string longText(100000, 'A');
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_PutEnv(longText.c_str()); }),
              (TraceLog{entry(Function), badSyntax(longText.c_str()), leave(Function)}));
}

TEST(PutEnv, RefusesNull)
{
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_PutEnv(nullptr); }),
              (TraceLog{entry(Function), badSyntax("(null)"), leave(Function)}));
}

TEST(PutEnv, TracesANewVariable)
{
    const TraceLog log = traceAt(AllButState, [] { DOV0_PutEnv("abc=1"); });
    const char *block = entryOf(DOV0_GetEnv("ABC", nullptr));
    const char *name = block + sizeof(void *);
    EXPECT_EQ(log, joined({{entry(Function)},
                           storageTaken(block),
                           {allocated(block, "abc=1")},
                           upperCased("abc", name, "ABC"),
                           {leave(Function)}}));
}

TEST(PutEnv, TracesAnUpdate)
{
    DOV0_PutEnv("abc=1");
    const TraceLog log = traceAt(AllButState, [] { DOV0_PutEnv("Abc=2"); });
    const auto *block = static_cast<const char *>(newEntry(log));
    EXPECT_EQ(log, joined({{entry(Function)},
                           storageTaken(block),
                           {allocated(block, "Abc=2")},
                           upperCased("Abc", block + sizeof(void *), "ABC"),
                           {freeing(block)},
                           storageFreed(block),
                           {leave(Function)}}));
}

TEST(PutEnv, TracesTheArrayUnderTheStateBit)
{
    const auto traced = [](const char *text) {
        return traceOf(Function, Trace::All, [&] { DOV0_PutEnv(text); });
    };
    const TraceLog first = traced("abc=1");
    EXPECT_EQ(first, (TraceLog{entry(Function), allocated(newEntry(first), "abc=1"), added("ABC", "1"),
                               leave(Function)}));
    const TraceLog second = traced("abd=x");
    EXPECT_EQ(second, (TraceLog{entry(Function), allocated(newEntry(second), "abd=x"), added("ABD", "x"),
                                leave(Function)}));
    const TraceLog third = traced("aBc=22");
    EXPECT_EQ(third, (TraceLog{entry(Function), allocated(newEntry(third), "aBc=22"),
                               updated("ABC", "1", "22"), freeing(newEntry(third)), leave(Function)}));
    EXPECT_EQ(valueOf("ABC"), "22");
    EXPECT_EQ(valueOf("ABD"), "x");
}

TEST(PutEnv, ShowsEachMessageUnderItsBitOnly)
{
    for (uint32_t bit = 1; bit <= 0x8000; bit <<= 1) {
        const std::string name = "N" + std::to_string(bit);
        const std::string first = name + "=1";
        const std::string second = name + "=2";
        TraceLog expected;
        TraceLog log = traceOf(Function, bit, [&] { DOV0_PutEnv(first.c_str()); });
        if (bit == Trace::Flow) {
            expected = {entry(Function), leave(Function)};
        } else if (bit == Trace::Storage) {
            expected = {allocated(newEntry(log), first.c_str())};
        } else if (bit == Trace::State) {
            expected = {added(name.c_str(), "1")};
        }
        EXPECT_EQ(log, expected) << bit;
        log = traceOf(Function, bit, [&] { DOV0_PutEnv(second.c_str()); });
        if (bit == Trace::Storage) {
            expected = {allocated(newEntry(log), second.c_str()), freeing(newEntry(log))};
        } else if (bit == Trace::State) {
            expected = {updated(name.c_str(), "1", "2")};
        }
        EXPECT_EQ(log, expected) << bit;
    }
}

TEST(PutEnv, AcceptsNamesAndValuesOf255Characters)
{
    const std::string name(255, 'n');
    const std::string value(255, 'v');
    GuardedBuffer text(name + "=" + value);
    DOV0_PutEnv(text.text());
    EXPECT_EQ(valueOf(std::string(255, 'N').c_str()), value);
    DOV0_PutEnv((name + "=").c_str());
    DOV0_PutEnv((name + "=w").c_str());
    EXPECT_EQ(valueOf(std::string(255, 'N').c_str()), "w");
    DOV0_PutEnv(("short=" + value).c_str());
    EXPECT_EQ(valueOf("SHORT"), value);
}

TEST(PutEnv, RefusesLongerNamesAndValues)
{
    for (const size_t length : {256U, 257U, 100000U}) {
        const std::string texts[] = {
            std::string(length, 'n') + "=v",
            "DOV_TEST=" + std::string(length, 'v'),
            std::string(length, 'n') + "=" + std::string(length, 'v'),
            "DOV_TEST=" + std::string(length - 1, 'v') + "=",
        };
        for (const std::string &text : texts) {
            GuardedBuffer buffer(text);
            const TraceLog log = traceAt(AllButState, [&] { DOV0_PutEnv(buffer.text()); });
            const void *block = newEntry(log);
            EXPECT_EQ(log, joined({{entry(Function)},
                                   storageTaken(block),
                                   {allocated(block, text.c_str()), tooLong(text.c_str())},
                                   storageFreed(block),
                                   {leave(Function)}}));
            EXPECT_EQ(bitsThatShow(tooLong(text.c_str()), [&] { DOV0_PutEnv(buffer.text()); }), Trace::Error);
        }
        EXPECT_EQ(valueOf("DOV_TEST"), "not set");
        EXPECT_EQ(valueOf(std::string(length, 'N').c_str()), "not set");
    }
}

TEST(PutEnv, KeepsTheOldValueWhenTheNewOneIsRefused)
{
    DOV0_PutEnv("DOV_TEST=old");
    DOV0_PutEnv(("DOV_TEST=" + std::string(256, 'v')).c_str());
    DOV0_PutEnv("DOV_TEST");
    EXPECT_EQ(valueOf("DOV_TEST"), "old");
}

TEST(PutEnv, LeavesNothingOfALongerValueBehindAShorterOne)
{
    DOV0_PutEnv(("DOV_TEST=" + std::string(255, 'v')).c_str());
    DOV0_PutEnv("DOV_TEST=w");
    EXPECT_EQ(valueOf("DOV_TEST"), "w");
    DOV0_PutEnv(("DOV_TEST=" + std::string(255, 'x')).c_str());
    EXPECT_EQ(valueOf("DOV_TEST"), std::string(255, 'x'));
}

TEST(PutEnv, EndsAfterTheMessageOfTheStorageServiceWhenThereIsNone)
{
    EXPECT_EQ(heapRequestsOf([] { DOV0_PutEnv("DOV_COUNTED=v"); }), 1);
    TraceLog log = traceAt(AllButState, [] { withoutHeap([] { DOV0_PutEnv("DOV_TEST=v"); }); });
    EXPECT_EQ(log, (TraceLog{entry(Function), entry(GetStorage),
                             message(GetStorage, "*****Unable to obtain storage, size %d\n", EntrySize),
                             leave(GetStorage, nullptr), leave(Function)}));
    EXPECT_EQ(valueOf("DOV_TEST"), "not set");
    DOV0_PutEnv("DOV_TEST=old");
    EXPECT_TRUE(withHeapFailure(1, [] { DOV0_PutEnv("DOV_TEST=new"); }));
    EXPECT_EQ(valueOf("DOV_TEST"), "old");
}

TEST(PutEnv, GivesBackWhatAnUpdateTook)
{
    DOV0_PutEnv("DOV_TEST=1");
    const TraceLog log = traceAt(Trace::State, [] {
        DOV0_PutEnv("DOV_TEST=2");
        DOV0_PutEnv("DOV_TEST=3");
        DOV0_PutEnv(("DOV_TEST=" + std::string(256, 'v')).c_str());
    });
    int freed = 0;
    for (const std::string &line : from(FreeStorage, log)) {
        EXPECT_EQ(line.find(message(FreeStorage, "After free, Total Working Storage Size %.2fK, WSB ", 0.0)),
                  0U);
        ++freed;
    }
    EXPECT_EQ(freed, 3);
}

TEST(PutEnv, KeepsOneEntryOfANameThatManyThreadsSetFirst)
{
    std::latch start(16);
    std::vector<std::thread> threads;
    setTraceLevel(Function, Trace::State);
    for (int number = 0; number < 16; ++number) {
        threads.emplace_back([&, number] {
            start.arrive_and_wait();
            for (int variable = 0; variable < 20; ++variable) {
                DOV0_PutEnv(("race" + std::to_string(variable) + "=" + std::to_string(number)).c_str());
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    setTraceLevel(0);
    int additions = 0;
    int updates = 0;
    for (const std::string &line : takeTrace()) {
        (line.find("added to array") != std::string::npos ? additions : updates) += 1;
    }
    EXPECT_EQ(additions, 20);
    EXPECT_EQ(updates, 15 * 20);
    for (int variable = 0; variable < 20; ++variable) {
        const int value = std::stoi(valueOf(("RACE" + std::to_string(variable)).c_str()));
        EXPECT_GE(value, 0);
        EXPECT_LT(value, 16);
    }
}
