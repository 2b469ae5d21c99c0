#include "ber/trace_levels.h"
#include "support/guarded_buffer.h"

#include <csetjmp>
#include <csignal>
#include <map>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr char Function[] = "DOV0_FormatDataField";
// What was in the stream before, and the one line of the function.
const std::string OutputOfAbort = "before\nLogic error. Received invalid DCH data type.  Exiting...\n\n";

using Bytes = std::vector<unsigned char>;

const std::vector<int32_t> ShortTypes = {16, 83, 112, 256, 257};
const std::vector<int32_t> IntTypes = {17, 64, 128, 288, 352};
const std::vector<int32_t> RawTypes = {18, 82};
const std::vector<int32_t> TextTypes = {32, 33,  34,  35,  36,  40,  41,  80,
                                        96, 144, 272, 304, 320, 336, 384, 400};
const std::string CounterCharacters = "CGA?#%";

std::vector<int32_t> knownTypes()
{
    std::vector<int32_t> types = {48, 81, 368};
    for (const auto *more : {&ShortTypes, &IntTypes, &RawTypes, &TextTypes}) {
        types.insert(types.end(), more->begin(), more->end());
    }
    return types;
}

Bytes bigEndian(uint32_t value, size_t size)
{
    Bytes bytes;
    for (size_t i = size; i > 0; --i) {
        bytes.push_back(static_cast<unsigned char>(value >> (8 * (i - 1))));
    }
    return bytes;
}

Bytes fieldOf(int32_t type, const Bytes &data)
{
    Bytes field = bigEndian(static_cast<uint32_t>(6 + data.size()), 4);
    for (const Bytes &part : {bigEndian(static_cast<uint32_t>(type), 2), data}) {
        field.insert(field.end(), part.begin(), part.end());
    }
    return field;
}

// A record that ends right before a guard page, at an odd address, its total as found before the field is written.
class Record {
public:
    explicit Record(size_t fieldSize) : buffer(4 + fieldSize, 0xEE) {}

    unsigned char *total() { return buffer.bytes(); }
    unsigned char *field() { return buffer.bytes() + 4; }
    Bytes totalBytes() { return Bytes(total(), total() + 4); }
    Bytes fieldBytes() { return Bytes(field(), field() + (buffer.size() - 4)); }

private:
    GuardedBuffer buffer;
};

// Writes one field as the first of a record and expects this data in it.
void expectData(int32_t type, const void *value, int32_t size, const char *attrType, const Bytes &data)
{
    const Bytes expected = fieldOf(type, data);
    Record record(expected.size());
    const auto length = static_cast<int32_t>(expected.size());
    EXPECT_EQ(DOV0_FormatDataField(record.total(), record.field(), type, value, size, attrType), length)
        << type;
    EXPECT_EQ(record.fieldBytes(), expected) << type;
    EXPECT_EQ(record.totalBytes(), bigEndian(static_cast<uint32_t>(4 + length), 4)) << type;
}

// What a call that ends the process writes to a pipe as its standard output. Text is left in the stream before.
std::string outputOfAbort(const std::function<void()> &call, int &status)
{
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        std::setvbuf(stdout, nullptr, _IOFBF, 4096); // as it is for a pipe
        std::fputs("before\n", stdout);
        call();
        _exit(0);
    }
    close(ends[1]);
    std::string output;
    char piece[256];
    for (ssize_t count = 0; (count = read(ends[0], piece, sizeof piece)) > 0;) {
        output.append(piece, static_cast<size_t>(count));
    }
    close(ends[0]);
    waitpid(child, &status, 0);
    return output;
}

// What a call traces that would end the process: the signal leads back here instead.
TraceLog traceUntilAbort(uint32_t level, const std::function<void()> &call)
{
    static sigjmp_buf way;
    std::signal(SIGABRT, [](int) { siglongjmp(way, 1); });
    setTraceLevel(level);
    takeTrace();
    if (sigsetjmp(way, 1) == 0) {
        call();
        ADD_FAILURE() << "the call came back";
    }
    std::signal(SIGABRT, SIG_DFL);
    setTraceLevel(0);
    return takeTrace();
}

void writeFieldOfType(int32_t type)
{
    unsigned char record[64] = {};
    const int32_t value = 5;
    DOV0_FormatDataField(record, record + 4, type, &value, 4, "C");
}

} // namespace

TEST(FormatDataField, BeginsARecordWithItsFirstField)
{
    const int32_t value = 5;
    Record record(10);
    EXPECT_EQ(DOV0_FormatDataField(record.total(), record.field(), DOV0_DATA_INT_17, &value, 4, ""), 10);
    EXPECT_EQ(record.fieldBytes(), (Bytes{0, 0, 0, 0x0A, 0, 0x11, 0, 0, 0, 5}));
    EXPECT_EQ(record.totalBytes(), (Bytes{0, 0, 0, 14}));
}

TEST(FormatDataField, AddsFurtherFieldsToTheTotal)
{
    unsigned char record[64] = {0xFF, 0xFF, 0xFF, 0xFF};
    const int32_t number = -2;
    unsigned char *next = record + 4;
    next += DOV0_FormatDataField(record, next, DOV0_DATA_INT_17, &number, 4, nullptr);
    next += DOV0_FormatDataField(record, next, DOV0_DATA_TEXT_80, "abc", 0, nullptr);
    next += DOV0_FormatDataField(record, next, DOV0_DATA_TEXT_80, nullptr, 0, nullptr);
    EXPECT_EQ(Bytes(record, next),
              (Bytes{0, 0, 0, 29, 0, 0,  0,   10,  0,   17, 0xFF, 0xFF, 0xFF, 0xFE, //
                     0, 0, 0, 9,  0, 80, 'a', 'b', 'c', 0,  0,    0,    6,    0,    80}));
}

TEST(FormatDataField, KeepsATotalThatIsElsewhere)
{
    unsigned char total[4] = {0x00, 0x01, 0xFF, 0xFE};
    unsigned char field[9] = {};
    EXPECT_EQ(DOV0_FormatDataField(total, field, DOV0_DATA_TEXT_32, "abc", 0, nullptr), 9);
    EXPECT_EQ(Bytes(total, total + 4), (Bytes{0x00, 0x02, 0x00, 0x07}));
    total[0] = total[1] = total[2] = total[3] = 0xFF;
    EXPECT_EQ(DOV0_FormatDataField(total, field, DOV0_DATA_TEXT_32, "abc", 0, nullptr), 9);
    EXPECT_EQ(Bytes(total, total + 4), (Bytes{0, 0, 0, 8})); // the word is unsigned and wraps
}

TEST(FormatDataField, WritesIntegers)
{
    std::mt19937 random(11);
    for (int i = 0; i < 200; ++i) {
        const auto bits = static_cast<uint32_t>(random());
        unsigned char place[5];
        std::memcpy(place + 1, &bits, 4); // host order, odd address
        const auto narrow = static_cast<uint16_t>(bits);
        unsigned char narrowPlace[3];
        std::memcpy(narrowPlace + 1, &narrow, 2);
        for (const int32_t type : ShortTypes) {
            expectData(type, narrowPlace + 1, 99, "x", bigEndian(narrow, 2));
        }
        for (const int32_t type : IntTypes) {
            expectData(type, place + 1, -7, nullptr, bigEndian(bits, 4));
        }
        expectData(368, place + 1, 8, "C", bigEndian(bits, 4));
        expectData(81, narrowPlace + 1, 4, "S", bigEndian(narrow, 2));
        for (const char character : CounterCharacters) {
            expectData(81, narrowPlace + 1, 2, &character, bigEndian(narrow, 2));
            expectData(81, place + 1, 4, &character, bigEndian(bits, 4));
        }
    }
}

TEST(FormatDataField, WritesBytesAndTexts)
{
    const unsigned char bytes[] = {0x00, 0xFF, 0x7F, 'x', 0x00};
    expectData(48, bytes + 1, 99, nullptr, {0xFF});
    for (const int32_t type : RawTypes) {
        for (int32_t size = 0; size <= 5; ++size) {
            expectData(type, bytes, size, nullptr, Bytes(bytes, bytes + size));
        }
        expectData(type, nullptr, 0, nullptr, {});
    }
    for (const int32_t type : TextTypes) {
        GuardedBuffer text(std::string("some text"));
        expectData(type, text.text(), -1, "S", {'s', 'o', 'm', 'e', ' ', 't', 'e', 'x', 't'});
        expectData(type, "", 5, nullptr, {});
        expectData(type, nullptr, 5, nullptr, {});
    }
    for (int character = 0; character < 256; ++character) {
        const auto attrType = static_cast<char>(character);
        if (attrType != 'S' && (attrType == '\0' || CounterCharacters.find(attrType) == std::string::npos)) {
            expectData(81, bytes, 5, &attrType, Bytes(bytes, bytes + 5));
            expectData(81, bytes, 0, &attrType, {});
        }
    }
    expectData(81, bytes, 4, nullptr, Bytes(bytes, bytes + 4));
}

TEST(FormatDataField, WritesTheTypeInTwoBytes)
{
    for (const int32_t type : knownTypes()) {
        unsigned char record[32] = {};
        const uint32_t value[4] = {};
        DOV0_FormatDataField(record, record + 4, type, value, 4, "C");
        EXPECT_EQ(record[8] * 256 + record[9], type);
    }
}

TEST(FormatDataField, TracesWhereItWrites)
{
    unsigned char record[32];
    const uint16_t value = 5;
    expectTrace([&] { DOV0_FormatDataField(record, record + 9, DOV0_DATA_SHORT_16, &value, 2, nullptr); },
                [&](uint32_t) {
                    return LeveledTrace{{Trace::Flow, entry(Function)},
                                        {Trace::Detail, message(Function, "Buffer @%p TLptr @%p\n",
                                                                static_cast<void *>(record + 9),
                                                                static_cast<void *>(record))},
                                        {Trace::Flow, leave(Function, intptr_t{8})}};
                });
}

TEST(FormatDataField, TracesIntegersOfFourBytes)
{
    for (const int32_t value : {5, -5, INT32_MIN, INT32_MAX}) {
        std::map<int32_t, std::string> messages;
        for (const int32_t type : IntTypes) {
            messages[type] = message(Function, "Copying %d bytes from IntValue <%d>\n", 4, value);
        }
        messages[368] =
            message(Function, "Copying %d bytes from LongValue <%ld> for DCH_objectPtr\n", 4, long{value});
        for (const auto &[type, text] : messages) {
            unsigned char record[32];
            expectTrace(
                [&, code = type] { DOV0_FormatDataField(record, record + 4, code, &value, 4, nullptr); },
                [&, shownText = text](uint32_t) {
                    return LeveledTrace{{Trace::Flow, entry(Function)},
                                        {Trace::Detail, message(Function, "Buffer @%p TLptr @%p\n",
                                                                static_cast<void *>(record + 4),
                                                                static_cast<void *>(record))},
                                        {Trace::Detail, shownText},
                                        {Trace::Flow, leave(Function, intptr_t{10})}};
                });
        }
    }
}

TEST(FormatDataField, TracesNoOtherValues)
{
    const unsigned char value[16] = {'a', 'b'};
    for (const int32_t type : knownTypes()) {
        const bool isTraced =
            type == 368 || std::find(IntTypes.begin(), IntTypes.end(), type) != IntTypes.end();
        for (const char *attrType : {"S", "C", "%", "x"}) {
            unsigned char record[64];
            const TraceLog log = traceAt(Trace::All & ~Trace::Flow, [&] { //
                DOV0_FormatDataField(record, record + 4, type, value, 4, attrType);
            });
            EXPECT_EQ(log.size(), isTraced ? 2U : 1U) << type;
        }
    }
}

TEST(FormatDataField, RefusesCountersOfOtherSizes)
{
    GuardedBuffer value(16, 0x3C);
    for (const char character : CounterCharacters) {
        for (const int32_t size : {8, 0, 1, 3, 5, -2, INT32_MIN, INT32_MAX}) {
            Record record(6);
            expectTrace(
                [&] {
                    EXPECT_EQ(DOV0_FormatDataField(record.total(), record.field(), 81, value.bytes(), size,
                                                   &character),
                              6);
                },
                [&](uint32_t) {
                    return LeveledTrace{
                        {Trace::Flow, entry(Function)},
                        {Trace::Detail,
                         message(Function, "Buffer @%p TLptr @%p\n", static_cast<void *>(record.field()),
                                 static_cast<void *>(record.total()))},
                        {Trace::Error,
                         message(Function,
                                 "***Error: received unsupported Counter/Gauge attribute size: %d\n", size)},
                        {Trace::Error, dump(Function, value.bytes(), 16)},
                        {Trace::Flow, leave(Function, intptr_t{6})}};
                });
            EXPECT_EQ(record.fieldBytes(), fieldOf(81, {}));
            EXPECT_EQ(record.totalBytes(), (Bytes{0, 0, 0, 10}));
        }
    }
}

TEST(FormatDataField, DumpsNothingForANullCounterOfAnotherSize)
{
    unsigned char record[16];
    const TraceLog log =
        traceAt(Trace::Error, [&] { DOV0_FormatDataField(record, record + 4, 81, nullptr, 8, "C"); });
    EXPECT_EQ(log, (TraceLog{message(Function,
                                     "***Error: received unsupported Counter/Gauge attribute size: 8\n")}));
}

TEST(FormatDataField, WritesTheHeaderAloneForAValueThatCannotBeUsed)
{
    unsigned char value[4] = {};
    struct {
        int32_t type;
        const void *value;
        int32_t size;
    } const cases[] = {
        {16, nullptr, 2},       {17, nullptr, 4},           {368, nullptr, 4}, {48, nullptr, 1},
        {18, nullptr, 3},       {81, nullptr, 4},           {18, value, -1},   {82, value, INT32_MIN},
        {18, value, INT32_MAX}, {18, value, INT32_MAX - 5}, {82, nullptr, -1}};
    for (const auto &each : cases) {
        Record record(6);
        int32_t length = 0;
        const std::string error =
            message(Function, "***Error: received invalid value @%p size %d for DCH data type: %d\n",
                    each.value, each.size, each.type);
        const auto call = [&] {
            length =
                DOV0_FormatDataField(record.total(), record.field(), each.type, each.value, each.size, "x");
        };
        EXPECT_EQ(traceAt(Trace::All & ~Trace::Detail & ~Trace::Flow, call), TraceLog{error});
        EXPECT_EQ(bitsThatShow(error, call), Trace::Error);
        EXPECT_EQ(length, 6);
        EXPECT_EQ(record.fieldBytes(), fieldOf(each.type, {}));
        EXPECT_EQ(record.totalBytes(), (Bytes{0, 0, 0, 10}));
    }
}

TEST(FormatDataField, RefusesANullRecord)
{
    unsigned char place[4] = {1, 2, 3, 4};
    const int32_t value = 5;
    for (const bool hasTotal : {true, false}) {
        void *const total = hasTotal ? place : nullptr;
        void *const field = hasTotal ? nullptr : place;
        expectTrace(
            [&] { EXPECT_EQ(DOV0_FormatDataField(total, field, 17, &value, 4, nullptr), 0); },
            [&](uint32_t) {
                return LeveledTrace{
                    {Trace::Flow, entry(Function)},
                    {Trace::Detail, message(Function, "Buffer @%p TLptr @%p\n", field, total)},
                    {Trace::Error,
                     message(Function, "***Error: received invalid record @%p field @%p\n", total, field)},
                    {Trace::Flow, leave(Function, intptr_t{0})}};
            });
        EXPECT_EQ(Bytes(place, place + 4), (Bytes{1, 2, 3, 4}));
    }
}

TEST(FormatDataField, EndsTheProcessOnAnUnknownTypeAndSaysSoOnStandardOutput)
{
    for (const int32_t type : {0, 19, -1, 65536 + 17}) {
        int status = 0;
        const std::string output = outputOfAbort([type] { writeFieldOfType(type); }, status);
        EXPECT_EQ(output, OutputOfAbort) << type;
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT) << type;
    }
}

TEST(FormatDataField, KnowsNoOtherTypes)
{
    const std::vector<int32_t> known = knownTypes();
    std::vector<int32_t> types = {INT32_MIN, INT32_MAX, -1, -17, 65535, 65536 + 80};
    for (int32_t type = 0; type < 1000; ++type) {
        if (std::find(known.begin(), known.end(), type) == known.end()) {
            types.push_back(type);
        }
    }
    for (const int32_t type : types) {
        const TraceLog log = traceUntilAbort(Trace::Error, [type] { writeFieldOfType(type); });
        EXPECT_EQ(log,
                  (TraceLog{message(Function, "***Error: received unsupported DCH data type: %d", type)}));
    }
}

TEST(FormatDataField, ReportsTheUnknownTypeBeforeItEndsTheProcess)
{
    for (const uint32_t level : {Trace::All, Trace::All & ~Trace::Error, Trace::Error, uint32_t{0}}) {
        unsigned char record[64] = {};
        const int32_t value = 5;
        const TraceLog log =
            traceUntilAbort(level, [&] { DOV0_FormatDataField(record, record + 4, 19, &value, 4, nullptr); });
        EXPECT_EQ(
            log,
            at(level,
               {{Trace::Flow, entry(Function)},
                {Trace::Detail, message(Function, "Buffer @%p TLptr @%p\n", static_cast<void *>(record + 4),
                                        static_cast<void *>(record))},
                {Trace::Error, message(Function, "***Error: received unsupported DCH data type: %d", 19)}}));
    }
}

TEST(FormatDataFieldDeathTest, AbortsOnTypeZero)
{
    EXPECT_EXIT(writeFieldOfType(DOV0_DATA_NONE), testing::KilledBySignal(SIGABRT), "");
}
