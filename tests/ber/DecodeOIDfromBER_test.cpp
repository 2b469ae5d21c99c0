#include "ber/trace_levels.h"
#include "support/guarded_buffer.h"
#include "support/heap_faults.h"

#include <optional>
#include <random>

namespace {

constexpr char Function[] = "DOV0_DecodeOIDfromBER";
constexpr int32_t ArraySize = 97 * 4;

using Bytes = std::vector<unsigned char>;
using Elements = std::vector<uint32_t>;

struct Decoded {
    std::optional<Elements> elements; // nothing for a null array
    int32_t count = -1;
};

bool operator==(const Decoded &left, const Decoded &right)
{
    return left.elements == right.elements && left.count == right.count;
}

void PrintTo(const Decoded &decoded, std::ostream *out)
{
    *out << (decoded.elements ? testing::PrintToString(*decoded.elements) : "null") << ", count "
         << decoded.count;
}

Decoded decode(const Bytes &content)
{
    static GuardedBuffer buffer(96);
    unsigned char *const start = buffer.bytes() + buffer.size() - content.size();
    std::copy(content.begin(), content.end(), start);
    Decoded decoded;
    uint32_t *array = DOV0_DecodeOIDfromBER(start, static_cast<int32_t>(content.size()), &decoded.count);
    if (array != nullptr) {
        decoded.elements.emplace(array, array + decoded.count);
        DOV0_FreeStorage(&array);
    }
    return decoded;
}

// Where a sub-identifier is wrong: its offset, and the bytes in a row from there that say that more follow.
struct Flaw {
    size_t offset;
    int32_t count;
};

struct Model {
    Decoded decoded;
    std::optional<Flaw> flaw;

    explicit Model(const Bytes &content)
    {
        Elements elements;
        const uint32_t both = content[0];
        if (both < 40) {
            elements = {0, both};
        } else if (both < 80) {
            elements = {1, both - 40};
        } else {
            elements = {2, both - 80};
        }
        uint64_t sum = 0;
        size_t begin = 1;
        for (size_t i = 1; i < content.size(); ++i) {
            sum = (sum << 7) + content[i] % 128;
            if (content[i] < 128) {
                if (i - begin > 4) {
                    break;
                }
                elements.push_back(static_cast<uint32_t>(sum));
                sum = 0;
                begin = i + 1;
            }
        }
        if (begin < content.size()) {
            size_t end = begin;
            while (end < content.size() && content[end] >= 128) {
                ++end;
            }
            flaw = Flaw{begin, static_cast<int32_t>(end - begin)};
            decoded.count = 0;
        } else {
            decoded.count = static_cast<int32_t>(elements.size());
            decoded.elements = elements;
        }
    }
};

std::string dotted(const Elements &elements)
{
    std::string text;
    for (const uint32_t element : elements) {
        text += std::to_string(static_cast<int32_t>(element)) + ".";
    }
    return text;
}

} // namespace

TEST(DecodeOIDfromBER, ReadsTheFormsOfTheManual)
{
    struct {
        Bytes content;
        Elements elements;
    } const cases[] = {
        {{0x2B, 0x06, 0x01}, {1, 3, 6, 1}},
        {{0x58}, {2, 8}},
        {{0x00}, {0, 0}},
        {{39}, {0, 39}},
        {{40}, {1, 0}},
        {{79}, {1, 39}},
        {{80}, {2, 0}},
        {{255}, {2, 175}},
        {{0x2B, 0x81, 0x00}, {1, 3, 128}},
        {{0x2B, 0x80, 0x01}, {1, 3, 1}},
        {{0x2B, 0x8F, 0xFF, 0xFF, 0xFF, 0x7F}, {1, 3, 4294967295U}},
        {{0x2B, 0x90, 0x80, 0x80, 0x80, 0x01}, {1, 3, 1}}, // 2^32 + 1
    };
    for (const auto &each : cases) {
        EXPECT_EQ(decode(each.content), (Decoded{each.elements, static_cast<int32_t>(each.elements.size())}));
        EXPECT_EQ(Model(each.content).decoded.elements, each.elements);
    }
}

TEST(DecodeOIDfromBER, AgreesWithTheModelOnAllShortContents)
{
    for (uint32_t value = 0; value < 0x10000; ++value) {
        const auto high = static_cast<unsigned char>(value >> 8);
        const auto low = static_cast<unsigned char>(value);
        if (high == 0) {
            ASSERT_EQ(decode({low}), Model({low}).decoded);
        }
        ASSERT_EQ(decode({high, low}), Model({high, low}).decoded) << value;
    }
}

TEST(DecodeOIDfromBER, AgreesWithTheModelOnRandomContents)
{
    std::mt19937 random(9);
    for (int i = 0; i < 20000; ++i) {
        Bytes content(1 + random() % 96);
        const uint32_t continuations = static_cast<uint32_t>(random() % 100);
        for (unsigned char &byte : content) {
            byte = static_cast<unsigned char>(random() % 128 + (random() % 100 < continuations ? 128 : 0));
        }
        ASSERT_EQ(decode(content), Model(content).decoded) << testing::PrintToString(content);
    }
}

TEST(DecodeOIDfromBER, TakesNinetySixBytesAndGivesNinetySevenElements)
{
    Bytes content(96);
    Elements elements{1, 3};
    content[0] = 0x2B;
    for (uint32_t i = 1; i < 96; ++i) {
        content[i] = static_cast<unsigned char>(i);
        elements.push_back(i);
    }
    EXPECT_EQ(decode(content), (Decoded{elements, 97}));
}

TEST(DecodeOIDfromBER, GivesAnEmptyArrayForLongerContentsAndSaysSoAtAnyLevel)
{
    for (const size_t size : {97U, 98U, 200U, 5000U}) {
        Bytes content(size, 0x11);
        content[size - 1] = 0x22;
        GuardedBuffer buffer(size);
        std::copy(content.begin(), content.end(), buffer.bytes());
        uint32_t *array = nullptr;
        int32_t count = 77;
        const auto length = static_cast<int32_t>(size);
        expectTrace(
            [&] {
                DOV0_FreeStorage(&array);
                takeTrace();
                count = 77;
                array = DOV0_DecodeOIDfromBER(buffer.bytes(), length, &count);
            },
            [&](uint32_t) {
                EXPECT_NE(array, nullptr);
                EXPECT_EQ(count, 0);
                EXPECT_EQ(array[0], 0U);
                return LeveledTrace{{Trace::Flow, entry(Function)}} + storageTaken(ArraySize) +
                       LeveledTrace{
                           {Always,
                            message(Function, "*****unsupported too large length field %d, for OIDlength\n",
                                    length)},
                           {Always, dump(Function, content.data(), length)},
                           {Trace::Flow, leave(Function, array)}};
            });
        DOV0_FreeStorage(&array);
    }
}

TEST(DecodeOIDfromBER, DoesNotReadContentsWhoseLengthCannotBeTrue)
{
    for (const int32_t length : {0x1000001, INT32_MAX}) {
        GuardedBuffer buffer(1);
        uint32_t *array = nullptr;
        int32_t count = 77;
        const TraceLog log =
            traceAt(0, [&] { array = DOV0_DecodeOIDfromBER(buffer.bytes(), length, &count); });
        EXPECT_EQ(log,
                  (TraceLog{message(Function, "*****unsupported too large length field %d, for OIDlength\n",
                                    length)}));
        EXPECT_NE(array, nullptr);
        EXPECT_EQ(count, 0);
        DOV0_FreeStorage(&array);
    }
}

TEST(DecodeOIDfromBER, TracesTheElements)
{
    for (const Bytes &content : {Bytes{0x2B, 0x06, 0x01, 0x8F, 0xFF, 0xFF, 0xFF, 0x7F}, Bytes(96, 0x7F)}) {
        const Elements elements = *Model(content).decoded.elements;
        uint32_t *array = nullptr;
        int32_t count = 0;
        expectTrace(
            [&] {
                DOV0_FreeStorage(&array);
                takeTrace();
                array = DOV0_DecodeOIDfromBER(content.data(), static_cast<int32_t>(content.size()), &count);
            },
            [&](uint32_t level) {
                LeveledTrace trace = LeveledTrace{{Trace::Flow, entry(Function)}} + storageTaken(ArraySize);
                if ((level & Trace::Detail) != 0) {
                    trace = trace + storageTaken(1024) +
                            LeveledTrace{
                                {Trace::Detail, message(Function, "OID->%s", dotted(elements).c_str())}} +
                            storageGiven();
                }
                return trace + LeveledTrace{{Trace::Flow, leave(Function, array)}};
            });
        DOV0_FreeStorage(&array);
    }
}

TEST(DecodeOIDfromBER, RefusesSubIdentifiersThatAreTooLongOrCutOff)
{
    const std::vector<Bytes> contents = {
        {0x2B, 0x81, 0x81, 0x81, 0x81, 0x81, 0x01},
        {0x2B, 0x06, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x01, 0x05},
        {0x2B, 0x81},
        {0x2B, 0x06, 0x81, 0x82, 0x83},
        {0x2B, 0x06, 0x81, 0x82, 0x83, 0x84},
        {0x2B, 0x06, 0x01, 0x81, 0x82, 0x83, 0x84, 0x85},
    };
    for (const Bytes &content : contents) {
        const Flaw flaw = Model(content).flaw.value();
        GuardedBuffer buffer(content.size());
        std::copy(content.begin(), content.end(), buffer.bytes());
        expectTrace(
            [&] {
                int32_t count = 77;
                EXPECT_EQ(DOV0_DecodeOIDfromBER(buffer.bytes(), static_cast<int32_t>(content.size()), &count),
                          nullptr);
                EXPECT_EQ(count, 0);
            },
            [&](uint32_t) {
                return LeveledTrace{{Trace::Flow, entry(Function)}} + storageTaken(ArraySize) +
                       storageGiven() +
                       LeveledTrace{
                           {Trace::Error,
                            message(Function, "*****unsupported too large length field %d\n", flaw.count)},
                           {Trace::Error, dump(Function, content.data() + flaw.offset,
                                               static_cast<int32_t>(content.size() - flaw.offset))},
                           {Trace::Flow, leave(Function, intptr_t{0})}};
            });
    }
}

TEST(DecodeOIDfromBER, RefusesNothingAtAll)
{
    const unsigned char content[] = {0x2B};
    struct {
        const unsigned char *content;
        int32_t length;
    } const cases[] = {{content, 0}, {content, -1}, {content, INT32_MIN}, {nullptr, 1}, {nullptr, 97}};
    for (const auto &each : cases) {
        expectTrace(
            [&] {
                int32_t count = 77;
                EXPECT_EQ(DOV0_DecodeOIDfromBER(each.content, each.length, &count), nullptr);
                EXPECT_EQ(count, 0);
            },
            [&](uint32_t) {
                return LeveledTrace{
                    {Trace::Flow, entry(Function)},
                    {Trace::Error, message(Function, "*****OID content @%p length %d invalid\n",
                                           static_cast<const void *>(each.content), each.length)},
                    {Trace::Flow, leave(Function, intptr_t{0})}};
            });
    }
    EXPECT_EQ(DOV0_DecodeOIDfromBER(content, 1, nullptr), nullptr);
}

TEST(DecodeOIDfromBER, FailsWithoutStorage)
{
    const unsigned char content[] = {0x2B, 0x06};
    int32_t count = 77;
    uint32_t *array = nullptr;
    constexpr uint32_t Level = Trace::Flow | Trace::Error | Trace::Detail;
    const TraceLog log =
        traceAt(Level, [&] { withoutHeap([&] { array = DOV0_DecodeOIDfromBER(content, 2, &count); }); });
    EXPECT_EQ(array, nullptr);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(log, at(Level, LeveledTrace{{Trace::Flow, entry(Function)}} + storageMissing(ArraySize) +
                                 LeveledTrace{{Trace::Flow, leave(Function, intptr_t{0})}}));
}

TEST(DecodeOIDfromBER, GivesTheArrayWithoutStorageForTheTrace)
{
    const unsigned char content[] = {0x2B, 0x06};
    int32_t count = 77;
    uint32_t *array = nullptr;
    const TraceLog log = traceOf(Function, Trace::Detail, [&] {
        EXPECT_TRUE(withHeapFailure(2, [&] { array = DOV0_DecodeOIDfromBER(content, 2, &count); }));
    });
    EXPECT_EQ(log, (TraceLog{message(Function, "OID->...")}));
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(count, 3);
    DOV0_FreeStorage(&array);
}
