#include "ber/trace_levels.h"
#include "support/guarded_buffer.h"

namespace {

constexpr char Function[] = "DOV0_FormatBERnullType";

} // namespace

TEST(FormatBERnullType, WritesTwoBytesWhateverIsThere)
{
    for (int there = 0; there < 256; ++there) {
        GuardedBuffer buffer(2, static_cast<unsigned char>(there));
        unsigned char *cursor = buffer.bytes();
        EXPECT_EQ(DOV0_FormatBERnullType(&cursor), 2);
        EXPECT_EQ(cursor, buffer.bytes() + 2);
        EXPECT_EQ(buffer.bytes()[0], 0x05);
        EXPECT_EQ(buffer.bytes()[1], 0x00);
    }
}

TEST(FormatBERnullType, TracesEventsOnly)
{
    expectTrace(
        [] {
            unsigned char buffer[2];
            unsigned char *cursor = buffer;
            DOV0_FormatBERnullType(&cursor);
        },
        [](uint32_t) {
            return LeveledTrace{{Trace::Flow, entry(Function)}, {Trace::Flow, leave(Function, intptr_t{2})}};
        });
}

TEST(FormatBERnullType, RefusesANullPointer)
{
    for (const bool nullCursor : {true, false}) {
        unsigned char *cursor = nullptr;
        int32_t result = -1;
        expectTrace([&] { result = DOV0_FormatBERnullType(nullCursor ? nullptr : &cursor); },
                    [&](uint32_t) {
                        EXPECT_EQ(result, 0);
                        return LeveledTrace{
                            {Trace::Flow, entry(Function)},
                            {Trace::Error, message(Function, "*****Input parameter invalid @%p\n", nullptr)},
                            {Trace::Flow, leave(Function, intptr_t{0})},
                        };
                    });
        EXPECT_EQ(cursor, nullptr);
    }
}
