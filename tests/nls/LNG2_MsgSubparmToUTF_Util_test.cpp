#include "nls/language_stand_in.h"
#include "support/trace_recorder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>

namespace {

constexpr char Function[] = "DOV0_LNG2_MsgSubparmToUTF_Util";

std::u16string converted(const char *text, int32_t capacity)
{
    const auto target = std::make_unique<char16_t[]>(static_cast<size_t>(capacity));
    std::fill(target.get(), target.get() + capacity, u'#');
    DOV0_LNG2_MsgSubparmToUTF_Util(nullptr, target.get(), capacity, text);
    return std::u16string(target.get(), static_cast<size_t>(capacity));
}

} // namespace

TEST(LNG2_MsgSubparmToUTF_Util, ConvertsFromTheNativeCodePage)
{
    EXPECT_EQ(converted("caf\xC3\xA9", 8), std::u16string(u"caf\u00E9\0###", 8));
    EXPECT_EQ(converted("", 2), std::u16string(u"\0#", 2));
    EXPECT_EQ(converted("\xF0\x9F\x98\x80", 3), std::u16string(u"\U0001F600\0", 3));
    EXPECT_EQ(converted("a\xFFz", 4), std::u16string(u"a\uFFFDz\0", 4));
}

TEST(LNG2_MsgSubparmToUTF_Util, CutsWhatDoesNotFit)
{
    EXPECT_EQ(converted("abcdef", 3), u"abc");
    EXPECT_EQ(converted("abc", 3), u"abc");
    for (const size_t length : {511U, 512U, 513U, 100000U}) {
        const std::u16string units = converted(std::string(length, 'x').c_str(), 512);
        EXPECT_EQ(units.substr(0, std::min<size_t>(length, 512)),
                  std::u16string(std::min<size_t>(length, 512), u'x'));
    }
    const TraceLog log = traceAt(Trace::All, [] { converted("abcdef", 3); });
    EXPECT_EQ(log, (TraceLog{entry(Function), leave(Function)}));
}

TEST(LNG2_MsgSubparmToUTF_Util, DoesNotUseTheLocale)
{
    LNG2_Locale locale = {};
    char16_t target[4] = {};
    DOV0_LNG2_MsgSubparmToUTF_Util(&locale, target, 4, "ab");
    EXPECT_EQ(std::u16string(target), u"ab");
}

TEST(LNG2_MsgSubparmToUTF_Util, ReportsAMissingConverter)
{
    languageStandIn().openConverter = [](const std::string &) { return U_FILE_ACCESS_ERROR; };
    const std::string complaint = message(Function, "Could not open converter for subtext <%s>, error <%s>\n",
                                          "text", "U_FILE_ACCESS_ERROR");
    const auto call = [] { EXPECT_EQ(converted("text", 2), u"##"); };
    EXPECT_EQ(traceAt(Trace::All, call), (TraceLog{entry(Function), complaint, leave(Function)}));
    EXPECT_EQ(bitsThatShow(complaint, call), Trace::Error);
}

TEST(LNG2_MsgSubparmToUTF_Util, ReportsAFailedConversion)
{
    languageStandIn().toUChars = U_INVALID_STATE_ERROR;
    const std::string complaint = message(Function, "Could not convert subtext <%s> to UTF16, error <%s>\n",
                                          "text", "U_INVALID_STATE_ERROR");
    const auto call = [] { converted("text", 8); };
    EXPECT_EQ(traceAt(Trace::All, call), (TraceLog{entry(Function), complaint, leave(Function)}));
    EXPECT_EQ(bitsThatShow(complaint, call), Trace::Error);
    EXPECT_EQ(convertersOpen(), 0);
}

TEST(LNG2_MsgSubparmToUTF_Util, ReportsArgumentsThatNothingCanBeDoneWith)
{
    char16_t target[] = u"as it was";
    const auto complaint = [](const char *text) {
        return message(Function, "Could not convert subtext <%s> to UTF16, error <%s>\n", text,
                       "U_ILLEGAL_ARGUMENT_ERROR");
    };
    EXPECT_EQ(traceAt(Trace::Error, [&] { DOV0_LNG2_MsgSubparmToUTF_Util(nullptr, target, 10, nullptr); }),
              TraceLog{complaint("(null)")});
    EXPECT_EQ(traceAt(Trace::Error, [&] { DOV0_LNG2_MsgSubparmToUTF_Util(nullptr, nullptr, 10, "x"); }),
              TraceLog{complaint("x")});
    EXPECT_EQ(traceAt(Trace::Error, [&] { DOV0_LNG2_MsgSubparmToUTF_Util(nullptr, target, -1, "x"); }),
              TraceLog{complaint("x")});
    EXPECT_EQ(std::u16string(target), u"as it was");
    EXPECT_EQ(traceAt(Trace::Error, [&] { DOV0_LNG2_MsgSubparmToUTF_Util(nullptr, nullptr, 0, "x"); }),
              TraceLog{});
}
