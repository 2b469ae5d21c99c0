#include "support/trace_recorder.h"

namespace {

constexpr char Function[] = "DOV0_IsThisFullyQualifiedName";

} // namespace

TEST(IsThisFullyQualifiedName, LooksForASlash)
{
    EXPECT_EQ(DOV0_IsThisFullyQualifiedName("/etc/hosts"), 1);
    EXPECT_EQ(DOV0_IsThisFullyQualifiedName("name/"), 1);
    EXPECT_EQ(DOV0_IsThisFullyQualifiedName("a/b"), 1);
    EXPECT_EQ(DOV0_IsThisFullyQualifiedName("/"), 1);
    EXPECT_EQ(DOV0_IsThisFullyQualifiedName("host.site.com"), 0);
    EXPECT_EQ(DOV0_IsThisFullyQualifiedName("C:\\path"), 0);
    EXPECT_EQ(DOV0_IsThisFullyQualifiedName(""), 0);
    EXPECT_EQ(DOV0_IsThisFullyQualifiedName(nullptr), 0);
    std::string text(10000, 'x');
    EXPECT_EQ(DOV0_IsThisFullyQualifiedName(text.c_str()), 0);
    text.push_back('/');
    EXPECT_EQ(DOV0_IsThisFullyQualifiedName(text.c_str()), 1);
}

TEST(IsThisFullyQualifiedName, TracesEntryAndExitOnly)
{
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_IsThisFullyQualifiedName("a/b"); }),
              (TraceLog{entry(Function), leave(Function, 1)}));
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_IsThisFullyQualifiedName("ab"); }),
              (TraceLog{entry(Function), leave(Function, intptr_t{0})}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [] { DOV0_IsThisFullyQualifiedName("ab"); }), TraceLog{});
}
