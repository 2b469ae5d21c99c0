#include "support/trace_recorder.h"

namespace {

constexpr char Function[] = "DOV0_SetDPstartMode";

} // namespace

TEST(SetDPstartMode, TracesItsEventsAndNothingElse)
{
    for (const int32_t mode : {0, 1, -1, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_SetDPstartMode(mode); }),
                  (TraceLog{entry(Function), leave(Function)}));
        EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [&] { DOV0_SetDPstartMode(mode); }), TraceLog{});
    }
}
