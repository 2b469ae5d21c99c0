#include "ber/trace_levels.h"
#include "support/guarded_buffer.h"
#include "support/heap_faults.h"

#include <algorithm>
#include <random>

namespace {

constexpr char Function[] = "DOV0_ExtractBERfield";
constexpr uint32_t LargestShown = 0x1000000; // a longer value is not read for the trace

using Bytes = std::vector<unsigned char>;

// What the first bytes of a field say.
struct Header {
    uint32_t count = 0;      // length bytes
    size_t lengthOffset = 0; // where they begin
    bool isSupported = true;
    uint32_t length = 0;

    explicit Header(const Bytes &field)
    {
        if (field[1] < 128) {
            count = 1;
            lengthOffset = 1;
        } else {
            count = field[1] - 128U;
            lengthOffset = 2;
        }
        isSupported = count <= 4;
        uint64_t sum = 0;
        for (size_t i = 0; i < count && isSupported; ++i) {
            sum = sum * 256 + field[lengthOffset + i];
        }
        length = static_cast<uint32_t>(sum);
    }

    size_t valueOffset() const { return lengthOffset + count; }
    size_t bytesRead() const { return isSupported ? valueOffset() : 2; }
};

struct Field {
    uint32_t tag = 0xDEAD;
    uint32_t length = 0xDEAD;
    unsigned char *value = nullptr;
    unsigned char *cursor = nullptr;

    explicit Field(unsigned char *start) : value(start), cursor(start)
    {
        tag = DOV0_ExtractBERfield(&cursor, &length, &value);
    }
};

std::string hexadecimal(const unsigned char *bytes, size_t count)
{
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        text += "0123456789ABCDEF"[bytes[i] / 16];
        text += "0123456789ABCDEF"[bytes[i] % 16];
    }
    return text;
}

// What reading the field at start traces; an address of null stands for the reader's work area.
LeveledTrace traceOfField(const unsigned char *start, const Bytes &field)
{
    const Header header(field);
    LeveledTrace expected{
        {Trace::Flow, entry(Function)},
        {Trace::Detail, message(Function, "Assigned i = %d\n", static_cast<int>(header.count))}};
    if (header.isSupported) {
        expected.push_back(
            {Trace::Detail, message(Function, "Copying ASNfieldPtr @%p to WorkSize @0x0 + %d for length %d\n",
                                    static_cast<const void *>(start + header.lengthOffset),
                                    4 - static_cast<int>(header.count), static_cast<int>(header.count))});
    } else {
        expected.push_back(
            {Trace::Error, message(Function, "*****ASN1 field length %d too large. Unsupported\n",
                                   static_cast<int>(header.count))});
    }
    char tag[3];
    std::snprintf(tag, sizeof tag, "%02X", static_cast<unsigned int>(field[0]));
    const bool isShown = header.length <= LargestShown;
    const std::string value = isShown ? hexadecimal(start + header.valueOffset(), header.length) : "...";
    const LeveledRecord report{Trace::Detail, std::string(Function) + ": ASN1 type " + tag + ", Length " +
                                                  std::to_string(static_cast<int32_t>(header.length)) +
                                                  ", value <" + value + ">\n"};
    LeveledTrace rendering;
    if (isShown) {
        rendering =
            storageTaken(static_cast<int32_t>(2 * header.length + 1)) + LeveledTrace{report} + storageGiven();
    } else {
        rendering = {report};
    }
    return expected + rendering + LeveledTrace{{Trace::Flow, leave(Function, intptr_t{field[0]})}};
}

// The rendering is done at detail level only, and with it the taking of storage.
void expectFieldTrace(unsigned char *start, const Bytes &field)
{
    expectTrace([&] { Field read(start); },
                [&](uint32_t level) {
                    LeveledTrace expected = traceOfField(start, field);
                    if ((level & Trace::Detail) == 0) {
                        std::erase_if(expected, [](const LeveledRecord &record) {
                            return record.text.find("Storage") != std::string::npos;
                        });
                    }
                    return expected;
                });
}

// Reads a field of which only the bytes that tell tag and length can be touched.
void expectHeader(GuardedBuffer &buffer, const Bytes &field)
{
    const Header header(field);
    unsigned char *const start = buffer.bytes() + buffer.size() - header.bytesRead();
    std::memcpy(start, field.data(), header.bytesRead());
    const Field read(start);
    ASSERT_EQ(read.tag, field[0]);
    ASSERT_EQ(read.length, header.length) << hexadecimal(field.data(), field.size());
    unsigned char *const value = start + header.valueOffset();
    ASSERT_EQ(read.value, header.length == 0 ? nullptr : value);
    // No further than to the end of the address space.
    const uint64_t end = uint64_t{reinterpret_cast<uintptr_t>(value)} + header.length;
    ASSERT_EQ(reinterpret_cast<uintptr_t>(read.cursor), std::min<uint64_t>(end, UINTPTR_MAX));
}

} // namespace

TEST(ExtractBERfield, ReadsTheFormsOfTheManual)
{
    unsigned char field[] = {0x02, 0x81, 0x01, 0x2A, 0x77};
    const Field read(field);
    EXPECT_EQ(read.tag, static_cast<uint32_t>(DOV0_ASN_INTEGER));
    EXPECT_EQ(read.length, 1U);
    EXPECT_EQ(read.value, field + 3);
    EXPECT_EQ(read.cursor, field + 4);
}

TEST(ExtractBERfield, SkipsALengthThatIsTooLong)
{
    unsigned char field[] = {0x30, 0x85, 1, 2, 3, 4, 5, 6};
    const Field read(field);
    EXPECT_EQ(read.tag, static_cast<uint32_t>(DOV0_ASN_SEQUENCE));
    EXPECT_EQ(read.length, 0U);
    EXPECT_EQ(read.value, nullptr);
    EXPECT_EQ(read.cursor, field + 7);
}

TEST(ExtractBERfield, TakesTheIndefiniteFormAsLengthZero)
{
    unsigned char field[] = {0x30, 0x80, 0x05, 0x00};
    const Field read(field);
    EXPECT_EQ(read.tag, static_cast<uint32_t>(DOV0_ASN_SEQUENCE));
    EXPECT_EQ(read.length, 0U);
    EXPECT_EQ(read.value, nullptr);
    EXPECT_EQ(read.cursor, field + 2);
}

TEST(ExtractBERfield, ReadsNoFurtherThanTheLengthField)
{
    GuardedBuffer buffer(8);
    std::mt19937 random(4);
    for (uint32_t tag = 0; tag < 256; ++tag) {
        for (uint32_t first = 0; first < 256; ++first) {
            Bytes field{static_cast<unsigned char>(tag), static_cast<unsigned char>(first)};
            for (int i = 0; i < 4; ++i) {
                field.push_back(static_cast<unsigned char>(random()));
            }
            expectHeader(buffer, field);
        }
    }
    for (const uint32_t count : {1U, 2U, 3U, 4U}) {
        for (const unsigned char fill : Bytes{0x00, 0x01, 0x7F, 0x80, 0xFF}) {
            expectHeader(buffer, {0x04, static_cast<unsigned char>(0x80 + count), fill, fill, fill, fill});
        }
    }
}

TEST(ExtractBERfield, ReadsWhatTheWriterWrote)
{
    for (const int32_t size : {1, 127, 128, 255, 256, 65535, 65536, 0xFFFFFF, 0x1000000}) {
        Bytes data(static_cast<size_t>(size), 0x5A);
        Bytes buffer(data.size() + 6);
        unsigned char *end = buffer.data();
        const int32_t written = DOV0_FormatBERoctetstringType(&end, DOV0_ASN_OCTETSTRING, data.data(), size);
        const Field read(buffer.data());
        EXPECT_EQ(read.tag, static_cast<uint32_t>(DOV0_ASN_OCTETSTRING));
        EXPECT_EQ(read.length, static_cast<uint32_t>(size));
        EXPECT_EQ(read.value, buffer.data() + written - size);
        EXPECT_EQ(read.cursor, end);
    }
}

TEST(ExtractBERfield, TracesTheFieldWithItsValue)
{
    std::mt19937 random(5);
    const std::vector<Bytes> headers = {{0x05, 0x00},
                                        {0x02, 0x01},
                                        {0x04, 0x7F},
                                        {0x30, 0x80},
                                        {0xA2, 0x81, 0x03},
                                        {0x30, 0x82, 0x00, 0x80},
                                        {0x06, 0x83, 0, 0, 9},
                                        {0x41, 0x84, 0, 0, 1, 2},
                                        {0x04, 0x82, 0xFF, 0xFF}};
    for (const Bytes &bytes : headers) {
        const Header header(bytes);
        Bytes field = bytes;
        for (uint32_t i = 0; i < header.length; ++i) {
            field.push_back(static_cast<unsigned char>(random()));
        }
        GuardedBuffer buffer(field.size());
        std::memcpy(buffer.bytes(), field.data(), field.size());
        expectFieldTrace(buffer.bytes(), field);
    }
}

TEST(ExtractBERfield, ReportsATooLongLengthFieldUnderTheErrorBit)
{
    for (const unsigned char first : Bytes{0x85, 0x90, 0xFF}) {
        GuardedBuffer buffer(2);
        buffer.bytes()[0] = 0x30;
        buffer.bytes()[1] = first;
        expectFieldTrace(buffer.bytes(), {0x30, first});
        EXPECT_EQ(
            bitsThatShow(message(Function, "*****ASN1 field length %d too large. Unsupported\n", first - 128),
                         [&] { Field read(buffer.bytes()); }),
            Trace::Error);
    }
}

TEST(ExtractBERfield, ShowsTheLargestValueThatItReads)
{
    Bytes field(LargestShown + 6, 0xC3);
    const Bytes header{0x04, 0x84, 0x01, 0x00, 0x00, 0x00};
    std::copy(header.begin(), header.end(), field.begin());
    const TraceLog log = traceOf(Function, Trace::Detail, [&] { Field read(field.data()); });
    ASSERT_EQ(log.size(), 3U);
    const std::string expected = message(Function, "ASN1 type 04, Length 16777216, value <%s>\n",
                                         hexadecimal(field.data() + 6, LargestShown).c_str());
    EXPECT_TRUE(log[2] == expected);
}

TEST(ExtractBERfield, NeitherReadsNorAllocatesForALengthThatCannotBeTrue)
{
    for (const uint32_t length : {LargestShown + 1, 0x3FFFFFFFU, 0x40000000U, 0x7FFFFFFFU, 0x80000000U,
                                  0x80000001U, 0xC0000000U, 0xFFFFFFFEU, 0xFFFFFFFFU}) {
        const Bytes field{0x04,
                          0x84,
                          static_cast<unsigned char>(length >> 24),
                          static_cast<unsigned char>(length >> 16),
                          static_cast<unsigned char>(length >> 8),
                          static_cast<unsigned char>(length)};
        GuardedBuffer buffer(field.size());
        std::memcpy(buffer.bytes(), field.data(), field.size());
        expectFieldTrace(buffer.bytes(), field);
        setTraceLevel(Trace::All);
        EXPECT_EQ(heapRequestsOf([&] { expectHeader(buffer, field); }), 0);
        setTraceLevel(0);
    }
}

TEST(ExtractBERfield, GivesTheFieldWithoutStorageForTheTrace)
{
    unsigned char bytes[] = {0x02, 0x01, 0x2A};
    const LeveledTrace header{
        {Trace::Flow, entry(Function)},
        {Trace::Detail, message(Function, "Assigned i = 1\n")},
        {Trace::Detail, message(Function, "Copying ASNfieldPtr @%p to WorkSize @0x0 + 3 for length 1\n",
                                static_cast<void *>(bytes + 1))}};
    const LeveledTrace rest =
        storageMissing(3) +
        LeveledTrace{{Trace::Detail, message(Function, "ASN1 type 02, Length 1, value <...>\n")},
                     {Trace::Flow, leave(Function, intptr_t{2})}};
    Field read(bytes);
    constexpr uint32_t Level = Trace::Detail | Trace::Flow | Trace::Error;
    const TraceLog log = traceAt(Level, [&] { withoutHeap([&] { read = Field(bytes); }); });
    EXPECT_EQ(masked(log), masked(at(Level, header + rest)));
    EXPECT_EQ(read.tag, 2U);
    EXPECT_EQ(read.length, 1U);
    EXPECT_EQ(read.value, bytes + 2);
    EXPECT_EQ(read.cursor, bytes + 3);
}

TEST(ExtractBERfield, RefusesANullPointerAndStoresNothing)
{
    for (const bool nullCursor : {true, false}) {
        unsigned char *cursor = nullptr;
        unsigned char other = 0;
        unsigned char *value = &other;
        uint32_t length = 77;
        uint32_t result = 1;
        void *const shownCursor = nullCursor ? nullptr : &cursor;
        expectTrace(
            [&] { result = DOV0_ExtractBERfield(nullCursor ? nullptr : &cursor, &length, &value); },
            [&](uint32_t) {
                EXPECT_EQ(result, 0U);
                return LeveledTrace{
                    {Trace::Flow, entry(Function)},
                    {Trace::Error,
                     message(Function,
                             "*****Input BER data buffer pointer invalid, DataBuffer @%p ASNfieldPtr @%p\n",
                             shownCursor, nullptr)},
                    {Trace::Flow, leave(Function, intptr_t{0})},
                };
            });
        EXPECT_EQ(cursor, nullptr);
        EXPECT_EQ(value, &other);
        EXPECT_EQ(length, 77U);
    }
}

TEST(ExtractBERfield, LeavesOutWhatTheCallerDoesNotWant)
{
    unsigned char field[] = {0x04, 0x02, 'o', 'k', 0};
    unsigned char *cursor = field;
    uint32_t length = 0;
    EXPECT_EQ(DOV0_ExtractBERfield(&cursor, &length, nullptr), 4U);
    EXPECT_EQ(length, 2U);
    EXPECT_EQ(cursor, field + 4);
    cursor = field;
    unsigned char *value = nullptr;
    EXPECT_EQ(DOV0_ExtractBERfield(&cursor, nullptr, &value), 4U);
    EXPECT_EQ(value, field + 2);
    EXPECT_EQ(cursor, field + 4);
}
