#include "ber/trace_levels.h"

namespace {

constexpr char Function[] = "DOV0_ExtractXMLfield";

} // namespace

TEST(ExtractXMLfield, ReturnsZeroWhateverIsPassed)
{
    EXPECT_EQ(DOV0_ExtractXMLfield(), 0);
    EXPECT_EQ(DOV0_ExtractXMLfield(1, "text", 2.5, nullptr), 0);
}

TEST(ExtractXMLfield, TracesEventsOnly)
{
    expectTrace(
        [] { DOV0_ExtractXMLfield(); },
        [](uint32_t) {
            return LeveledTrace{{Trace::Flow, entry(Function)}, {Trace::Flow, leave(Function, intptr_t{0})}};
        });
}
