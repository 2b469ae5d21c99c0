#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

namespace {

constexpr char Function[] = "DOV0_DecodeToBuffer";

std::string decoded(const DOV0_Base64Group &group)
{
    GuardedBuffer target(3);
    DOV0_DecodeToBuffer(&group, target.text());
    return std::string(target.text(), 3);
}

} // namespace

TEST(DecodeToBuffer, WritesThreeBytes)
{
    EXPECT_EQ(decoded({{19, 22, 5, 46}, 4}), "Man");
    EXPECT_EQ(decoded({{16, 16, 0xFF, 0xFF}, 4}), "\x41\x0F\xFF");
    EXPECT_EQ(decoded({{0xFE, 0xFE, 0xFE, 0}, 3}), "\xFB\xEF\x80");
}

TEST(DecodeToBuffer, DoesNotLookAtTheCount)
{
    for (const int32_t count : {0, 1, 2, 3, 5, -1}) {
        EXPECT_EQ(decoded({{19, 22, 5, 46}, count}), "Man") << count;
    }
}

TEST(DecodeToBuffer, TracesEventsOnlyWithThoseOfTheRawOperationInside)
{
    const DOV0_Base64Group group = {{19, 22, 5, 46}, 4};
    char target[3];
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_DecodeToBuffer(&group, target); }),
              (TraceLog{entry(Function), entry("DOV0_DecodeRaw"), leave("DOV0_DecodeRaw"), leave(Function)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [&] { DOV0_DecodeToBuffer(&group, target); }), TraceLog{});
}

TEST(DecodeToBuffer, RefusesNull)
{
    const DOV0_Base64Group group = {{19, 22, 5, 46}, 4};
    char target[] = "###";
    const std::string record = message(Function, "*****Base64 group or target is NULL\n");
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_DecodeToBuffer(nullptr, target); }),
              (TraceLog{entry(Function), record, leave(Function)}));
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_DecodeToBuffer(&group, nullptr); }),
              (TraceLog{entry(Function), record, leave(Function)}));
    EXPECT_STREQ(target, "###");
    EXPECT_EQ(bitsThatShow(record, [] { DOV0_DecodeToBuffer(nullptr, nullptr); }), Trace::Error);
}
