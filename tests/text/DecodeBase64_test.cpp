#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_DecodeBase64";
const std::string Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The value of a character.
int mapped(char character)
{
    const char low = static_cast<char>(static_cast<unsigned char>(character) & 0x7F);
    const size_t value = Alphabet.find(low);
    if (low == '=') {
        return 0xFF;
    }
    return value != std::string::npos ? static_cast<int>(value) : 0xFE;
}

std::string threeBytes(int value0, int value1, int value2, int value3)
{
    const int bytes[] = {value0 * 4 | (value1 / 16 & 3), value1 * 16 | (value2 / 4 & 15),
                         value2 * 64 | (value3 & 63)};
    std::string result;
    for (const int byte : bytes) {
        result += static_cast<char>(static_cast<unsigned char>(byte % 256));
    }
    return result;
}

// All bytes that are decoded, with those behind a NUL.
std::string model(const std::string &input)
{
    std::string work;
    size_t position = 0;
    for (; position + 4 <= input.size(); position += 4) {
        work += threeBytes(mapped(input[position]), mapped(input[position + 1]), mapped(input[position + 2]),
                           mapped(input[position + 3]));
    }
    const size_t tail = input.size() - position;
    if (tail > 0) {
        int values[4] = {};
        for (size_t p = 0; p < tail; ++p) {
            const int value = mapped(p < work.size() ? work[p] : '\0');
            values[p] = value == 0xFF ? 0 : value;
        }
        work += threeBytes(values[0], values[1], values[2], values[3]);
    }
    return work;
}

// What is written for an input, into a buffer that is just large enough: all of it, so that what must not be
// touched shows its fill.
std::string written(const std::string &text)
{
    GuardedBuffer input(text);
    GuardedBuffer buffer(DOV0_BASE64_DECODED_SIZE(text.size()), '#');
    char *output = buffer.text();
    EXPECT_EQ(DOV0_DecodeBase64(input.text(), &output), 1);
    EXPECT_EQ(output, buffer.text());
    return std::string(output, buffer.size());
}

// The same from the model: the text up to a NUL, that NUL, and fill.
std::string expectedWriting(const std::string &text)
{
    std::string result = model(text);
    const size_t size = result.size() + 1;
    result = result.c_str();
    result += '\0';
    result.resize(size, '#');
    return result;
}

std::string decoded(const std::string &text)
{
    return written(text).c_str();
}

std::string randomInput(std::mt19937 &random, size_t length, bool wild)
{
    std::string text(length, '\0');
    for (char &character : text) {
        character = wild ? static_cast<char>(random() % 255 + 1) : Alphabet[random() % 64];
    }
    return text;
}

} // namespace

TEST(DecodeBase64, DecodesWholeGroups)
{
    EXPECT_EQ(decoded("TWFu"), "Man");
    EXPECT_EQ(decoded("Zm9vYmFy"), "foobar");
    EXPECT_EQ(decoded("+/+/"), "\xFB\xFF\xBF");
}

TEST(DecodeBase64, TakesPaddingAndForeignCharactersForValues)
{
    EXPECT_EQ(decoded("QQ=="), "\x41\x0F\xFF");
    EXPECT_EQ(decoded("TWE="), "Ma?");
    EXPECT_EQ(decoded("===="), "\xFF\xFF\xFF");
    EXPECT_EQ(decoded("----"), "\xFB\xEF\xBE");
}

TEST(DecodeBase64, DoesNotSeeTheHighBitOfACharacter)
{
    EXPECT_EQ(decoded("\xD4\xD7\xC6\xF5"), "Man");
    EXPECT_EQ(decoded("QQ\xBD="), "\x41\x0F\xFF");
}

TEST(DecodeBase64, FillsTheTailFromTheResult)
{
    EXPECT_EQ(decoded("A"), "\xF8"); // 0xFE: nothing is decoded yet, and a NUL is no character
    EXPECT_EQ(decoded("AA"), "\xFB\xE0");
    EXPECT_EQ(decoded("AAA"), "\xFB\xEF\x80");
    EXPECT_EQ(decoded("TWFuTW"), "Man1\xA0"); // M and a: 12 and 26
    EXPECT_EQ(decoded("PT09A"), "===");       // '=' counts as 0 there, and the three bytes are NUL
}

TEST(DecodeBase64, AgreesWithTheModelForEveryLengthAndByte)
{
    std::mt19937 random(66);
    for (size_t length = 1; length <= 2000; ++length) {
        const std::string tame = randomInput(random, length, false);
        ASSERT_EQ(written(tame), expectedWriting(tame)) << length;
        const std::string wild = randomInput(random, length, true);
        ASSERT_EQ(written(wild), expectedWriting(wild)) << length;
    }
    for (int byte = 1; byte < 256; ++byte) {
        for (size_t length = 1; length <= 8; ++length) {
            const std::string text(length, static_cast<char>(byte));
            ASSERT_EQ(written(text), expectedWriting(text)) << byte << " " << length;
        }
    }
}

TEST(DecodeBase64, DecodesWhatWasEncoded)
{
    std::mt19937 random(67);
    for (size_t length = 3; length <= 999; length += 3) {
        std::string text(length, '\0');
        for (char &character : text) {
            character = static_cast<char>(random() % 255 + 1);
        }
        char *encoded = nullptr;
        ASSERT_EQ(DOV0_EncodeBase64(text.c_str(), &encoded), 1);
        ASSERT_EQ(decoded(encoded), text);
        DOV0_FreeStorage(&encoded);
    }
}

TEST(DecodeBase64, EndsTheResultAtADecodedNul)
{
    EXPECT_EQ(written("TWFuAAAATWFu"), std::string("Man\0######", 10));
}

TEST(DecodeBase64, GivesOutABlockForANullBuffer)
{
    for (const auto &[length, size] : {std::pair<size_t, int>{4, 4}, {1, 4}, {680, 511}, {684, 514}}) {
        const std::string text(length, 'x');
        char *output = nullptr;
        setTraceLevel("DOV0_GetStorage", Trace::Detail);
        takeTrace();
        EXPECT_EQ(DOV0_DecodeBase64(text.c_str(), &output), 1);
        const TraceLog log = takeTrace();
        ASSERT_EQ(log.size(), 3U);
        EXPECT_EQ(log[2],
                  message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n", output, size));
        EXPECT_EQ(output, std::string(model(text).c_str()));
        DOV0_FreeStorage(&output);
    }
}

TEST(DecodeBase64, WorksIn512BytesAndInMoreOnlyWhenTheResultNeedsThem)
{
    for (const auto &[length, size] :
         {std::pair<size_t, size_t>{1, 512}, {680, 512}, {681, 514}, {684, 514}, {685, 517}}) {
        setTraceLevel("DOV0_GetStorage", Trace::Detail);
        takeTrace();
        written(std::string(length, 'x'));
        const TraceLog log = takeTrace();
        ASSERT_EQ(log.size(), 2U);
        EXPECT_NE(log[0].find(" size " + std::to_string(size) + "\n"), std::string::npos) << log[0];
        EXPECT_NE(log[1].find(" size 8\n"), std::string::npos) << log[1];
    }
}

TEST(DecodeBase64, MayWriteOverItsInput)
{
    char text[] = "TWFuIGlz";
    char *output = text;
    EXPECT_EQ(DOV0_DecodeBase64(text, &output), 1);
    EXPECT_STREQ(text, "Man is");
}

TEST(DecodeBase64, RefusesAnEmptyInput)
{
    GuardedBuffer buffer(1, 0x5A);
    char *output = buffer.text();
    const std::string record = message(Function, "No input string was provided");
    for (const char *input : {"", static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_DecodeBase64(input, &output), 0); }),
                  (TraceLog{entry(Function), record, leave(Function, intptr_t{0})}));
        EXPECT_EQ(output, buffer.text());
        EXPECT_EQ(buffer.bytes()[0], 0x5A);
        EXPECT_EQ(bitsThatShow(record, [&] { DOV0_DecodeBase64(input, &output); }), Trace::Error);
    }
}

TEST(DecodeBase64, RefusesANullOutput)
{
    const std::string record = message(Function, "*****Address of Base64 output is NULL\n");
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_DecodeBase64("TWFu", nullptr), 0); }),
              (TraceLog{entry(Function), record, leave(Function, intptr_t{0})}));
    EXPECT_EQ(bitsThatShow(record, [] { DOV0_DecodeBase64("TWFu", nullptr); }), Trace::Error);
}

TEST(DecodeBase64, TracesInputAndTheResultOfEachWholeGroupUnderTheDetailBit)
{
    GuardedBuffer buffer(100);
    char *output = buffer.text();
    EXPECT_EQ(traceOf(Function, Trace::All, [&] { DOV0_DecodeBase64("TWFuIGlzA", &output); }),
              (TraceLog{entry(Function), message(Function, "Converting input string <TWFuIGlzA> from Base64"),
                        message(Function, "pDecodeBuffer <Man>"), message(Function, "pDecodeBuffer <Man is>"),
                        leave(Function, 1)}));
    EXPECT_EQ(traceOf(Function, Trace::All, [&] { DOV0_DecodeBase64("TW", &output); }),
              (TraceLog{entry(Function), message(Function, "Converting input string <TW> from Base64"),
                        leave(Function, 1)}));
    EXPECT_EQ(
        traceOf(Function, Trace::All & ~Trace::Detail, [&] { DOV0_DecodeBase64("TWFuIGlzA", &output); }),
        (TraceLog{entry(Function), leave(Function, 1)}));
    const auto call = [&] { DOV0_DecodeBase64("TWFu", &output); };
    EXPECT_EQ(bitsThatShow(message(Function, "Converting input string <TWFu> from Base64"), call),
              Trace::Detail);
    EXPECT_EQ(bitsThatShow(message(Function, "pDecodeBuffer <Man>"), call), Trace::Detail);
}

TEST(DecodeBase64, RunsThroughTheExportedGroupOperations)
{
    GuardedBuffer buffer(100);
    char *output = buffer.text();
    const TraceLog log = traceAt(Trace::Flow, [&] { DOV0_DecodeBase64("TWFuA", &output); });
    ASSERT_EQ(log.size(), 18U);
    EXPECT_EQ(log[2].find("DOV0_GetStorage exit "), 0U);
    EXPECT_EQ(log[4].find("DOV0_GetStorage exit "), 0U);
    TraceLog expected = {entry(Function), entry("DOV0_GetStorage"), log[2], entry("DOV0_GetStorage"), log[4]};
    for (int group = 0; group < 2; ++group) {
        expected.insert(expected.end(), {entry("DOV0_DecodeToBuffer"), entry("DOV0_DecodeRaw"),
                                         leave("DOV0_DecodeRaw"), leave("DOV0_DecodeToBuffer")});
    }
    for (int block = 0; block < 2; ++block) {
        expected.insert(expected.end(), {entry("DOV0_FreeStorage"), leave("DOV0_FreeStorage")});
    }
    expected.push_back(leave(Function, 1));
    EXPECT_EQ(log, expected);
}

TEST(DecodeBase64, GivesBackWhatItTookWhenStorageFails)
{
    char *output = nullptr;
    for (int n = 1; n <= 3; ++n) {
        EXPECT_TRUE(withHeapFailure(n, [&] { EXPECT_EQ(DOV0_DecodeBase64("TWFu", &output), 0); })) << n;
        EXPECT_EQ(output, nullptr);
    }
    GuardedBuffer buffer(4, 0x5A);
    char *own = buffer.text();
    for (int n = 1; n <= 2; ++n) {
        EXPECT_TRUE(withHeapFailure(n, [&] { EXPECT_EQ(DOV0_DecodeBase64("TWFu", &own), 0); })) << n;
        EXPECT_EQ(own, buffer.text());
        EXPECT_EQ(std::string(buffer.text(), 4), "ZZZZ");
    }
    EXPECT_EQ(heapRequestsOf([&] { DOV0_DecodeBase64("TWFu", &own); }), 2);
}
