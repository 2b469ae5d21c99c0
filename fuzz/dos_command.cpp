// Commands for the shell, in every code page that a locale can lead to, into buffers of any size.
// Functions: DOV0_ConvertUTF8CommandToDOS DOV0_CheckSystemCommandCodepage
#include "fuzz_target.h"
#include "icu_model.h"
#include "utf_model.h"

#include <algorithm>
#include <dlfcn.h>

namespace {

constexpr int32_t Greek = 0x012C0019;
constexpr int32_t Turkish = 0x03180027;
constexpr int32_t NoLocale = -1;

// The code page of text and that of commands, with ICU's name; null when it has none.
struct Correspondence {
    int32_t text;
    int32_t command;
    const char *converter;
};

constexpr Correspondence Correspondences[] = {
    {1250, 852, "ibm-852"}, {1251, 866, "ibm-866"}, {1252, 850, "ibm-850"},    {1253, 851, "ibm-851"},
    {1254, 853, nullptr},   {1255, 856, "ibm-856"}, {1256, 864, "ibm-864"},    {1257, 865, "ibm-865"},
    {1208, 1208, "UTF-8"},  {437, 437, "ibm-437"},  {932, 932, "windows-932"}, {850, 850, "ibm-850"},
    {NoLocale, 0, nullptr},
};

// What the calling thread's locale object says.
int32_t localeCodepage = 0;
int32_t localeLanguage = 0;

} // namespace

extern "C" LNG2_Locale *LNG2_GetThreadLocale(int32_t *status)
{
    static const auto real =
        reinterpret_cast<decltype(&LNG2_GetThreadLocale)>(dlsym(RTLD_NEXT, "LNG2_GetThreadLocale"));
    if (localeCodepage == NoLocale) {
        *status = U_MEMORY_ALLOCATION_ERROR;
        return nullptr;
    }
    LNG2_Locale *const locale = real(status);
    locale->codepage = localeCodepage;
    locale->languageId = localeLanguage;
    return locale;
}

void fuzzOneInput(FuzzInput &input)
{
    Correspondence codepages = input.oneOf(Correspondences);
    static constexpr int32_t Languages[] = {0x0407, Greek, Turkish};
    localeCodepage = codepages.text;
    localeLanguage = input.oneOf(Languages);
    if (codepages.command == 850 && localeLanguage != 0x0407) {
        codepages = {codepages.text, 737, "ibm-737"};
    }
    const int32_t more = input.number(-2, 253);
    const bool isNull = input.number(0, 31) == 31;
    const std::string command = input.rest();
    const auto length = static_cast<int32_t>(command.size());
    const int32_t size = length + more;
    const ExactBuffer text = ExactBuffer::ofBytes(command);
    const ExactBuffer output(std::max(command.size() + 2, static_cast<size_t>(std::max(size, 0))));

    if (localeCodepage != NoLocale) {
        MUST_EQUAL(DOV0_CheckSystemCommandCodepage(localeCodepage, localeLanguage), codepages.command);
    }
    const int32_t result =
        DOV0_ConvertUTF8CommandToDOS(isNull && more % 2 == 0 ? nullptr : text.text(), length,
                                     isNull && more % 2 != 0 ? nullptr : output.text(), size);
    const bool isAscii =
        std::none_of(command.begin(), command.end(), [](char character) { return (character & 0x80) != 0; });
    const bool hasFailed = takeStorageFailure();
    if (command.empty() || size < length || isNull) {
        MUST_EQUAL(result, 0);
        MUST_EQUAL(output.contents(), std::string(output.size(), '\xA5'));
    } else if (isAscii) {
        MUST_EQUAL(result, length + 1);
        MUST_EQUAL(output.contents().substr(0, command.size() + 2), command + " " + '\0');
    } else if (codepages.converter == nullptr || hasFailed) {
        MUST_EQUAL(result, 0);
    } else {
        const std::string whole = command.back() == ' ' ? command : command + " ";
        const std::string expected = IcuConverter(codepages.converter).fromUnicode(utf16ByModel(whole));
        const bool fits = expected.size() <= static_cast<size_t>(size);
        MUST_EQUAL(static_cast<size_t>(result), fits ? expected.size() : 0);
        if (fits) {
            MUST_EQUAL(output.contents().substr(0, expected.size()), expected);
        }
    }
}
