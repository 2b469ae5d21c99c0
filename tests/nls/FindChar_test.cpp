#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <gtest/gtest.h>
#include <random>

namespace {

constexpr char Function[] = "DOV0_FindChar";
constexpr int None = -1;

template <typename... Arguments> std::string says(const char *format, Arguments... arguments)
{
    return message(Function, format, arguments...);
}

// The offset found in a buffer that ends at a guard page, or None.
int found(const std::string &text, const std::string &character, int type, bool forward)
{
    GuardedBuffer buffer(text.size());
    std::memcpy(buffer.bytes(), text.data(), text.size());
    GuardedBuffer sought(character.size());
    std::memcpy(sought.bytes(), character.data(), character.size());
    const char *hit = DOV0_FindChar(buffer.text(), static_cast<int32_t>(text.size()), sought.text(),
                                    static_cast<uint16_t>(type), forward ? 1 : 0);
    return hit != nullptr ? static_cast<int>(hit - buffer.text()) : None;
}

std::string bytes(std::initializer_list<int> values)
{
    std::string text;
    for (const int value : values) {
        text += static_cast<char>(value);
    }
    return text;
}

// The search as the manual tells it: units are left behind at their first byte out of place.
int model(std::string text, const std::string &character, int width, bool forward)
{
    const auto w = static_cast<size_t>(width);
    text.resize(text.size() / w * w);
    size_t s = 0;
    while (s < w - 1 && character[s] == '\0') {
        ++s;
    }
    const size_t units = text.size() / w;
    for (size_t i = 0; i < units; ++i) {
        const size_t unit = (forward ? i : units - 1 - i) * w;
        const std::string here = text.substr(unit, w);
        const size_t at = forward ? here.find(character[s]) : here.rfind(character[s]);
        if (at == s && here == character) {
            return static_cast<int>(unit);
        }
    }
    return None;
}

} // namespace

TEST(FindChar, FindsSingleBytes)
{
    EXPECT_EQ(found("abcabc", "b", 0, true), 1);
    EXPECT_EQ(found("abcabc", "b", 0, false), 4);
    EXPECT_EQ(found("abcabc", "x", 0, true), None);
    EXPECT_EQ(found("abcabc", "x", 0, false), None);
    EXPECT_EQ(found("\xFFx\xFF", "\xFF", 0, false), 2);
    EXPECT_EQ(found(bytes({1, 0, 2}), bytes({0}), 0, true), 1);
    EXPECT_EQ(found("", "x", 0, true), None);
    EXPECT_EQ(found("", "x", 0, false), None);
}

TEST(FindChar, TracesSingleBytesWithOneMessage)
{
    const char text[] = "abc";
    char *hit = nullptr;
    EXPECT_EQ(traceAt(Trace::All, [&] { hit = DOV0_FindChar(text, 3, "c", 0, 1); }),
              (TraceLog{entry(Function), says("bufferLength is %d, utfEncodingType is %d.\n", 3, 0),
                        leave(Function, text + 2)}));
    EXPECT_EQ(hit, text + 2);
    EXPECT_EQ(traceAt(Trace::Detail, [&] { hit = DOV0_FindChar(text, 3, "x", 0, 0); }),
              (TraceLog{says("bufferLength is %d, utfEncodingType is %d.\n", 3, 0)}));
    EXPECT_EQ(hit, nullptr);
}

TEST(FindChar, IsNotFooledByAByteInsideAnotherUnit)
{
    const std::string text = bytes({0x01, 0x41, 0x00, 0x41});
    EXPECT_EQ(found(text, bytes({0x00, 0x41}), 0x12, true), 2);
    EXPECT_EQ(found(text, bytes({0x00, 0x41}), 0x02, true), 2);
    EXPECT_EQ(found(bytes({0x41, 0x01, 0x41, 0x00}), bytes({0x41, 0x00}), 0x0A, true), 2);
    EXPECT_EQ(found(bytes({0x00, 0x41, 0x01, 0x41}), bytes({0x00, 0x41}), 0x12, false), 0);
    // A line feed between two units is none.
    EXPECT_EQ(found(bytes({0x01, 0x00, 0x0A, 0x01}), bytes({0x00, 0x0A}), 0x12, true), None);
    EXPECT_EQ(found(bytes({0, 0, 0, 1, 0, 0, 0, 10}), bytes({0, 0, 0, 10}), 0x14, true), 4);
    EXPECT_EQ(found(bytes({10, 0, 0, 1, 10, 0, 0, 0}), bytes({10, 0, 0, 0}), 0x0C, true), 4);
}

TEST(FindChar, TracesTheSearchForAUnit)
{
    const std::string text = bytes({0x01, 0x41, 0x00, 0x41, 0x99});
    const std::string character = bytes({0x00, 0x41});
    char *hit = nullptr;
    const TraceLog expected = {
        entry(Function),
        says("bufferLength is %d, utfEncodingType is %d.\n", 5, 0x12),
        dump(Function, character.data(), 2, "character = %c"),
        says("bufferLength is not a multiple of %d.  Changing bufferLength to %d.\n", 4, 2),
        says("searchableCharIndex = %d.\n", 1),
        says("Character <%s> found, charOffset is now %d.\n", "A", 1),
        says("The character found was invalid, continuing search.\n"),
        says("Character <%s> found, charOffset is now %d.\n", "A", 3),
        leave(Function, text.data() + 2)};
    const auto call = [&] { hit = DOV0_FindChar(text.data(), 5, character.data(), 0x12, 1); };
    EXPECT_EQ(traceAt(Trace::All, call), expected);
    EXPECT_EQ(hit, text.data() + 2);
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Detail, call), (TraceLog{expected.front(), expected.back()}));
    EXPECT_EQ(traceAt(Trace::Detail, call), TraceLog(expected.begin() + 1, expected.end() - 1));
}

TEST(FindChar, TracesHowASearchEnds)
{
    const std::string character = bytes({0x41, 0x00});
    const auto ends = [&](const std::string &text, bool forward) {
        const TraceLog log = traceAt(Trace::Detail, [&] {
            EXPECT_EQ(DOV0_FindChar(text.data(), static_cast<int32_t>(text.size()), character.data(), 0x0A,
                                    forward ? 1 : 0),
                      nullptr);
        });
        return TraceLog(log.begin() + 3, log.end());
    };
    const TraceLog absent = {says("Did not find character in supplied buffer.\n")};
    EXPECT_EQ(ends("xyxy", true), absent);
    EXPECT_EQ(ends("xyxy", false), absent);
    EXPECT_EQ(ends("", true), absent);
    EXPECT_EQ(ends("xyAy", true),
              (TraceLog{says("Character <%s> found, charOffset is now %d.\n", "A", 2),
                        says("The character found was invalid, end of buffer reached.\n")}));
    EXPECT_EQ(ends("Ayxy", false),
              (TraceLog{says("Character <%s> found, charOffset is now %d.\n", "A", 0),
                        says("The character found was invalid, end of buffer reached.\n")}));
    EXPECT_EQ(ends("xAyy", true), (TraceLog{says("Character <%s> found, charOffset is now %d.\n", "A", 1),
                                            says("The character found was invalid, continuing search.\n"),
                                            says("Did not find character in supplied buffer.\n")}));
    EXPECT_EQ(ends("xyyA", false), (TraceLog{says("Character <%s> found, charOffset is now %d.\n", "A", 3),
                                             says("The character found was invalid, continuing search.\n"),
                                             says("Did not find character in supplied buffer.\n")}));
}

TEST(FindChar, CutsAnIncompleteUnitOff)
{
    EXPECT_EQ(found(bytes({0x00, 0x41, 0x00}), bytes({0x00, 0x41}), 0x12, false), 0);
    EXPECT_EQ(found(bytes({0x00}), bytes({0x00, 0x41}), 0x12, true), None);
    EXPECT_EQ(found(bytes({0, 0, 0, 10, 0, 0, 0}), bytes({0, 0, 0, 10}), 0x14, false), 0);
}

// A byte that stands in the unit before its own place hides the unit, as the manual says.
TEST(FindChar, LeavesAUnitBehindAtAByteOutOfPlace)
{
    EXPECT_EQ(found(bytes({0x00, 0x00}), bytes({0x00, 0x00}), 0x12, true), None);
    EXPECT_EQ(found(bytes({0x0A, 0x0A}), bytes({0x0A, 0x0A}), 0x12, true), 0);
    EXPECT_EQ(found(bytes({0x0A, 0x0A}), bytes({0x0A, 0x0A}), 0x12, false), None);
}

TEST(FindChar, SearchesSingleBytesForTypesThatNoEncodingHas)
{
    for (const int type : {0x01, 0x06, 0x08, 0x10, 0x18, 0x1A, 0x1C, 0x22, 0x8002, 0xFFFF}) {
        // The character has one byte and ends at a guard page.
        EXPECT_EQ(found("xxAxA", "A", type, true), 2) << type;
        EXPECT_EQ(found("xxAxA", "A", type, false), 4) << type;
    }
}

TEST(FindChar, FindsNothingInNothing)
{
    char *hit = nullptr;
    EXPECT_EQ(traceAt(Trace::All, [&] { hit = DOV0_FindChar(nullptr, 4, "A", 0, 1); }),
              (TraceLog{entry(Function), says("bufferLength is %d, utfEncodingType is %d.\n", 4, 0),
                        leave(Function, nullptr)}));
    EXPECT_EQ(hit, nullptr);
    EXPECT_EQ(DOV0_FindChar("abc", 3, nullptr, 0x12, 1), nullptr);
    EXPECT_EQ(DOV0_FindChar("abc", -1, "a", 0, 1), nullptr);
    EXPECT_EQ(DOV0_FindChar("abc", -1, "a", 0x12, 0), nullptr);
}

TEST(FindChar, AgreesWithItsManualOnRandomText)
{
    std::mt19937 random(65);
    const struct {
        int type;
        int width;
    } types[] = {{0x02, 2}, {0x0A, 2}, {0x12, 2}, {0x04, 4}, {0x0C, 4}, {0x14, 4}};
    const char alphabet[] = {'\0', '\0', '\1', '\2', '\n'};
    for (int round = 0; round < 20000; ++round) {
        const auto &type = types[random() % std::size(types)];
        std::string text(random() % 40, '\0');
        for (char &byte : text) {
            byte = alphabet[random() % std::size(alphabet)];
        }
        std::string character(static_cast<size_t>(type.width), '\0');
        for (char &byte : character) {
            byte = alphabet[random() % std::size(alphabet)];
        }
        const bool forward = random() % 2 == 0;
        ASSERT_EQ(found(text, character, type.type, forward), model(text, character, type.width, forward));
    }
}
