#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

namespace {

constexpr char Function[] = "DOV0_IsSourceASCII";

} // namespace

TEST(IsSourceASCII, TellsEachByteValueApart)
{
    for (int value = 0; value < 256; ++value) {
        GuardedBuffer buffer(1, static_cast<unsigned char>(value));
        EXPECT_EQ(DOV0_IsSourceASCII(buffer.bytes(), 1), value < 0x80 ? 1 : 0) << value;
    }
}

TEST(IsSourceASCII, FindsAHighBitAtEachPlace)
{
    for (size_t length = 1; length <= 40; ++length) {
        GuardedBuffer buffer(length, 0x7F);
        EXPECT_EQ(DOV0_IsSourceASCII(buffer.bytes(), static_cast<int32_t>(length)), 1) << length;
        for (size_t place = 0; place < length; ++place) {
            buffer.bytes()[place] = 0x80;
            EXPECT_EQ(DOV0_IsSourceASCII(buffer.bytes(), static_cast<int32_t>(length)), 0)
                << place << " of " << length;
            // It no longer counts when the data ends before it.
            EXPECT_EQ(DOV0_IsSourceASCII(buffer.bytes(), static_cast<int32_t>(place)), 1)
                << place << " of " << length;
            buffer.bytes()[place] = 0x7F;
        }
    }
}

TEST(IsSourceASCII, ScansLongBuffersToTheirEnd)
{
    GuardedBuffer buffer(100003, 'a');
    EXPECT_EQ(DOV0_IsSourceASCII(buffer.bytes(), 100003), 1);
    buffer.bytes()[100002] = 0x80;
    EXPECT_EQ(DOV0_IsSourceASCII(buffer.bytes(), 100003), 0);
    EXPECT_EQ(DOV0_IsSourceASCII(buffer.bytes(), 100002), 1);
}

TEST(IsSourceASCII, TakesNoDataForPureASCII)
{
    const unsigned char byte = 0x80;
    for (const int32_t length : {0, -1, INT32_MIN}) {
        EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_IsSourceASCII(&byte, length), 1); }),
                  (TraceLog{entry(Function), leave(Function, 1)}));
    }
    for (const int32_t length : {0, -1, 1, 100, INT32_MAX}) {
        EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_IsSourceASCII(nullptr, length), 1); }),
                  (TraceLog{entry(Function), leave(Function, 1)}));
    }
}

TEST(IsSourceASCII, DumpsNoMoreThan64Bytes)
{
    GuardedBuffer buffer(100);
    for (size_t i = 0; i < 100; ++i) {
        buffer.bytes()[i] = static_cast<unsigned char>(i + 90);
    }
    for (const int32_t length : {1, 63, 64, 65, 100}) {
        const intptr_t result = length <= 38 ? 1 : 0; // the 39th byte is 80
        EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_IsSourceASCII(buffer.bytes(), length); }),
                  (TraceLog{entry(Function), dump(Function, buffer.bytes(), std::min(length, 64)),
                            leave(Function, result)}));
    }
}

TEST(IsSourceASCII, DumpsUnderEitherDumpBitOnly)
{
    const unsigned char bytes[] = {0x00, 0x0A, 0x41, 0xE9};
    EXPECT_EQ(bitsThatShow(dump(Function, bytes, 4), [&] { DOV0_IsSourceASCII(bytes, 4); }), Trace::Dump);
    EXPECT_EQ(dump(Function, bytes, 4), "DOV0_IsSourceASCII dump 00 0A 41 E9");
    EXPECT_EQ(traceAt(Trace::All & ~(Trace::Dump | Trace::Flow), [&] { DOV0_IsSourceASCII(bytes, 4); }),
              TraceLog{});
}
