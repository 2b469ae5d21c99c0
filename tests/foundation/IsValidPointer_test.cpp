#include "support/trace_recorder.h"

namespace {

constexpr char Function[] = "DOV0_IsValidPointer";

} // namespace

TEST(IsValidPointer, RefusesNullOnly)
{
    int object = 0;
    EXPECT_EQ(DOV0_IsValidPointer(nullptr), 0);
    EXPECT_EQ(DOV0_IsValidPointer(&object), 1);
    EXPECT_EQ(DOV0_IsValidPointer(reinterpret_cast<const void *>(uintptr_t{1})), 1);
}

TEST(IsValidPointer, TracesItsAnswerUnderTheStateBitAndNoEvents)
{
    int object = 0;
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_IsValidPointer(nullptr); }),
              (TraceLog{message(Function, "Input pointer is NULL\n")}));
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_IsValidPointer(&object); }),
              (TraceLog{message(Function, "Input pointer @%p is valid\n", &object)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::State,
                      [&] {
                          DOV0_IsValidPointer(nullptr);
                          DOV0_IsValidPointer(&object);
                      }),
              TraceLog{});
}
