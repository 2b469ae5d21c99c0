#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <dlfcn.h>
#include <latch>
#include <map>
#include <mutex>
#include <random>
#include <thread>

namespace {

constexpr char Function[] = "DOV0_strtok";
const char *const NoToken = nullptr;

std::atomic<int> identityRequests = 0;
std::atomic<int> lockRequests = 0;

std::string found(int threadID, int index)
{
    return message(Function, "Found a match on threadID %d in arrayOfSavePtr[%d]\n", threadID, index);
}

std::string available(int index)
{
    return message(Function, "Found available arrayOfSavePtr[%d] with threadID=0\n", index);
}

const std::string noSlots = message(Function, "***** No slots available in the arrayOfSavePtr\n");

std::string reusing(int index, const void *savePointer)
{
    return message(Function, "Reusing savePointer index %d @%p\n", index, savePointer);
}

std::string usingText(int threadID, int index, const char *text)
{
    return message(Function, "Using threadID %d index %d for input string <%s>\n", threadID, index, text);
}

std::string callingWithText(const char *text, const char *delimiters, int index)
{
    return message(Function,
                   "Calling strtok_r with string1 <%s> string2 <%s> arrayOfSavePtr[%d].savePointer @%p\n",
                   text, delimiters, index, nullptr);
}

std::string callingWithNull(const char *delimiters)
{
    return message(Function, "Calling strtok_r with NULL string1 and string2 <%s>\n", delimiters);
}

std::string returningToken(const char *token, int index, const void *savePointer)
{
    return message(Function, "Returning tok <%s> savePointer index %d @%p\n", token, index, savePointer);
}

const std::string returningNull = message(Function, "Returning NULL\n");

std::string releasing(int index, int threadID)
{
    return message(Function, "Setting arrayOfSavePtr[%d].threadID %ld to 0\n", index,
                   static_cast<long>(threadID));
}

// A thread that does what it is told, one call after the other, and lives until it is told to end.
class Worker {
public:
    Worker() : thread([this] { work(); }) {}
    Worker(const Worker &) = delete;
    Worker &operator=(const Worker &) = delete;

    ~Worker()
    {
        run(nullptr);
        thread.join();
    }

    // Returns when the call has been made.
    void run(const std::function<void()> &call)
    {
        std::unique_lock<std::mutex> guard(lock);
        next = call;
        isDone = false;
        changed.notify_all();
        changed.wait(guard, [this] { return isDone; });
    }

    char *token(char *text, const char *delimiters)
    {
        char *result = nullptr;
        run([&] { result = DOV0_strtok(text, delimiters); });
        return result;
    }

    int threadID()
    {
        int result = 0;
        run([&] { result = PLT1_ThreadID(); });
        return result;
    }

private:
    void work()
    {
        std::unique_lock<std::mutex> guard(lock);
        for (bool goesOn = true; goesOn;) {
            changed.wait(guard, [this] { return !isDone; });
            goesOn = next != nullptr;
            if (goesOn) {
                next();
            }
            isDone = true;
            changed.notify_all();
        }
    }

    std::mutex lock;
    std::condition_variable changed;
    std::function<void()> next;
    bool isDone = true;
    std::thread thread;
};

using Workers = std::vector<std::unique_ptr<Worker>>;

Workers makeWorkers(size_t count)
{
    Workers workers;
    for (size_t i = 0; i < count; ++i) {
        workers.push_back(std::make_unique<Worker>());
    }
    return workers;
}

// The slot that a worker is given for a text that it does not finish.
std::string claimOf(Worker &worker, char *text)
{
    const TraceLog log = traceAt(Trace::Detail, [&] { worker.token(text, ","); });
    return log.empty() ? "nothing" : log.front();
}

} // namespace

extern "C" int32_t PLT1_ThreadID(void)
{
    static auto *const supplied = reinterpret_cast<int32_t (*)()>(dlsym(RTLD_NEXT, "PLT1_ThreadID"));
    ++identityRequests;
    return supplied();
}

extern "C" void PLT1_GetLock(PLT1_Lock *lock)
{
    static auto *const supplied = reinterpret_cast<void (*)(PLT1_Lock *)>(dlsym(RTLD_NEXT, "PLT1_GetLock"));
    ++lockRequests;
    supplied(lock);
}

TEST(strtok, GivesOneTokenPerCall)
{
    GuardedBuffer text("a,b");
    EXPECT_EQ(DOV0_strtok(text.text(), ","), text.text());
    EXPECT_STREQ(text.text(), "a");
    EXPECT_EQ(DOV0_strtok(nullptr, ","), text.text() + 2);
    EXPECT_STREQ(text.text() + 2, "b");
    EXPECT_EQ(DOV0_strtok(nullptr, ","), NoToken);
}

TEST(strtok, SkipsLeadingAndRepeatedDelimiters)
{
    char text[] = ",;a,;,b;";
    EXPECT_STREQ(DOV0_strtok(text, ",;"), "a");
    EXPECT_STREQ(DOV0_strtok(nullptr, ",;"), "b");
    EXPECT_EQ(DOV0_strtok(nullptr, ",;"), NoToken);
}

TEST(strtok, TakesOtherDelimitersOnEachCall)
{
    char text[] = "name=one,two;three";
    EXPECT_STREQ(DOV0_strtok(text, "="), "name");
    EXPECT_STREQ(DOV0_strtok(nullptr, ","), "one");
    EXPECT_STREQ(DOV0_strtok(nullptr, ";"), "two");
    EXPECT_STREQ(DOV0_strtok(nullptr, ""), "three");
    EXPECT_EQ(DOV0_strtok(nullptr, ""), NoToken);
}

TEST(strtok, TracesAWholeText)
{
    char text[] = "a,b";
    char given[] = "a,b";
    const int self = PLT1_ThreadID();
    char *first = nullptr;
    char *second = nullptr;
    EXPECT_EQ(
        traceAt(Trace::All, [&] { first = DOV0_strtok(text, ","); }),
        (TraceLog{entry(Function), available(0), usingText(self, 0, given), callingWithText(given, ",", 0),
                  returningToken("a", 0, text + 2), leave(Function, text)}));
    EXPECT_EQ(traceAt(Trace::All, [&] { second = DOV0_strtok(nullptr, ","); }),
              (TraceLog{entry(Function), found(self, 0), reusing(0, text + 2), callingWithNull(","),
                        returningToken("b", 0, text + 3), leave(Function, text + 2)}));
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_strtok(nullptr, ","), NoToken); }),
              (TraceLog{entry(Function), found(self, 0), reusing(0, text + 3), callingWithNull(","),
                        returningNull, releasing(0, self), leave(Function, nullptr)}));
    EXPECT_EQ(first, text);
    EXPECT_EQ(second, text + 2);
}

TEST(strtok, LeavesOutMessagesAboutEmptyTexts)
{
    const int self = PLT1_ThreadID();
    char empty[] = "";
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_strtok(empty, ","), NoToken); }),
              (TraceLog{entry(Function), available(0), returningNull, releasing(0, self),
                        leave(Function, nullptr)}));
    char text[] = "abc";
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_STREQ(DOV0_strtok(text, ""), "abc"); }),
              (TraceLog{entry(Function), available(0), usingText(self, 0, "abc"),
                        returningToken("abc", 0, text + 3), leave(Function, text)}));
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_strtok(nullptr, ""), NoToken); }),
              (TraceLog{entry(Function), found(self, 0), reusing(0, text + 3), returningNull,
                        releasing(0, self), leave(Function, nullptr)}));
}

TEST(strtok, TracesATextOfDelimitersOnly)
{
    const int self = PLT1_ThreadID();
    char text[] = ",,";
    EXPECT_EQ(
        traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_strtok(text, ","), NoToken); }),
        (TraceLog{entry(Function), available(0), usingText(self, 0, ",,"), callingWithText(",,", ",", 0),
                  returningNull, releasing(0, self), leave(Function, nullptr)}));
}

TEST(strtok, ShowsEachMessageUnderItsBitOnly)
{
    const int self = PLT1_ThreadID();
    char text[16];
    const auto wholeText = [&] {
        std::strcpy(text, "a,b");
        DOV0_strtok(text, ",");
        DOV0_strtok(nullptr, ",");
        DOV0_strtok(nullptr, ",");
    };
    for (const std::string &detail :
         {available(0), found(self, 0), usingText(self, 0, "a,b"), callingWithText("a,b", ",", 0),
          reusing(0, text + 2), returningToken("a", 0, text + 2), returningToken("b", 0, text + 3),
          returningNull, releasing(0, self)}) {
        EXPECT_EQ(bitsThatShow(detail, wholeText), Trace::Detail) << detail;
    }
    EXPECT_EQ(bitsThatShow(callingWithNull(","), wholeText), Trace::State);
    EXPECT_EQ(traceAt(Trace::All & ~(Trace::Detail | Trace::State | Trace::Flow), wholeText), TraceLog{});
    EXPECT_EQ(traceAt(Trace::State, wholeText), (TraceLog{callingWithNull(","), callingWithNull(",")}));
}

TEST(strtok, BeginsANewTextInTheSlotOfAnUnfinishedOne)
{
    const int self = PLT1_ThreadID();
    char first[] = "a,b,c";
    char second[] = "x,y";
    EXPECT_STREQ(DOV0_strtok(first, ","), "a");
    EXPECT_EQ(traceAt(Trace::Detail, [&] { EXPECT_STREQ(DOV0_strtok(second, ","), "x"); }),
              (TraceLog{found(self, 0), usingText(self, 0, "x,y"), callingWithText("x,y", ",", 0),
                        returningToken("x", 0, second + 2)}));
    EXPECT_STREQ(DOV0_strtok(nullptr, ","), "y");
    EXPECT_EQ(DOV0_strtok(nullptr, ","), NoToken);
    EXPECT_EQ(std::memcmp(first, "a\0b,c", sizeof first), 0);
}

TEST(strtok, FreesTheSlotOfAnUnfinishedTextByAnEmptyOne)
{
    const int self = PLT1_ThreadID();
    char first[] = "a,b,c";
    char empty[] = "";
    EXPECT_STREQ(DOV0_strtok(first, ","), "a");
    EXPECT_EQ(traceAt(Trace::Detail, [&] { EXPECT_EQ(DOV0_strtok(empty, ","), NoToken); }),
              (TraceLog{found(self, 0), returningNull, releasing(0, self)}));
}

TEST(strtok, GivesNullWhenThereIsNoTextToContinue)
{
    const int self = PLT1_ThreadID();
    EXPECT_EQ(traceAt(Trace::All, [] { EXPECT_EQ(DOV0_strtok(nullptr, ","), NoToken); }),
              (TraceLog{entry(Function), available(0), reusing(0, nullptr), callingWithNull(","),
                        returningNull, releasing(0, self), leave(Function, nullptr)}));
    {
        // The text ends with its page, and is gone when the next call comes.
        GuardedBuffer text("a");
        EXPECT_STREQ(DOV0_strtok(text.text(), ","), "a");
        EXPECT_EQ(DOV0_strtok(nullptr, ","), NoToken);
        const void *end = text.text() + 1;
        EXPECT_EQ(traceAt(Trace::Detail, [] { EXPECT_EQ(DOV0_strtok(nullptr, ","), NoToken); }),
                  (TraceLog{available(0), reusing(0, end), returningNull, releasing(0, self)}));
    }
    EXPECT_EQ(DOV0_strtok(nullptr, ","), NoToken);
    Worker other;
    EXPECT_EQ(other.token(nullptr, ","), NoToken); // not the end of another thread's text
}

TEST(strtok, TakesNullDelimitersForNone)
{
    char text[] = "a,b";
    EXPECT_STREQ(DOV0_strtok(text, ","), "a");
    EXPECT_STREQ(DOV0_strtok(nullptr, nullptr), "b");
    EXPECT_EQ(DOV0_strtok(nullptr, nullptr), NoToken);
    char whole[] = "c,d";
    EXPECT_STREQ(DOV0_strtok(whole, nullptr), "c,d");
    EXPECT_EQ(DOV0_strtok(nullptr, nullptr), NoToken);
    EXPECT_EQ(DOV0_strtok(nullptr, nullptr), NoToken);
}

TEST(strtok, AsksForTheThreadOnEachCall)
{
    char text[] = "a,b";
    identityRequests = 0;
    DOV0_strtok(text, ",");
    EXPECT_EQ(identityRequests, 1);
    DOV0_strtok(nullptr, ",");
    EXPECT_EQ(identityRequests, 2);
    DOV0_strtok(nullptr, ",");
    EXPECT_EQ(identityRequests, 3);
}

TEST(strtok, TakesALockToClaimASlotAndToReleaseItOnly)
{
    const auto locksOf = [](char *text) {
        lockRequests = 0;
        DOV0_strtok(text, ",");
        return lockRequests.load();
    };
    char text[] = "a,b";
    char next[] = "x";
    EXPECT_EQ(locksOf(text), 1);
    EXPECT_EQ(locksOf(nullptr), 0);
    EXPECT_EQ(locksOf(next), 0);
    EXPECT_EQ(locksOf(nullptr), 1);
}

TEST(strtok, TakesNothingFromTheHeap)
{
    char text[] = "a,b";
    EXPECT_EQ(heapRequestsOf([&] {
                  DOV0_strtok(text, ",");
                  DOV0_strtok(nullptr, ",");
                  DOV0_strtok(nullptr, ",");
              }),
              0);
}

TEST(strtok, KeepsThePositionsOfAlternatingThreadsApart)
{
    Worker first;
    Worker second;
    char numbers[] = "1,2,3";
    char letters[] = "a b c d";
    EXPECT_STREQ(first.token(numbers, ","), "1");
    EXPECT_STREQ(second.token(letters, " "), "a");
    EXPECT_STREQ(first.token(nullptr, ","), "2");
    EXPECT_STREQ(second.token(nullptr, " "), "b");
    EXPECT_STREQ(second.token(nullptr, " "), "c");
    EXPECT_STREQ(first.token(nullptr, ","), "3");
    EXPECT_EQ(first.token(nullptr, ","), NoToken);
    EXPECT_STREQ(second.token(nullptr, " "), "d");
    EXPECT_EQ(second.token(nullptr, " "), NoToken);
}

TEST(strtok, GivesTheLowestFreeSlot)
{
    Workers workers = makeWorkers(5);
    char texts[5][4] = {"a,b", "a,b", "a,b", "a,b", "a,b"};
    EXPECT_EQ(claimOf(*workers[0], texts[0]), available(0));
    EXPECT_EQ(claimOf(*workers[1], texts[1]), available(1));
    EXPECT_EQ(claimOf(*workers[2], texts[2]), available(2));
    char empty[] = "";
    workers[1]->token(empty, ",");
    workers[0]->token(empty, ",");
    EXPECT_EQ(claimOf(*workers[3], texts[3]), available(0));
    EXPECT_EQ(claimOf(*workers[4], texts[4]), available(1));
    EXPECT_EQ(claimOf(*workers[0], texts[0]), available(3));
    EXPECT_EQ(claimOf(*workers[2], texts[2]), found(workers[2]->threadID(), 2));
}

TEST(strtok, KeepsTheSlotOfAThreadThatNeverCameToTheEnd)
{
    char abandoned[] = "a,b";
    char own[] = "x,y";
    std::thread([&] { DOV0_strtok(abandoned, ","); }).join();
    EXPECT_EQ(traceAt(Trace::Detail, [&] { DOV0_strtok(own, ","); }).front(), available(1));
}

TEST(strtok, NamesTheNumberOfSlots)
{
    EXPECT_EQ(DOV0_STRTOK_SLOTS, 256);
}

TEST(strtok, HasNoSlotForThe257thThread)
{
    Workers workers = makeWorkers(256);
    std::vector<std::string> texts(256);
    for (size_t i = 0; i < workers.size(); ++i) {
        texts[i] = std::to_string(i) + ",second";
        EXPECT_EQ(claimOf(*workers[i], texts[i].data()), available(static_cast<int>(i)));
        EXPECT_EQ(texts[i].c_str(), std::to_string(i)); // its comma is gone
    }
    char text[] = "a,b";
    const auto refused = [&] { EXPECT_EQ(DOV0_strtok(text, ","), NoToken); };
    EXPECT_EQ(traceAt(Trace::All, refused), (TraceLog{entry(Function), noSlots, leave(Function, nullptr)}));
    EXPECT_EQ(bitsThatShow(noSlots, refused), Trace::Error);
    EXPECT_EQ(traceAt(Trace::All & ~(Trace::Error | Trace::Flow), refused), TraceLog{});
    EXPECT_STREQ(text, "a,b");
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_strtok(nullptr, ","), NoToken); }),
              (TraceLog{entry(Function), noSlots, leave(Function, nullptr)}));

    for (const size_t i : {255U, 100U}) {
        EXPECT_STREQ(workers[i]->token(nullptr, ","), "second");
        EXPECT_EQ(workers[i]->token(nullptr, ","), NoToken);
    }
    EXPECT_EQ(traceAt(Trace::Detail, [&] { EXPECT_STREQ(DOV0_strtok(text, ","), "a"); }).front(),
              available(100));
    for (size_t i = 0; i < workers.size(); ++i) {
        if (i != 255 && i != 100) {
            EXPECT_STREQ(workers[i]->token(nullptr, ","), "second");
        }
    }
}

TEST(strtok, GivesEachSlotToOneOfManyThreadsThatComeAtOnce)
{
    constexpr int Threads = 300;
    std::latch start(Threads);
    std::latch served(Threads);
    std::atomic<int> claimed = 0;
    std::atomic<int> refused = 0;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    setTraceLevel(Trace::Detail | Trace::Error);
    for (int number = 0; number < Threads; ++number) {
        threads.emplace_back([&, number] {
            std::string text = std::to_string(number) + "," + std::to_string(-number);
            start.arrive_and_wait();
            const char *token = DOV0_strtok(text.data(), ",");
            (token != nullptr ? claimed : refused) += 1;
            if (token != nullptr && token != std::to_string(number)) {
                ++wrong;
            }
            served.arrive_and_wait(); // everybody holds what it got
            if (token != nullptr) {
                const char *second = DOV0_strtok(nullptr, ",");
                if (second == nullptr || second != std::to_string(-number) ||
                    DOV0_strtok(nullptr, ",") != nullptr) {
                    ++wrong;
                }
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    setTraceLevel(0);
    EXPECT_EQ(claimed, 256);
    EXPECT_EQ(refused, Threads - 256);
    EXPECT_EQ(wrong, 0);
    std::map<std::string, int> seen;
    for (const std::string &line : takeTrace()) {
        ++seen[line];
    }
    EXPECT_EQ(seen[noSlots], Threads - 256);
    for (int index = 0; index < 256; ++index) {
        EXPECT_EQ(seen[available(index)], 1);
    }
    char text[] = "a,b";
    EXPECT_EQ(traceAt(Trace::Detail, [&] { DOV0_strtok(text, ","); }).front(), available(0));
}

namespace {

// Texts over a few characters, so that delimiters come often, also at the ends and in a row.
std::string randomText(std::mt19937 &random, size_t longest)
{
    const std::string alphabet = ",;= ab\xFF";
    std::string text(random() % (longest + 1), ' ');
    for (char &character : text) {
        character = alphabet[random() % alphabet.size()];
    }
    return text;
}

// Splits a text with this function and with the C library's, by delimiters that change from call to call.
// Some texts are left before their end. Returns whether all tokens and the bytes left in both texts are the
// same.
bool agreesWithTheCLibrary(std::mt19937 &random)
{
    const std::string text = randomText(random, 40);
    std::vector<char> own(text.c_str(), text.c_str() + text.size() + 1);
    std::vector<char> judge = own;
    char *position = nullptr;
    bool isFirst = true;
    for (bool goesOn = true; goesOn;) {
        const std::string delimiters = randomText(random, 3);
        const char *token = DOV0_strtok(isFirst ? own.data() : nullptr, delimiters.c_str());
        const char *expected = strtok_r(isFirst ? judge.data() : nullptr, delimiters.c_str(), &position);
        if ((token == nullptr) != (expected == nullptr)) {
            return false;
        }
        if (token != nullptr && token - own.data() != expected - judge.data()) {
            return false;
        }
        isFirst = false;
        goesOn = token != nullptr && random() % 16 != 0;
    }
    return own == judge;
}

} // namespace

TEST(strtok, AgreesWithTheCLibrary)
{
    std::mt19937 random(5);
    for (int round = 0; round < 20000; ++round) {
        ASSERT_TRUE(agreesWithTheCLibrary(random)) << "text " << round;
    }
}

TEST(strtok, AgreesWithTheCLibraryInManyThreads)
{
    std::latch start(16);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (unsigned number = 0; number < 16; ++number) {
        threads.emplace_back([&, number] {
            std::mt19937 random(number);
            start.arrive_and_wait();
            for (int round = 0; round < 500; ++round) {
                wrong += agreesWithTheCLibrary(random) ? 0 : 1;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

// Two threads that both took one free slot for theirs would lose the second token.
TEST(strtok, LosesNoTokenWhenThreadsClaimAndReleaseAllTheTime)
{
    std::latch start(4);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            for (int round = 0; round < 200000; ++round) {
                char text[] = "1,2";
                DOV0_strtok(text, ",");
                const char *second = DOV0_strtok(nullptr, ",");
                if (second != text + 2 || DOV0_strtok(nullptr, ",") != nullptr) {
                    ++wrong;
                }
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

TEST(strtok, SplitsALongText)
{
    std::string text;
    for (int i = 0; i < 20000; ++i) {
        text += std::to_string(i) + (i % 3 == 0 ? ",," : ",");
    }
    GuardedBuffer buffer(text);
    int count = 0;
    for (char *token = DOV0_strtok(buffer.text(), ","); token != nullptr; token = DOV0_strtok(nullptr, ",")) {
        ASSERT_EQ(token, std::to_string(count));
        ++count;
    }
    EXPECT_EQ(count, 20000);
}
