#include "net/resolver_stand_ins.h"
#include "support/fresh_process.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <random>

namespace {

constexpr char Function[] = "DOV0_IsOwnHostName";

void setLocalName(const char *name)
{
    setenv("DOV_USE_DOMAIN_NAME", "N", 1);
    setenv("RPCB0_HOSTNAME", name, 1);
}

std::string upper(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

int32_t answerOf(const std::string &name, const std::string &own)
{
    if (name.empty() || own.empty()) {
        return 0;
    }
    const size_t dot = name.find('.');
    const size_t ownDot = own.find('.');
    if (dot != std::string::npos && ownDot != std::string::npos) {
        return upper(name) == upper(own) ? 1 : 0;
    }
    return upper(name.substr(0, dot)) == upper(own.substr(0, ownDot)) ? 1 : 0;
}

std::string before(const char *name, const char *own)
{
    return message(Function, "I InHost->%s, OwnHost->%s", name, own);
}

std::string after(const char *name, const char *own)
{
    return message(Function, "U InHost->%s, OwnHost->%s", name, own);
}

} // namespace

TEST(IsOwnHostName, ComparesWithTheQualifiedLocalName)
{
    setLocalName("alpha.corp.example");
    const struct {
        const char *name;
        int32_t answer;
    } cases[] = {{"alpha.corp.example", 1},
                 {"ALPHA", 1},
                 {"alpha", 1},
                 {"Alpha.Corp.Example", 1},
                 {"alpha.other.example", 0},
                 {"alpha.", 0},
                 {"alph", 0},
                 {"alphabet", 0},
                 {"corp.example", 0},
                 {"beta", 0},
                 {".", 0},
                 {"alpha.corp", 0},
                 {"", 0},
                 {"alpha.corp.example.", 0}};
    for (const auto &one : cases) {
        EXPECT_EQ(DOV0_IsOwnHostName(one.name), one.answer) << one.name;
    }
    EXPECT_EQ(DOV0_IsOwnHostName(nullptr), 0);
}

TEST(IsOwnHostName, ComparesWithAPlainLocalName)
{
    setLocalName("alpha");
    EXPECT_EQ(DOV0_IsOwnHostName("alpha"), 1);
    EXPECT_EQ(DOV0_IsOwnHostName("ALPHA"), 1);
    EXPECT_EQ(DOV0_IsOwnHostName("alpha.corp.example"), 1);
    EXPECT_EQ(DOV0_IsOwnHostName("ALPHA.other.example"), 1);
    EXPECT_EQ(DOV0_IsOwnHostName("alpha."), 1);
    EXPECT_EQ(DOV0_IsOwnHostName("beta.alpha"), 0);
    EXPECT_EQ(DOV0_IsOwnHostName(".alpha"), 0);
    EXPECT_EQ(DOV0_IsOwnHostName(std::string(10000, 'a').c_str()), 0);
}

TEST(IsOwnHostName, AgreesWithTheModelOnRandomNames)
{
    for (const char *own : {"ab", "a.b", "B.a.b", "a", ".a", "b."}) {
        EXPECT_TRUE(holdsInFreshProcess([=] {
            setLocalName(own);
            std::mt19937 random(20260101);
            for (int round = 0; round < 500; ++round) {
                std::string name(random() % 6, ' ');
                for (char &c : name) {
                    c = "abAB."[random() % 5];
                }
                EXPECT_EQ(DOV0_IsOwnHostName(name.c_str()), answerOf(name, own)) << name << " " << own;
            }
        }));
    }
}

TEST(IsOwnHostName, TracesBothNamesBeforeAndAfter)
{
    setLocalName("alpha.corp.example");
    const char *const own = DOV0_LocalHostNameString();
    const auto call = [] { DOV0_IsOwnHostName("Alpha"); };
    const TraceLog first = traceAt(Trace::Flow | Trace::Detail, call);
    ASSERT_EQ(first.size(), 26U);
    EXPECT_EQ((TraceLog(first.begin(), first.begin() + 4)),
              (TraceLog{entry(Function), entry("DOV0_LocalHostNameString"),
                        leave("DOV0_LocalHostNameString", own), before("Alpha", "alpha.corp.example")}));
    const TraceLog log = traceAt(Trace::Flow | Trace::Detail, call);
    void *copy = nullptr;
    void *ownCopy = nullptr;
    ASSERT_EQ(log.size(), 24U);
    ASSERT_EQ(std::sscanf(log[4].c_str(), "DOV0_GetStorage: Allocated storage at address @%p size 6", &copy),
              1);
    ASSERT_EQ(
        std::sscanf(log[11].c_str(), "DOV0_GetStorage: Allocated storage at address @%p size 19", &ownCopy),
        1);
    const char Upper[] = "DOV0_ConvertStringToUpper";
    const char Storage[] = "DOV0_GetStorage";
    const char Free[] = "DOV0_FreeStorage";
    EXPECT_EQ(log, (TraceLog{entry(Function),
                             before("Alpha", "alpha.corp.example"),
                             entry(Upper),
                             entry(Storage),
                             message(Storage, "Allocated storage at address @%p size 6\n", copy),
                             leave(Storage, copy),
                             message(Upper, "InString <Alpha>\n"),
                             message(Upper, "OutString <ALPHA>\n"),
                             leave(Upper, copy),
                             entry(Upper),
                             entry(Storage),
                             message(Storage, "Allocated storage at address @%p size 19\n", ownCopy),
                             leave(Storage, ownCopy),
                             message(Upper, "InString <alpha.corp.example>\n"),
                             message(Upper, "OutString <ALPHA.CORP.EXAMPLE>\n"),
                             leave(Upper, ownCopy),
                             after("ALPHA", "ALPHA.CORP.EXAMPLE"),
                             entry(Free),
                             message(Free, "Freeing storage at address @%p\n", copy),
                             leave(Free),
                             entry(Free),
                             message(Free, "Freeing storage at address @%p\n", ownCopy),
                             leave(Free),
                             leave(Function, 1)}));
    EXPECT_EQ(bitsThatShow(before("Alpha", "alpha.corp.example"), call), Trace::Detail);
    EXPECT_EQ(bitsThatShow(after("ALPHA", "ALPHA.CORP.EXAMPLE"), call), Trace::Detail);
}

TEST(IsOwnHostName, MakesNoCopiesForAnExactMatch)
{
    setLocalName("alpha");
    DOV0_IsOwnHostName("alpha");
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_IsOwnHostName("alpha"); }),
              (TraceLog{entry(Function), leave(Function, 1)}));
}

TEST(IsOwnHostName, AnswersZeroForAnEmptyTextWithoutCopies)
{
    setLocalName("alpha");
    DOV0_IsOwnHostName("alpha");
    for (const char *name : {"", static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(traceAt(Trace::All, [=] { DOV0_IsOwnHostName(name); }),
                  (TraceLog{entry(Function), leave(Function, intptr_t{0})}));
    }
}

TEST(IsOwnHostName, AnswersZeroWhenTheLocalNameIsEmpty)
{
    setenv("DOV_USE_DOMAIN_NAME", "N", 1);
    EXPECT_EQ(DOV0_IsOwnHostName("alpha"), 0); // gethostname fails
    EXPECT_EQ(DOV0_IsOwnHostName(""), 0);
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_IsOwnHostName("alpha"); }),
              (TraceLog{entry(Function), leave(Function, intptr_t{0})}));
}

TEST(IsOwnHostName, AnswersZeroWithoutALocalNameAndAsksAgain)
{
    setLocalName("alpha");
    const auto call = [] { withHeapFailure(1, [] { EXPECT_EQ(DOV0_IsOwnHostName("alpha"), 0); }); };
    EXPECT_EQ(traceOf(Function, Trace::All, call), (TraceLog{entry(Function), leave(Function, intptr_t{0})}));
    EXPECT_EQ(DOV0_IsOwnHostName("alpha"), 1);
}

TEST(IsOwnHostName, AnswersZeroWithoutStorageAndFreesWhatItHas)
{
    setLocalName("alpha.corp.example");
    EXPECT_EQ(DOV0_IsOwnHostName("ALPHA"), 1);
    for (int n = 1; n <= 2; ++n) {
        const TraceLog log = traceAt(Trace::Flow | Trace::Error, [=] {
            EXPECT_TRUE(withHeapFailure(n, [] { EXPECT_EQ(DOV0_IsOwnHostName("ALPHA"), 0); }));
        });
        EXPECT_EQ(std::count(log.begin(), log.end(), entry("DOV0_FreeStorage")), n - 1);
        EXPECT_EQ(from(Function, log), (TraceLog{entry(Function), leave(Function, intptr_t{0})}));
    }
    EXPECT_FALSE(withHeapFailure(3, [] { EXPECT_EQ(DOV0_IsOwnHostName("ALPHA"), 1); }));
}
