#include "ber/trace_levels.h"
#include "support/guarded_buffer.h"
#include "support/heap_faults.h"

#include <random>
#include <unistd.h>

namespace {

constexpr char Function[] = "DOV0_FormatOIDfromString";

using Bytes = std::vector<unsigned char>;

// The thread that the tokenizer sees: the true one, or whatever a test says.
std::function<int32_t()> threadOfTheTest;

// What an element of a text is worth: white space, a sign and digits, limited to 64 bits.
int64_t numberOf(const std::string &element)
{
    size_t i = element.find_first_not_of(" \t\n\v\f\r");
    if (i == std::string::npos) {
        return 0;
    }
    const bool isNegative = element[i] == '-';
    if (element[i] == '-' || element[i] == '+') {
        ++i;
    }
    int64_t value = 0;
    bool isTooLarge = false;
    for (; i < element.size() && element[i] >= '0' && element[i] <= '9'; ++i) {
        const int digit = element[i] - '0';
        isTooLarge = isTooLarge || value > (INT64_MAX - digit) / 10;
        value = isTooLarge ? INT64_MAX : value * 10 + digit;
    }
    if (isNegative) {
        return isTooLarge ? INT64_MIN : -value;
    }
    return value;
}

struct Model {
    std::vector<std::string> tokens;
    std::vector<int64_t> numbers;
    bool isTextLeft = false; // behind the first two elements
    Bytes content;
    Bytes field; // empty when the text is refused

    explicit Model(const std::string &text)
    {
        std::string token;
        size_t behindTwo = 0;
        for (size_t i = 0; i <= text.size(); ++i) {
            if (i < text.size() && text[i] != '.') {
                token += text[i];
            } else if (!token.empty()) {
                tokens.push_back(token);
                numbers.push_back(numberOf(token));
                token.clear();
                if (tokens.size() <= 2) {
                    behindTwo = i + 1;
                }
            }
        }
        isTextLeft = behindTwo < text.size();
        if (!isRefused()) {
            encode();
        }
    }

    int64_t first() const { return numbers.empty() ? 0 : numbers[0]; }
    int64_t second() const { return numbers.size() < 2 ? 0 : numbers[1]; }
    bool isRefused() const { return numbers.empty() || first() > 2 || second() > 39; }

    void encode()
    {
        content.push_back(static_cast<unsigned char>(((first() % 256) * 40 + second() % 256) % 256));
        for (size_t i = 2; i < numbers.size(); ++i) {
            const int64_t number = numbers[i];
            if (number < 0) {
                content.push_back(static_cast<unsigned char>(number % 256));
                continue;
            }
            Bytes groups;
            for (int64_t left = number; (left > 0 || groups.empty()) && groups.size() < 5; left /= 128) {
                groups.insert(groups.begin(),
                              static_cast<unsigned char>(left % 128 + (groups.empty() ? 0 : 128)));
            }
            content.insert(content.end(), groups.begin(), groups.end());
        }
        field.push_back(0x06);
        const size_t size = content.size();
        if (numbers.size() == 1) {
            // The length writer writes no length of 0.
        } else if (size < 128) {
            field.push_back(static_cast<unsigned char>(size));
        } else {
            const size_t count = size < 65536 ? 2 : 3;
            field.push_back(static_cast<unsigned char>(0x80 + count));
            for (size_t i = count; i > 0; --i) {
                field.push_back(static_cast<unsigned char>(size >> (8 * (i - 1))));
            }
        }
        field.insert(field.end(), content.begin(), content.end());
    }
};

// The content length as the field says it, which is 0 for a single element.
int32_t lengthSaid(const Model &model)
{
    return model.numbers.size() == 1 ? 0 : static_cast<int32_t>(model.content.size());
}

Bytes encoded(const char *text)
{
    unsigned char *field = nullptr;
    int32_t size = -1;
    const int32_t result = DOV0_FormatOIDfromString(text, &field, &size);
    EXPECT_EQ(result, field != nullptr ? 1 : 0);
    Bytes bytes;
    if (field != nullptr) {
        bytes.assign(field, field + size);
        DOV0_FreeStorage(&field);
    } else {
        EXPECT_EQ(size, 0);
    }
    return bytes;
}

void expectModel(const std::string &text)
{
    GuardedBuffer guarded(text);
    ASSERT_EQ(encoded(guarded.text()), Model(text).field) << "<" << text << ">";
}

// Leaves a text unfinished on each of these threads.
void takeSlotsOfThreads(int32_t first, int32_t last)
{
    const std::function<int32_t()> before = threadOfTheTest;
    for (int32_t thread = first; thread <= last; ++thread) {
        char text[] = "a,b";
        threadOfTheTest = [thread] { return thread; };
        EXPECT_NE(DOV0_strtok(text, ","), nullptr);
    }
    threadOfTheTest = before;
}

// The tokenizer's own messages are shown by its own tests.
TraceLog withoutTokenizerMessages(const TraceLog &log)
{
    TraceLog rest;
    for (const std::string &line : log) {
        if (line.rfind("DOV0_strtok: ", 0) != 0) {
            rest.push_back(line);
        }
    }
    return rest;
}

LeveledTrace tokens(size_t found)
{
    LeveledTrace calls;
    for (size_t i = 0; i <= found; ++i) {
        calls.push_back({Trace::Flow, entry("DOV0_strtok")});
        const std::string result = i < found ? "*" : "0";
        calls.push_back({Trace::Flow, "DOV0_strtok exit " + result});
    }
    return calls;
}

LeveledTrace failure(const char *text)
{
    return {{Trace::Error, message(Function, "*****Error detected in input OID string <%s>\n", text)},
            {Trace::Flow, leave(Function, intptr_t{0})}};
}

// The whole trace of a text that is taken. The address of the field is known to the caller.
LeveledTrace traceOfText(const std::string &text, const unsigned char *field)
{
    const Model model(text);
    const auto size = static_cast<int32_t>(model.field.size());
    LeveledTrace trace =
        LeveledTrace{{Trace::Flow, entry(Function)}} + storageTaken(static_cast<int32_t>(text.size() + 1)) +
        tokens(model.tokens.size()) +
        LeveledTrace{{Trace::Detail, message(Function, "Calculated OID length %d\n", size)}} +
        storageTaken(size + 32) +
        LeveledTrace{
            {Trace::Flow, entry("DOV0_FormatBERlengthField")},
            {Trace::Detail, message("DOV0_FormatBERlengthField", "Input buffer pointer @%p size %d\n",
                                    static_cast<const void *>(field + 1), lengthSaid(model))},
            {Trace::Flow, leave("DOV0_FormatBERlengthField", intptr_t{lengthSaid(model) == 0 ? 0 : 1})}};
    if (model.isTextLeft) {
        const LeveledTrace calls = tokens(model.tokens.size() > 2 ? model.tokens.size() - 2 : 0);
        for (size_t i = 0; i < calls.size(); i += 2) {
            trace.push_back(calls[i]);
            trace.push_back(calls[i + 1]);
            if (i + 2 < calls.size()) {
                trace.push_back({Trace::Detail, message(Function, "Encode OID element %d\n",
                                                        static_cast<int32_t>(model.numbers[2 + i / 2]))});
            }
        }
    }
    return trace + storageGiven() +
           LeveledTrace{{Trace::Detail, message(Function, "OID string %s -> ", text.c_str())},
                        {Trace::Detail, dump(Function, model.field.data(), size)},
                        {Trace::Flow, leave(Function, intptr_t{1})}};
}

} // namespace

extern "C" int32_t PLT1_ThreadID() noexcept
{
    return threadOfTheTest ? threadOfTheTest() : gettid();
}

TEST(FormatOIDfromString, WritesTheFormsOfTheManual)
{
    struct {
        const char *text;
        Bytes field;
    } const cases[] = {
        {"1.3.6.1.2.1.1.1.0", {0x06, 0x08, 0x2B, 0x06, 0x01, 0x02, 0x01, 0x01, 0x01, 0x00}},
        {"1.3", {0x06, 0x01, 0x2B}},
        {"0.0", {0x06, 0x01, 0x00}},
        {"2.39", {0x06, 0x01, 0x77}},
        {"1.3.127", {0x06, 0x02, 0x2B, 0x7F}},
        {"1.3.128", {0x06, 0x03, 0x2B, 0x81, 0x00}},
        {"1.3.16383", {0x06, 0x03, 0x2B, 0xFF, 0x7F}},
        {"1.3.16384", {0x06, 0x04, 0x2B, 0x81, 0x80, 0x00}},
        {"1.3.2097151", {0x06, 0x04, 0x2B, 0xFF, 0xFF, 0x7F}},
        {"1.3.2097152", {0x06, 0x05, 0x2B, 0x81, 0x80, 0x80, 0x00}},
        {"1.3.268435455", {0x06, 0x05, 0x2B, 0xFF, 0xFF, 0xFF, 0x7F}},
        {"1.3.268435456", {0x06, 0x06, 0x2B, 0x81, 0x80, 0x80, 0x80, 0x00}},
        {"1.3.2147483647", {0x06, 0x06, 0x2B, 0x87, 0xFF, 0xFF, 0xFF, 0x7F}},
        {"1.3.2147483648", {0x06, 0x06, 0x2B, 0x88, 0x80, 0x80, 0x80, 0x00}},
        {"1.3.4294967295", {0x06, 0x06, 0x2B, 0x8F, 0xFF, 0xFF, 0xFF, 0x7F}},
        {"1.3.34359738367", {0x06, 0x06, 0x2B, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F}},
        {"1.3.34359738368", {0x06, 0x06, 0x2B, 0x80, 0x80, 0x80, 0x80, 0x00}}, // the lower 35 bits
        {"1.3.-1", {0x06, 0x02, 0x2B, 0xFF}},                                  // the low byte
        {"1.3.x", {0x06, 0x02, 0x2B, 0x00}},
        {"x.y", {0x06, 0x01, 0x00}},
        {".1..3...6.", {0x06, 0x02, 0x2B, 0x06}},
        {" 1. 3.\t6", {0x06, 0x02, 0x2B, 0x06}},
        {"1.3.6x7", {0x06, 0x02, 0x2B, 0x06}},
        {"+1.+3.+6", {0x06, 0x02, 0x2B, 0x06}},
        {"1", {0x06, 0x28}}, // a length of 0 cannot be written
    };
    for (const auto &each : cases) {
        EXPECT_EQ(encoded(each.text), each.field) << each.text;
        EXPECT_EQ(Model(each.text).field, each.field) << "model, " << each.text;
    }
}

TEST(FormatOIDfromString, AgreesWithTheModel)
{
    std::mt19937_64 random(7);
    for (int i = 0; i < 3000; ++i) {
        std::string text = std::to_string(random() % 3) + "." + std::to_string(random() % 40);
        for (uint64_t more = random() % 100; more > 0; --more) {
            text += "." + std::to_string(random() >> (random() % 64));
        }
        expectModel(text);
    }
}

TEST(FormatOIDfromString, AgreesWithTheModelOnAnyCharacters)
{
    std::mt19937 random(8);
    const std::string characters = "0123456789...01-+ x\t/:";
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (auto length = random() % 40; length > 0; --length) {
            text += characters[random() % characters.size()];
        }
        expectModel(text);
    }
}

TEST(FormatOIDfromString, SaysTheSizeThatItWrites)
{
    for (const size_t elements : {127U, 128U, 129U, 130U, 1000U, 65535U, 65536U, 65537U, 65538U}) {
        std::string text = "1.3";
        for (size_t i = 2; i < elements; ++i) {
            text += ".7";
        }
        const Model model(text);
        const Bytes field = encoded(text.c_str());
        EXPECT_TRUE(field == model.field) << elements;
        const TraceLog log = traceOf(Function, Trace::Detail, [&] { encoded(text.c_str()); });
        EXPECT_EQ(log.front(),
                  message(Function, "Calculated OID length %d\n", static_cast<int>(field.size())));
        unsigned char *cursor = const_cast<unsigned char *>(field.data());
        uint32_t length = 0;
        EXPECT_EQ(DOV0_ExtractBERfield(&cursor, &length, nullptr),
                  static_cast<uint32_t>(DOV0_ASN_OBJECTIDENTIFIER));
        EXPECT_EQ(length, elements - 1);
        EXPECT_EQ(cursor, field.data() + field.size());
    }
}

TEST(FormatOIDfromString, TracesItsSteps)
{
    for (const char *text :
         {"1.3.6.1.2.1.1.1.0", "1.3", "1.3.", "1.3..", "1", "1..", "0.0.300.70000.4294967295.-5.x"}) {
        unsigned char *field = nullptr;
        int32_t size = 0;
        std::vector<uint32_t> levels = {0, 0x7FFFFFFF};
        for (uint32_t bit = 1; bit <= 0x8000; bit <<= 1) {
            levels.push_back(bit);
            levels.push_back(0x7FFFFFFF & ~bit);
        }
        for (const uint32_t level : levels) {
            const TraceLog log = traceAt(level, [&] { DOV0_FormatOIDfromString(text, &field, &size); });
            EXPECT_EQ(masked(withoutTokenizerMessages(log)), at(level, traceOfText(text, field)))
                << text << " at level " << level;
            DOV0_FreeStorage(&field);
        }
    }
}

TEST(FormatOIDfromString, RefusesEmptyTexts)
{
    for (const char *text : {static_cast<const char *>(nullptr), ""}) {
        unsigned char other = 0;
        unsigned char *field = &other;
        int32_t size = 77;
        expectTrace(
            [&] {
                field = &other;
                size = 77;
                EXPECT_EQ(DOV0_FormatOIDfromString(text, &field, &size), 0);
            },
            [&](uint32_t) {
                return LeveledTrace{{Trace::Flow, entry(Function)}} + failure("");
            });
        EXPECT_EQ(field, nullptr);
        EXPECT_EQ(size, 0);
    }
}

TEST(FormatOIDfromString, RefusesTextsWithoutElements)
{
    for (const char *text : {".", "...."}) {
        const TraceLog log = traceAt(Trace::Flow | Trace::Error, [&] { EXPECT_EQ(encoded(text), Bytes{}); });
        EXPECT_EQ(masked(log), at(Trace::Flow | Trace::Error, LeveledTrace{{Trace::Flow, entry(Function)}} +
                                                                  storageTaken(0) + tokens(0) +
                                                                  storageGiven() + failure(text)));
    }
}

TEST(FormatOIDfromString, RefusesAFirstOrSecondElementOutOfRange)
{
    struct {
        const char *text;
        const char *reason;
    } const cases[] = {
        {"3.1", "First OID element must be 0, 1, or 2. Input 3\n"},
        {"3.40", "First OID element must be 0, 1, or 2. Input 3\n"},
        {"100.1.1", "First OID element must be 0, 1, or 2. Input 100\n"},
        {"9999999999999999999999",
         "First OID element must be 0, 1, or 2. Input -1\n"}, // 32 bits of the largest
        {"1.40", "Second OID element must be less than 40. Input 40\n"},
        {"2.100.3", "Second OID element must be less than 40. Input 100\n"},
        {"0.4000000000.1", "Second OID element must be less than 40. Input -294967296\n"},
    };
    for (const auto &each : cases) {
        const Model model(each.text);
        constexpr uint32_t Level = Trace::Flow | Trace::Error;
        const TraceLog log = traceAt(Level, [&] { EXPECT_EQ(encoded(each.text), Bytes{}); });
        EXPECT_EQ(masked(log),
                  at(Level, LeveledTrace{{Trace::Flow, entry(Function)}} + storageTaken(0) +
                                tokens(model.tokens.size()) +
                                LeveledTrace{{Trace::Error, message(Function, "%s", each.reason)}} +
                                storageGiven() + failure(each.text)));
        EXPECT_EQ(bitsThatShow(message(Function, "%s", each.reason), [&] { encoded(each.text); }),
                  Trace::Error);
        EXPECT_EQ(from(Function, traceAt(Trace::Detail, [&] { encoded(each.text); })).size(),
                  1U); // the length
    }
}

TEST(FormatOIDfromString, TakesNegativeFirstElementsByTheirLowByte)
{
    EXPECT_EQ(encoded("-1.0"), (Bytes{0x06, 0x01, 0xD8})); // -40
    EXPECT_EQ(encoded("0.-1"), (Bytes{0x06, 0x01, 0xFF})); // -1
    EXPECT_EQ(encoded("-9223372036854775808.-9223372036854775808"), (Bytes{0x06, 0x01, 0x00}));
}

TEST(FormatOIDfromString, ReportsAMissingCopy)
{
    constexpr uint32_t Level = Trace::Flow | Trace::Error | Trace::Detail;
    const TraceLog log = traceAt(Level, [] { withoutHeap([] { EXPECT_EQ(encoded("1.3.6"), Bytes{}); }); });
    EXPECT_EQ(
        log,
        at(Level, LeveledTrace{{Trace::Flow, entry(Function)}} + storageMissing(6) +
                      LeveledTrace{{Trace::Error,
                                    message(Function, "***** Unable to allocate 6 bytes for OIDstring\n")}} +
                      failure("1.3.6")));
    EXPECT_EQ(bitsThatShow(message(Function, "***** Unable to allocate 6 bytes for OIDstring\n"),
                           [] { withoutHeap([] { encoded("1.3.6"); }); }),
              Trace::Error);
}

TEST(FormatOIDfromString, GivesItsStorageBackWhenTheFieldIsMissing)
{
    constexpr uint32_t Level = Trace::Flow | Trace::Error;
    const TraceLog log =
        traceAt(Level, [] { EXPECT_TRUE(withHeapFailure(2, [] { EXPECT_EQ(encoded("1.3.6"), Bytes{}); })); });
    EXPECT_EQ(masked(log), at(Level, LeveledTrace{{Trace::Flow, entry(Function)}} + storageTaken(0) +
                                         tokens(3) + storageMissing(36) + storageGiven() + failure("1.3.6")));
    EXPECT_EQ(heapRequestsOf([] {
                  unsigned char *field = nullptr;
                  int32_t size = 0;
                  DOV0_FormatOIDfromString("1.3.6", &field, &size);
                  DOV0_FreeStorage(&field);
              }),
              2);
}

TEST(FormatOIDfromString, GivesTheTokenizerBack)
{
    for (const char *text : {"1.3.6", "1.3", "1", "1.3..", "3.1", "1.40", "...", "1.3.6.."}) {
        encoded(text);
        withHeapFailure(2, [&] { encoded(text); });
        char other[] = "a";
        const TraceLog log = traceOf("DOV0_strtok", Trace::Detail, [&] { DOV0_strtok(other, ","); });
        EXPECT_EQ(log.front(), message("DOV0_strtok", "Found available arrayOfSavePtr[0] with threadID=0\n"))
            << text;
        DOV0_strtok(nullptr, ",");
    }
}

TEST(FormatOIDfromString, RefusesATextThatCannotBeTokenized)
{
    takeSlotsOfThreads(1, DOV0_STRTOK_SLOTS);
    threadOfTheTest = [] { return 1000; };
    const TraceLog log = traceAt(Trace::Error, [] { EXPECT_EQ(encoded("1.3.6"), Bytes{}); });
    EXPECT_EQ(log, (TraceLog{message("DOV0_strtok", "***** No slots available in the arrayOfSavePtr\n"),
                             message(Function, "*****Error detected in input OID string <1.3.6>\n")}));
}

TEST(FormatOIDfromString, RefusesATextThatCannotBeTokenizedASecondTime)
{
    takeSlotsOfThreads(1, DOV0_STRTOK_SLOTS - 1);
    // Three elements and the end make four calls; then another thread takes the last slot.
    int calls = 0;
    threadOfTheTest = [&] {
        if (++calls == 5) {
            takeSlotsOfThreads(2000, 2000);
        }
        return 1000;
    };
    const TraceLog log = traceAt(Trace::Error, [] { EXPECT_EQ(encoded("1.3.6"), Bytes{}); });
    EXPECT_EQ(log, (TraceLog{message("DOV0_strtok", "***** No slots available in the arrayOfSavePtr\n"),
                             message(Function, "*****Error detected in input OID string <1.3.6>\n")}));
}

TEST(FormatOIDfromString, RefusesANullResult)
{
    unsigned char other = 0;
    unsigned char *field = &other;
    int32_t size = 77;
    EXPECT_EQ(DOV0_FormatOIDfromString("1.3.6", nullptr, &size), 0);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(DOV0_FormatOIDfromString("1.3.6", &field, nullptr), 0);
    EXPECT_EQ(field, nullptr);
    EXPECT_EQ(
        traceAt(Trace::Flow | Trace::Error, [] { DOV0_FormatOIDfromString("1.3.6", nullptr, nullptr); }),
        at(Always, LeveledTrace{{Trace::Flow, entry(Function)}} + failure("1.3.6")));
}
