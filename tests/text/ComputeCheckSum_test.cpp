#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_ComputeCheckSum";

// The checksum by its definition, over bytes in network form.
int32_t checkSumOf(const std::vector<unsigned char> &bytes)
{
    const size_t covered = bytes.size() / 4 * 4;
    uint32_t sum = 0;
    for (size_t i = 0; i < covered; i += 2) {
        sum += static_cast<uint32_t>(bytes[i] * 256 + bytes[i + 1]);
    }
    for (size_t i = 0; i < covered; i += 4) {
        sum += static_cast<uint32_t>(bytes[i] * 256 + bytes[i + 2]);
    }
    sum = (sum >> 16) + (sum & 0xFFFF);
    sum = sum + (sum >> 16);
    return static_cast<int32_t>(~sum & 0xFFFF);
}

int32_t computed(const std::vector<unsigned char> &bytes, int32_t inNetworkOrder = 1)
{
    GuardedBuffer buffer(bytes.size());
    std::copy(bytes.begin(), bytes.end(), buffer.bytes());
    const int32_t result =
        DOV0_ComputeCheckSum(buffer.bytes(), static_cast<int32_t>(bytes.size()), inNetworkOrder);
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), buffer.bytes())) << "the data was changed";
    return result;
}

std::string input(const void *data, int32_t size, int32_t bufferSize, int32_t longWords, int32_t shortWords)
{
    return message(Function, "Input buf @%p DataSize %d BufferSize %d LongWords %d ShortWords %d\n", data,
                   size, bufferSize, longWords, shortWords);
}

} // namespace

TEST(ComputeCheckSum, SumsWordsAndTheExtraTerm)
{
    EXPECT_EQ(computed({1, 2, 3, 4}), 0xFAF6);
    EXPECT_EQ(computed({0, 0, 0, 0}), 0xFFFF);
    // FFFF three times is 2FFFD, folded FFFF, complemented 0: a true checksum of 0.
    EXPECT_EQ(computed({0xFF, 0xFF, 0xFF, 0xFF}), 0);
    // 8000 + 0000 + 8000 = 10000, folded 0001.
    EXPECT_EQ(computed({0x80, 0, 0, 0}), 0xFFFE);
    // FFFE + 0100 + FF01 = 1FFFF, folded 10000 and, once more, 10001.
    EXPECT_EQ(computed({0xFF, 0xFE, 0x01, 0x00}), 0xFFFE);
}

TEST(ComputeCheckSum, IgnoresTheBytesBehindTheLastFour)
{
    EXPECT_EQ(computed({1, 2, 3, 4, 5, 6, 7}), 0xFAF6);
    EXPECT_EQ(computed({1, 2, 3, 4, 5}), 0xFAF6);
}

TEST(ComputeCheckSum, SumsLocalCharactersInTheirNetworkForm)
{
    // "1234" travels as F1 F2 F3 F4: F1F2 + F3F4 + F1F3 = 2D7D9, folded D7DB, complemented 2824.
    EXPECT_EQ(computed({'1', '2', '3', '4'}, 0), 0x2824);
    // A byte that is no character travels as a question mark, 6F: 3 * 6F6F = 14E4D, folded 4E4E.
    EXPECT_EQ(computed({0x80, 0xFF, 0xC1, 0x90}, 0), 0xB1B1);
    EXPECT_EQ(computed({'1', '2', '3', '4'}, -1), computed({'1', '2', '3', '4'}, 1));
}

TEST(ComputeCheckSum, AgreesWithTheModelOnRandomData)
{
    std::mt19937 random(16);
    for (int round = 0; round < 2000; ++round) {
        std::vector<unsigned char> bytes(random() % 300 + 4);
        for (unsigned char &byte : bytes) {
            byte = static_cast<unsigned char>(random());
        }
        ASSERT_EQ(computed(bytes), checkSumOf(bytes));
    }
}

TEST(ComputeCheckSum, AgreesWithTheModelWhenTheSumExceeds32Bits)
{
    for (const size_t size : {87380U, 87384U, 87388U, 1000003U}) {
        const std::vector<unsigned char> bytes(size, 0xFF);
        EXPECT_EQ(computed(bytes), checkSumOf(bytes)) << size;
    }
}

TEST(ComputeCheckSum, RefusesSizesBelowFour)
{
    const unsigned char data[4] = {1, 2, 3, 4};
    for (const int32_t size : {3, 2, 1, 0, -1, -2, -3}) {
        EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_ComputeCheckSum(data, size, 1), 0); }),
                  (TraceLog{entry(Function), input(data, size, 0, 0, 0),
                            message(Function, "****Error: Received invalid DataSize value %d\n", size),
                            leave(Function, intptr_t{0})}));
    }
    EXPECT_EQ(bitsThatShow(message(Function, "****Error: Received invalid DataSize value 3\n"),
                           [&] { DOV0_ComputeCheckSum(data, 3, 1); }),
              Trace::Error);
}

TEST(ComputeCheckSum, FindsNoStorageForNegativeSizes)
{
    const unsigned char data[4] = {1, 2, 3, 4};
    struct Case {
        const void *data;
        int32_t size, bufferSize, longWords, shortWords;
    };
    for (const Case &negative :
         {Case{data, -4, -4, -1, -2}, Case{data, -7, -4, -1, -2}, Case{data, -8, -8, -2, -4},
          Case{data, INT32_MIN, INT32_MIN, -536870912, -1073741824}, Case{nullptr, -4, -4, -1, -2}}) {
        const TraceLog log = traceAt(Trace::Flow | Trace::Detail | Trace::Error, [&] {
            EXPECT_EQ(DOV0_ComputeCheckSum(negative.data, negative.size, 1), 0);
        });
        EXPECT_EQ(
            log,
            (TraceLog{entry(Function),
                      input(negative.data, negative.size, negative.bufferSize, negative.longWords,
                            negative.shortWords),
                      entry("DOV0_GetStorage"),
                      message("DOV0_GetStorage", "*****Invalid get storage size %d\n", negative.bufferSize),
                      leave("DOV0_GetStorage", nullptr),
                      message(Function, "****Error: Unable to allocate checksum buffer for length %d\n",
                              negative.bufferSize),
                      leave(Function, intptr_t{0})}));
    }
}

TEST(ComputeCheckSum, ReportsAnExhaustedHeap)
{
    const unsigned char data[4] = {1, 2, 3, 4};
    for (const int32_t size : {7, INT32_MAX}) {
        const std::string text =
            message(Function, "****Error: Unable to allocate checksum buffer for length %d\n", size - 3);
        EXPECT_EQ(traceOf(Function, Trace::Flow | Trace::Error,
                          [&] { withoutHeap([&] { EXPECT_EQ(DOV0_ComputeCheckSum(data, size, 0), 0); }); }),
                  (TraceLog{entry(Function), text, leave(Function, intptr_t{0})}));
        EXPECT_EQ(bitsThatShow(text, [&] { withoutHeap([&] { DOV0_ComputeCheckSum(data, size, 0); }); }),
                  Trace::Error);
    }
}

TEST(ComputeCheckSum, RefusesNull)
{
    const std::string text = message(Function, "****Error: Input buffer is NULL\n");
    EXPECT_EQ(traceAt(Trace::All, [] { EXPECT_EQ(DOV0_ComputeCheckSum(nullptr, 8, 0), 0); }),
              (TraceLog{entry(Function), input(nullptr, 8, 8, 2, 4), text, leave(Function, intptr_t{0})}));
    EXPECT_EQ(bitsThatShow(text, [] { DOV0_ComputeCheckSum(nullptr, 8, 0); }), Trace::Error);
}

TEST(ComputeCheckSum, TracesItsStepsAndTheServicesItUses)
{
    const unsigned char data[7] = {'1', '2', '3', '4', '5', '6', '7'};
    TraceLog log = traceAt(Trace::Flow | Trace::Detail | Trace::Error | Trace::Storage,
                           [&] { DOV0_ComputeCheckSum(data, 7, 0); });
    // The address of the working copy is known from the result of the storage service only.
    ASSERT_EQ(log.size(), 12U);
    const std::string block = log[4].substr(log[4].rfind(' ') + 1);
    const auto *address = reinterpret_cast<const void *>(std::stoll(block));
    EXPECT_EQ(log,
              (TraceLog{entry(Function), input(data, 7, 4, 1, 2), entry("DOV0_GetStorage"),
                        message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n", address, 4),
                        leave("DOV0_GetStorage", address), entry("DOV0_ConvertDataToNetwork"),
                        leave("DOV0_ConvertDataToNetwork"),
                        message(Function, "Check Sum->%d %04X\n", 0x2824, 0x2824U), entry("DOV0_FreeStorage"),
                        message("DOV0_FreeStorage", "Freeing storage at address @%p\n", address),
                        leave("DOV0_FreeStorage"), leave(Function, 0x2824)}));
}

TEST(ComputeCheckSum, ConvertsNothingThatIsInNetworkOrder)
{
    const unsigned char data[4] = {0xE9, 2, 3, 4};
    const TraceLog log = traceAt(Trace::Flow | Trace::Detail, [&] { DOV0_ComputeCheckSum(data, 4, 1); });
    EXPECT_EQ(from("DOV0_ConvertDataToNetwork", log), TraceLog{});
}

TEST(ComputeCheckSum, TracesTheResultWithTheEventsAndInFourDigits)
{
    const unsigned char data[4] = {0x7F, 0xFF, 0x80, 0};
    // 7FFF + 8000 + 7F80 = 17F7F, folded 7F80, complemented 807F.
    EXPECT_EQ(
        bitsThatShow(message(Function, "Check Sum->32895 807F\n"), [&] { DOV0_ComputeCheckSum(data, 4, 1); }),
        Trace::Flow);
    const unsigned char allOnes[4] = {0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(
        bitsThatShow(message(Function, "Check Sum->0 0000\n"), [&] { DOV0_ComputeCheckSum(allOnes, 4, 1); }),
        Trace::Flow);
    EXPECT_EQ(bitsThatShow(input(data, 4, 4, 1, 2), [&] { DOV0_ComputeCheckSum(data, 4, 1); }),
              Trace::Detail);
}
