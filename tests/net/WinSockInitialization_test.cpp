#include "support/trace_recorder.h"

namespace {

constexpr char Function[] = "DOV0_WinSockInitialization";

} // namespace

TEST(WinSockInitialization, HasNothingToStart)
{
    EXPECT_EQ(DOV0_WinSockInitialization(), 1);
    EXPECT_EQ(DOV0_WinSockInitialization(), 1);
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_WinSockInitialization(); }),
              (TraceLog{entry(Function), leave(Function, 1)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [] { DOV0_WinSockInitialization(); }), TraceLog{});
}
