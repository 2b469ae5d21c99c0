#include "support/trace_recorder.h"

namespace {

constexpr char Function[] = "DOV0_IsValidBlockPointer";

} // namespace

TEST(IsValidBlockPointer, RefusesNullOnly)
{
    int object = 0;
    EXPECT_EQ(DOV0_IsValidBlockPointer(nullptr), 0);
    EXPECT_EQ(DOV0_IsValidBlockPointer(&object), 1);
    EXPECT_EQ(DOV0_IsValidBlockPointer(reinterpret_cast<const void *>(uintptr_t{1})), 1);
}

TEST(IsValidBlockPointer, TracesItsAnswerUnderTheStateBitAndNoEvents)
{
    int object = 0;
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_IsValidBlockPointer(nullptr); }),
              (TraceLog{message(Function, "Input block pointer is NULL\n")}));
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_IsValidBlockPointer(&object); }),
              (TraceLog{message(Function, "Input block pointer @%p is valid\n", &object)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::State,
                      [&] {
                          DOV0_IsValidBlockPointer(nullptr);
                          DOV0_IsValidBlockPointer(&object);
                      }),
              TraceLog{});
}
