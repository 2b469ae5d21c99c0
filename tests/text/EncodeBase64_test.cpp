#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"

#include <cstdio>
#include <random>

namespace {

constexpr char Function[] = "DOV0_EncodeBase64";
const std::string Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// What is written for a text, into a buffer that is just large enough.
std::string encoded(const std::string &text)
{
    GuardedBuffer input(text);
    GuardedBuffer buffer(DOV0_BASE64_ENCODED_SIZE(text.size()));
    char *output = buffer.text();
    EXPECT_EQ(DOV0_EncodeBase64(input.text(), &output), 1);
    EXPECT_EQ(output, buffer.text());
    EXPECT_EQ(output[buffer.size() - 1], '\0');
    return std::string(output, buffer.size() - 1);
}

// The text as one row of bits, cut into sixes.
std::string model(const std::string &text)
{
    std::string bits;
    for (const char character : text) {
        for (int bit = 7; bit >= 0; --bit) {
            bits += (static_cast<unsigned char>(character) >> bit & 1) != 0 ? '1' : '0';
        }
    }
    bits.resize((bits.size() + 5) / 6 * 6, '0');
    std::string result;
    for (size_t i = 0; i < bits.size(); i += 6) {
        result += Alphabet[std::stoul(bits.substr(i, 6), nullptr, 2)];
    }
    result.resize((result.size() + 3) / 4 * 4, '=');
    return result;
}

std::string randomText(std::mt19937 &random, size_t length)
{
    std::string text(length, '\0');
    for (char &character : text) {
        character = static_cast<char>(random() % 255 + 1);
    }
    return text;
}

// What the base64 tool of the system makes of a text.
std::string toolEncoded(const std::string &text)
{
    char name[] = "/tmp/encode_base64_XXXXXX";
    const int descriptor = mkstemp(name);
    EXPECT_EQ(write(descriptor, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(descriptor);
    std::string result;
    FILE *tool = popen((std::string("base64 -w0 ") + name).c_str(), "r");
    char piece[4096];
    for (size_t count = fread(piece, 1, sizeof piece, tool); count > 0;
         count = fread(piece, 1, sizeof piece, tool)) {
        result.append(piece, count);
    }
    EXPECT_EQ(pclose(tool), 0);
    unlink(name);
    return result;
}

} // namespace

TEST(EncodeBase64, EncodesAndPads)
{
    EXPECT_EQ(encoded("Man"), "TWFu");
    EXPECT_EQ(encoded("Ma"), "TWE=");
    EXPECT_EQ(encoded("M"), "TQ==");
    EXPECT_EQ(encoded("foobar"), "Zm9vYmFy");
    EXPECT_EQ(encoded("fooba"), "Zm9vYmE=");
    EXPECT_EQ(encoded("\xFB\xFF\xBF"), "+/+/");
}

TEST(EncodeBase64, EncodesEveryLengthAndByte)
{
    std::mt19937 random(64);
    for (size_t length = 1; length <= 2000; ++length) {
        const std::string text = randomText(random, length);
        ASSERT_EQ(encoded(text), model(text)) << length;
    }
    for (int byte = 1; byte < 256; ++byte) {
        for (size_t length = 1; length <= 3; ++length) {
            const std::string text(length, static_cast<char>(byte));
            ASSERT_EQ(encoded(text), model(text)) << byte;
        }
    }
}

TEST(EncodeBase64, AgreesWithTheSystemsTool)
{
    std::mt19937 random(640);
    for (const size_t length : {1U, 2U, 3U, 57U, 381U, 382U, 1000U, 1000000U}) {
        const std::string text = randomText(random, length);
        EXPECT_TRUE(encoded(text) == toolEncoded(text)) << length;
    }
}

TEST(EncodeBase64, GivesOutABlockForANullBuffer)
{
    char *output = nullptr;
    EXPECT_EQ(DOV0_EncodeBase64("Man is", &output), 1);
    EXPECT_STREQ(output, "TWFuIGlz");
    DOV0_FreeStorage(&output);
    for (const size_t length : {1U, 381U, 382U, 2000U}) {
        setTraceLevel("DOV0_GetStorage", Trace::Detail);
        takeTrace();
        EXPECT_EQ(DOV0_EncodeBase64(std::string(length, 'x').c_str(), &output), 1);
        const TraceLog log = takeTrace();
        ASSERT_EQ(log.size(), 3U);
        EXPECT_EQ(log[2], message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n", output,
                                  static_cast<int>((length + 2) / 3 * 4 + 1)));
        DOV0_FreeStorage(&output);
    }
}

TEST(EncodeBase64, WorksIn512BytesAndInMoreOnlyWhenTheResultNeedsThem)
{
    for (const auto &[length, size] :
         {std::pair<size_t, size_t>{1, 512}, {381, 512}, {382, 513}, {384, 513}, {385, 517}}) {
        setTraceLevel("DOV0_GetStorage", Trace::Detail);
        takeTrace();
        encoded(std::string(length, 'x'));
        const TraceLog log = takeTrace();
        ASSERT_EQ(log.size(), 2U);
        EXPECT_NE(log[0].find(" size " + std::to_string(size) + "\n"), std::string::npos) << log[0];
        EXPECT_NE(log[1].find(" size 8\n"), std::string::npos) << log[1];
    }
}

TEST(EncodeBase64, RefusesAnEmptyInput)
{
    GuardedBuffer buffer(1, 0x5A);
    char *output = buffer.text();
    const std::string record = message(Function, "No input string was provided");
    for (const char *input : {"", static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_EncodeBase64(input, &output), 0); }),
                  (TraceLog{entry(Function), record, leave(Function, intptr_t{0})}));
        EXPECT_EQ(output, buffer.text());
        EXPECT_EQ(buffer.bytes()[0], 0x5A);
        EXPECT_EQ(bitsThatShow(record, [&] { DOV0_EncodeBase64(input, &output); }), Trace::Error);
    }
}

TEST(EncodeBase64, RefusesANullOutput)
{
    const std::string record = message(Function, "*****Address of Base64 output is NULL\n");
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_EncodeBase64("Man", nullptr), 0); }),
              (TraceLog{entry(Function), record, leave(Function, intptr_t{0})}));
    EXPECT_EQ(bitsThatShow(record, [] { DOV0_EncodeBase64("Man", nullptr); }), Trace::Error);
}

TEST(EncodeBase64, TracesInputAndTailUnderTheDetailBit)
{
    GuardedBuffer buffer(100);
    char *output = buffer.text();
    EXPECT_EQ(traceOf(Function, Trace::All, [&] { DOV0_EncodeBase64("Man i", &output); }),
              (TraceLog{entry(Function), message(Function, "Converting input string <Man i> to Base64"),
                        message(Function, "pEncodeBuffer <TWFuIGk=>"), leave(Function, 1)}));
    EXPECT_EQ(traceOf(Function, Trace::All, [&] { DOV0_EncodeBase64("Man is", &output); }),
              (TraceLog{entry(Function), message(Function, "Converting input string <Man is> to Base64"),
                        leave(Function, 1)}));
    EXPECT_EQ(traceOf(Function, Trace::All & ~Trace::Detail, [&] { DOV0_EncodeBase64("Man i", &output); }),
              (TraceLog{entry(Function), leave(Function, 1)}));
    const auto call = [&] { DOV0_EncodeBase64("Man i", &output); };
    EXPECT_EQ(bitsThatShow(message(Function, "Converting input string <Man i> to Base64"), call),
              Trace::Detail);
    EXPECT_EQ(bitsThatShow(message(Function, "pEncodeBuffer <TWFuIGk=>"), call), Trace::Detail);
}

TEST(EncodeBase64, RunsThroughTheExportedGroupOperations)
{
    GuardedBuffer buffer(100);
    char *output = buffer.text();
    const TraceLog log = traceAt(Trace::Flow, [&] { DOV0_EncodeBase64("Man i", &output); });
    ASSERT_EQ(log.size(), 18U);
    EXPECT_EQ(log[2].find("DOV0_GetStorage exit "), 0U);
    EXPECT_EQ(log[4].find("DOV0_GetStorage exit "), 0U);
    TraceLog expected = {entry(Function), entry("DOV0_GetStorage"), log[2], entry("DOV0_GetStorage"), log[4]};
    for (int group = 0; group < 2; ++group) {
        expected.insert(expected.end(), {entry("DOV0_EncodeToBuffer"), entry("DOV0_EncodeRaw"),
                                         leave("DOV0_EncodeRaw"), leave("DOV0_EncodeToBuffer")});
    }
    for (int block = 0; block < 2; ++block) {
        expected.insert(expected.end(), {entry("DOV0_FreeStorage"), leave("DOV0_FreeStorage")});
    }
    expected.push_back(leave(Function, 1));
    EXPECT_EQ(log, expected);
}

TEST(EncodeBase64, GivesBackWhatItTookWhenStorageFails)
{
    char *output = nullptr;
    const auto call = [&] { EXPECT_EQ(DOV0_EncodeBase64("Man", &output), 0); };
    for (int n = 1; n <= 3; ++n) {
        EXPECT_TRUE(withHeapFailure(n, call)) << n;
        EXPECT_EQ(output, nullptr);
    }
    GuardedBuffer buffer(5, 0x5A);
    char *own = buffer.text();
    for (int n = 1; n <= 2; ++n) {
        EXPECT_TRUE(withHeapFailure(n, [&] { EXPECT_EQ(DOV0_EncodeBase64("Man", &own), 0); })) << n;
        EXPECT_EQ(own, buffer.text());
        EXPECT_EQ(std::string(buffer.text(), 5), "ZZZZZ");
    }
    EXPECT_EQ(heapRequestsOf([&] { DOV0_EncodeBase64("Man", &own); }), 2);
}

TEST(EncodeBase64, TakesLongTexts)
{
    std::mt19937 random(65);
    const std::string text = randomText(random, 10000000);
    char *output = nullptr;
    ASSERT_EQ(DOV0_EncodeBase64(text.c_str(), &output), 1);
    EXPECT_EQ(std::char_traits<char>::length(output), (text.size() + 2) / 3 * 4);
    for (const size_t group : {size_t{0}, size_t{1000000}, size_t{3333332}}) {
        EXPECT_EQ(std::string(output + group * 4, 4), model(text.substr(group * 3, 3)));
    }
    char *again = nullptr;
    ASSERT_EQ(DOV0_DecodeBase64(output, &again), 1);
    EXPECT_TRUE(std::string(again, 9999999) == text.substr(0, 9999999)); // the last group is padded
    DOV0_FreeStorage(&output);
    DOV0_FreeStorage(&again);
}
