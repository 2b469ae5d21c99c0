#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

namespace {

constexpr char Function[] = "DOV0_CheckIntegerEndian";

// Bytes in network order, taken for an integer of this host afterwards.
template <typename Integer> Integer received(const char *bytes)
{
    GuardedBuffer buffer(sizeof(Integer));
    std::memcpy(buffer.bytes(), bytes, sizeof(Integer));
    DOV0_CheckIntegerEndian(buffer.bytes(), sizeof(Integer));
    Integer integer = 0;
    std::memcpy(&integer, buffer.bytes(), sizeof integer);
    return integer;
}

} // namespace

TEST(CheckIntegerEndian, BringsNetworkOrderIntoThatOfTheHost)
{
    EXPECT_EQ(received<uint16_t>("\x12\x34"), 0x1234);
    EXPECT_EQ(received<uint32_t>("\x12\x34\x56\x78"), 0x12345678U);
    EXPECT_EQ(received<int16_t>("\xFF\xFE"), -2);
    EXPECT_EQ(received<int32_t>("\x80\x00\x00\x00"), INT32_MIN);
}

TEST(CheckIntegerEndian, UndoesItself)
{
    for (const int32_t size : {2, 4}) {
        GuardedBuffer buffer(4);
        std::memcpy(buffer.bytes(), "\x01\x02\x03\x04", 4);
        DOV0_CheckIntegerEndian(buffer.bytes(), size);
        DOV0_CheckIntegerEndian(buffer.bytes(), size);
        EXPECT_EQ(std::memcmp(buffer.bytes(), "\x01\x02\x03\x04", 4), 0);
    }
}

TEST(CheckIntegerEndian, WorksAtEachAlignment)
{
    for (size_t place = 0; place < 4; ++place) {
        GuardedBuffer buffer(8, 0xEE);
        std::memcpy(buffer.bytes() + place, "\x00\x00\x01\x02", 4);
        DOV0_CheckIntegerEndian(buffer.bytes() + place, 4);
        uint32_t integer = 0;
        std::memcpy(&integer, buffer.bytes() + place, 4);
        EXPECT_EQ(integer, 0x102U);
        for (size_t i = 0; i < 8; ++i) {
            if (i < place || i >= place + 4) {
                EXPECT_EQ(buffer.bytes()[i], 0xEE);
            }
        }
    }
}

TEST(CheckIntegerEndian, LeavesIntegersOfOtherSizesAlone)
{
    for (const int32_t size : {0, 1, 3, 5, 8, 16, -1, -2, -4, INT32_MIN, INT32_MAX}) {
        GuardedBuffer buffer(16);
        std::memcpy(buffer.bytes(), "0123456789abcdef", 16);
        DOV0_CheckIntegerEndian(buffer.bytes(), size);
        EXPECT_EQ(std::memcmp(buffer.bytes(), "0123456789abcdef", 16), 0) << size;
    }
}

TEST(CheckIntegerEndian, TracesEventsOnly)
{
    GuardedBuffer buffer(4);
    for (const int32_t size : {2, 4, 3}) {
        EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_CheckIntegerEndian(buffer.bytes(), size); }),
                  (TraceLog{entry(Function), leave(Function)}));
        EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_CheckIntegerEndian(nullptr, size); }),
                  (TraceLog{entry(Function), leave(Function)}));
    }
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Flow, [&] { DOV0_CheckIntegerEndian(buffer.bytes(), 4); }),
              TraceLog{});
}
