// Operator messages from any pattern and any parameters, into buffers of any size. The catalogue is pretended; patterns
// of plain parameters and quotes are formatted by a model.
// Functions: DOV0_LNG2_Message DOV0_LNG2_MsgSubparmToUTF_Util MessagePattern::format
#include "fuzz_target.h"
#include "utf_model.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <unicode/utypes.h>

namespace {

constexpr size_t ParameterCount = 5;
using Parameters = std::array<std::u16string, ParameterCount>;

// What is missing on the way to the pattern.
enum class Missing { Nothing, Locale, Bundle, Message };

// The catalogue of one message.
Missing missing = Missing::Nothing;
std::string key;
std::u16string pattern;

// The locale of the product specification.
const char *agentLocale = nullptr;
const std::string overlongLocale(300, 'x');

// What a pattern comes to. Of patterns that choose between texts, or have names, only the bounds are looked at.
enum class Outcome { Text, Refused, NotModelled };

Outcome formattedByModel(const Parameters &parameters, std::u16string &text)
{
    bool isQuoted = false;
    for (size_t i = 0; i < pattern.size(); ++i) {
        const char16_t next = i + 1 < pattern.size() ? pattern[i + 1] : u'\0';
        if (pattern[i] == u'\'' && next == u'\'') {
            text += u'\'';
            ++i;
        } else if (pattern[i] == u'\'' && (isQuoted || next == u'{' || next == u'}')) {
            isQuoted = !isQuoted;
        } else if (pattern[i] == u'{' && !isQuoted) {
            static const std::u16string blanks = u"\t\n\v\f\r \u0085\u200E\u200F\u2028\u2029";
            const size_t end = pattern.find_first_of(u"},", i);
            if (end == std::u16string::npos) {
                return Outcome::Refused;
            }
            const std::u16string name = pattern.substr(i + 1, end - i - 1);
            const size_t first = name.find_first_not_of(blanks);
            const size_t last = name.find_last_not_of(blanks);
            if (first == std::u16string::npos) {
                return Outcome::Refused;
            }
            const size_t digits = name.find_first_not_of(u"0123456789", first);
            const bool isNumber = std::min(digits, name.size()) == last + 1; // ICU takes "0x" for a name
            if (isNumber && (first != last || name[first] >= u'0' + ParameterCount)) {
                return Outcome::Refused;
            }
            if (!isNumber || pattern[end] == u',') {
                return Outcome::NotModelled;
            }
            text += parameters[static_cast<size_t>(name[first] - u'0')];
            i = end;
        } else {
            text += pattern[i];
        }
    }
    return Outcome::Text;
}

std::string deliveredByModel(std::u16string text, size_t outputSize)
{
    if (text.size() > DOV0_MESSAGE_UNITS) {
        const bool cutsPair = (text[DOV0_MESSAGE_UNITS - 1] & 0xFC00) == 0xD800;
        text.resize(DOV0_MESSAGE_UNITS - (cutsPair ? 1U : 0U));
    }
    return utf8ByModel(text).substr(0, outputSize - 1);
}

const char *prefixOf(int32_t messageClass)
{
    static constexpr const char *Prefixes[] = {"DOVPA", "DOVPG", "DOVPL", "DOVPS", "DOVPS", "DOVPV"};
    return messageClass >= 1 && messageClass <= 6 ? Prefixes[messageClass - 1] : nullptr;
}

} // namespace

extern "C" LNG2_Locale *LNG2_GetLocale(const void *selector1, const void *selector2, const void *selector3,
                                       int32_t *status)
{
    static const auto real = reinterpret_cast<decltype(&LNG2_GetLocale)>(dlsym(RTLD_NEXT, "LNG2_GetLocale"));
    if (missing == Missing::Locale) {
        *status = U_MEMORY_ALLOCATION_ERROR;
        return nullptr;
    }
    return real(selector1, selector2, selector3, status);
}

extern "C" const char *DOV0_QueryProductSpec(int32_t index) noexcept
{
    MUST_EQUAL(index, static_cast<int32_t>(DOV0_PSF_AGENT_LOCALE));
    return agentLocale;
}

extern "C" LNG2_ResourceBundle *LNG2_ResourceOpen(const char *bundlePath, LNG2_Locale * /*locale*/,
                                                  int32_t *status)
{
    MUST_EQUAL(std::string(bundlePath), "./rb/dovpmsg");
    *status = missing == Missing::Bundle ? U_MISSING_RESOURCE_ERROR : U_ZERO_ERROR;
    return missing == Missing::Bundle ? nullptr : reinterpret_cast<LNG2_ResourceBundle *>(&key);
}

extern "C" const char16_t *LNG2_GetStringByKey(LNG2_ResourceBundle * /*bundle*/, const char *name,
                                               int32_t *length, int32_t *status)
{
    MUST_EQUAL(std::string(name), key);
    *status = missing == Missing::Message ? U_MISSING_RESOURCE_ERROR : U_ZERO_ERROR;
    *length = static_cast<int32_t>(pattern.size());
    return missing == Missing::Message ? nullptr : pattern.c_str();
}

extern "C" void LNG2_ResourceClose(LNG2_ResourceBundle *bundle)
{
    MUST(bundle == reinterpret_cast<LNG2_ResourceBundle *>(&key));
}

void fuzzOneInput(FuzzInput &input)
{
    // The first message settles the folder. Two failures write to standard output.
    static const bool isPrepared = unsetenv("DOVP_RB_PATH") == 0 && unsetenv("LNG1_LOCALEDIR") == 0 &&
                                   std::freopen("/dev/null", "w", stdout) != nullptr;
    MUST(isPrepared);

    const int32_t messageClass = input.number(-1, 14) % 8;
    const int32_t choice = input.number(0, 31);
    missing = choice < 4 ? static_cast<Missing>(choice) : Missing::Nothing;
    const char *const locales[] = {nullptr, "", "de_DE", overlongLocale.c_str()};
    agentLocale = locales[choice / 8];
    static constexpr int32_t Numbers[] = {599, 0, 7, -1, 9999999, 10000000, INT32_MIN};
    const int32_t messageNumber = input.oneOf(Numbers);
    const int32_t outputSize = input.number(0, 600);
    const int32_t repeated = input.number(0, 255) == 255 ? 20 : 1; // more than the library has room for
    std::array<std::string, ParameterCount> texts;
    Parameters parameters;
    for (size_t i = 0; i < ParameterCount; ++i) {
        texts[i] = input.take(static_cast<size_t>(input.number(0, 40))).c_str();
        const std::string once = texts[i];
        for (int32_t times = 1; times < repeated; ++times) {
            texts[i] += once;
        }
        parameters[i] =
            utf16ByModel(texts[i].empty() ? "?" : texts[i]).substr(0, DOV0_MESSAGE_PARAMETER_UNITS);
    }
    pattern = utf16ByModel(input.rest());
    const std::u16string once = pattern;
    for (int32_t times = 1; times < repeated; ++times) {
        pattern += once;
    }

    const char *const prefix = prefixOf(messageClass);
    const std::string digits = std::to_string(messageNumber);
    const bool hasKey = prefix != nullptr && digits.size() <= 7;
    key = hasKey ? prefix + digits : "";
    const ExactBuffer output(static_cast<size_t>(outputSize));
    DOV0_LNG2_Message(messageClass, outputSize != 0 ? output.text() : nullptr, outputSize, messageNumber,
                      texts[0].c_str(), texts[1].empty() ? nullptr : texts[1].c_str(), texts[2].c_str(),
                      texts[3].c_str(), texts[4].c_str());
    if (outputSize == 0) {
        DOV0_LNG2_MsgSubparmToUTF_Util(nullptr, nullptr, 0, nullptr);
        return;
    }
    const auto size = static_cast<size_t>(outputSize);
    MUST(std::memchr(output.text(), '\0', size) != nullptr);
    std::u16string text;
    const Outcome outcome = formattedByModel(parameters, text);
    if (!hasKey || missing != Missing::Nothing || outcome == Outcome::Refused) {
        MUST_EQUAL(std::string(output.text()), "");
    } else if (outcome == Outcome::Text) {
        MUST_EQUAL(std::string(output.text()), std::string(deliveredByModel(text, size).c_str()));
    }
}
