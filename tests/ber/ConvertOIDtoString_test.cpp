#include "ber/trace_levels.h"
#include "support/heap_faults.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_ConvertOIDtoString";

using Elements = std::vector<uint32_t>;

std::string textOf(const Elements &elements)
{
    std::string text;
    for (const uint32_t element : elements) {
        text += (text.empty() ? "" : ".") + std::to_string(static_cast<int32_t>(element));
    }
    return text;
}

std::string converted(const uint32_t *array, int32_t count)
{
    char *text = DOV0_ConvertOIDtoString(array, count);
    const std::string copy = text != nullptr ? text : "null";
    DOV0_FreeStorage(&text);
    return copy;
}

} // namespace

TEST(ConvertOIDtoString, JoinsElementsWithDots)
{
    const uint32_t array[] = {1, 3, 6, 0, 2147483647, 2147483648U, 4294967295U};
    EXPECT_EQ(converted(array, 3), "1.3.6");
    EXPECT_EQ(converted(array, 1), "1");
    EXPECT_EQ(converted(array, 7), "1.3.6.0.2147483647.-2147483648.-1");
}

TEST(ConvertOIDtoString, GivesAnEmptyTextForNoElements)
{
    const uint32_t array[] = {1, 3, 6};
    for (const int32_t count : {0, -1, INT32_MIN}) {
        EXPECT_EQ(converted(array, count), "");
        EXPECT_EQ(converted(nullptr, count), "");
    }
}

TEST(ConvertOIDtoString, AgreesWithTheModel)
{
    std::mt19937 random(10);
    for (int i = 0; i < 20000; ++i) {
        Elements elements(1 + random() % 97);
        for (uint32_t &element : elements) {
            element = static_cast<uint32_t>(random()) >> (random() % 32);
        }
        const std::string expected = textOf(elements).substr(0, 1023);
        ASSERT_EQ(converted(elements.data(), static_cast<int32_t>(elements.size())), expected);
    }
}

TEST(ConvertOIDtoString, EndsWhereItsBlockEnds)
{
    for (size_t digits = 1; digits <= 10; ++digits) {
        const Elements elements(2000, static_cast<uint32_t>(std::stoul(std::string(digits, '1'))));
        const std::string expected = textOf(elements).substr(0, 1023);
        EXPECT_EQ(converted(elements.data(), 2000), expected);
        EXPECT_EQ(converted(elements.data(), INT32_MAX), expected) << "reads only what it shows";
    }
}

TEST(ConvertOIDtoString, TracesItsBlock)
{
    const uint32_t array[] = {1, 3, 6};
    char *text = nullptr;
    expectTrace(
        [&] {
            DOV0_FreeStorage(&text);
            takeTrace();
            text = DOV0_ConvertOIDtoString(array, 3);
        },
        [&](uint32_t) {
            return LeveledTrace{{Trace::Flow, entry(Function)}} + storageTaken(1024) +
                   LeveledTrace{
                       {Trace::Storage, message(Function, "Allocated OIDstring @%p for length 1024\n",
                                                static_cast<void *>(text))},
                       {Trace::Flow, leave(Function, text)}};
        });
    DOV0_FreeStorage(&text);
}

TEST(ConvertOIDtoString, RefusesANullArray)
{
    expectTrace(
        [] { EXPECT_EQ(DOV0_ConvertOIDtoString(nullptr, 3), nullptr); },
        [](uint32_t) {
            return LeveledTrace{
                {Trace::Flow, entry(Function)},
                {Trace::Error, message(Function, "*****OID array @%p invalid, count %d\n", nullptr, 3)},
                {Trace::Flow, leave(Function, intptr_t{0})}};
        });
}

TEST(ConvertOIDtoString, FailsWithoutStorage)
{
    const uint32_t array[] = {1, 3, 6};
    constexpr uint32_t Level = Trace::All & ~Trace::State;
    const TraceLog log =
        traceAt(Level, [&] { withoutHeap([&] { EXPECT_EQ(DOV0_ConvertOIDtoString(array, 3), nullptr); }); });
    EXPECT_EQ(log, at(Level, LeveledTrace{{Trace::Flow, entry(Function)}} + storageMissing(1024) +
                                 LeveledTrace{{Trace::Flow, leave(Function, intptr_t{0})}}));
}
