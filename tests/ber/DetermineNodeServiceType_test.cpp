#include "ber/trace_levels.h"
#include "support/heap_faults.h"

namespace {

constexpr char Function[] = "DOV0_DetermineNodeServiceType";

std::string modelOf(int32_t services)
{
    if (services < 1) {
        return "Unspecified";
    }
    std::string text;
    if (services > 63) {
        text += "Applications,";
        services -= 64;
    }
    if (services > 7) {
        text += "Hosts,";
        services -= 8;
    }
    if (services > 3) {
        text += "Gateways,";
        services -= 4;
    }
    if (services > 1) {
        text += "Bridges,";
        services -= 2;
    }
    if (services > 0) {
        text += "Repeaters,";
    }
    return text.substr(0, text.find_last_of(','));
}

std::string textOf(int32_t services)
{
    char *text = DOV0_DetermineNodeServiceType(services);
    const std::string copy = text != nullptr ? text : "null";
    DOV0_FreeStorage(&text);
    return copy;
}

} // namespace

TEST(DetermineNodeServiceType, NamesTheLayersOfTheManual)
{
    EXPECT_EQ(textOf(0), "Unspecified");
    EXPECT_EQ(textOf(1), "Repeaters");
    EXPECT_EQ(textOf(2), "Bridges");
    EXPECT_EQ(textOf(4), "Gateways");
    EXPECT_EQ(textOf(8), "Hosts");
    EXPECT_EQ(textOf(16), "Hosts,Gateways,Bridges,Repeaters");
    EXPECT_EQ(textOf(32), "Hosts,Gateways,Bridges,Repeaters");
    EXPECT_EQ(textOf(64), "Applications");
    EXPECT_EQ(textOf(72), "Applications,Hosts");
    EXPECT_EQ(textOf(78), "Applications,Hosts,Gateways,Bridges");
    EXPECT_EQ(textOf(127), "Applications,Hosts,Gateways,Bridges,Repeaters");
}

TEST(DetermineNodeServiceType, AgreesWithTheModel)
{
    for (int32_t services = -10; services < 2000; ++services) {
        EXPECT_EQ(textOf(services), modelOf(services)) << services;
    }
    for (const int32_t services : {INT32_MIN, INT32_MAX, INT32_MIN + 1, INT32_MAX - 1}) {
        EXPECT_EQ(textOf(services), modelOf(services)) << services;
    }
}

TEST(DetermineNodeServiceType, TracesItsBlockAndItsText)
{
    for (const int32_t services : {0, 72, 127}) {
        char *text = nullptr;
        expectTrace(
            [&] {
                DOV0_FreeStorage(&text);
                takeTrace();
                text = DOV0_DetermineNodeServiceType(services);
            },
            [&](uint32_t) {
                return LeveledTrace{{Trace::Flow, entry(Function)}} + storageTaken(64) +
                       LeveledTrace{{Trace::Storage,
                                     message(Function, "Allocated service type buffer @%p for length 64\n",
                                             static_cast<void *>(text))},
                                    {Trace::Detail, message(Function, "Service Type text [%s]\n",
                                                            modelOf(services).c_str())},
                                    {Trace::Flow, leave(Function, text)}};
            });
        DOV0_FreeStorage(&text);
    }
}

TEST(DetermineNodeServiceType, FailsWithoutStorage)
{
    constexpr uint32_t Level = Trace::All & ~Trace::State;
    const TraceLog log =
        traceAt(Level, [] { withoutHeap([] { EXPECT_EQ(DOV0_DetermineNodeServiceType(72), nullptr); }); });
    EXPECT_EQ(log, at(Level, LeveledTrace{{Trace::Flow, entry(Function)}} + storageMissing(64) +
                                 LeveledTrace{{Trace::Flow, leave(Function, intptr_t{0})}}));
}
