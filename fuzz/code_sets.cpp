// Conversion between code sets: Unicode against a model of its own, everything else against ICU's conversion of the whole
// text at once, with buffers of any size.
// Functions: DOV0_ConvertDataToUnicode DOV0_ConvertUnicodeToUTF8 DOV0_GetUTF8CharacterCount DOV0_ConvertUTF8ToNative
// Functions: LNG2_TranslateString LNG2_GetCodepageId
#include "fuzz_target.h"
#include "icu_model.h"
#include "utf_model.h"

#include <algorithm>
#include <dlfcn.h>
#include <unicode/ucnv.h>
#include <unicode/uloc.h>
#include <vector>

namespace {

struct CodeSet {
    const char *name;
    int32_t codepage;
};

constexpr CodeSet CodeSets[] = {{"UTF-8", 1208},    {"ISO-8859-1", 819}, {"windows-1252", 1252},
                                {"US-ASCII", 367},  {"UTF-16BE", 1200},  {"UTF-16LE", 1202},
                                {"UTF-32BE", 1232}, {"UTF-32LE", 1234},  {"windows-1253", 1253},
                                {"ibm-850", 850},   {"ibm-1047", 1047},  {"windows-932", 932},
                                {"ibm-930", 930},   {"GBK", 936}};

constexpr int32_t UnknownCodepage = 853;

// What the locale object says: a code page, none yet, or that there is no locale object.
constexpr int32_t NoCodepage = 0;
constexpr int32_t NoLocale = -1;
int32_t localeCodepage = NoCodepage;

void convertToUnicode(const std::string &codeset, const std::string &data)
{
    const ExactBuffer input = ExactBuffer::ofBytes(data);
    Owned<char16_t> units;
    int32_t count = -1;
    const int32_t result = DOV0_ConvertDataToUnicode(
        codeset.c_str(), input.text(), static_cast<int32_t>(data.size()), units.address(), &count);
    const IcuConverter converter(codeset.c_str());
    if (takeStorageFailure() || data.empty() || !converter.isOpen()) {
        MUST_EQUAL(result, 0);
        MUST(units.get() == nullptr);
        MUST_EQUAL(count, -1);
        return;
    }
    const std::u16string expected = codeset == "UTF-8" ? utf16ByModel(data) : converter.toUnicode(data);
    if (expected.size() > data.size()) { // there are as many units as bytes of data
        MUST_EQUAL(result, 0);
        MUST(units.get() == nullptr);
        return;
    }
    MUST_EQUAL(static_cast<size_t>(result), expected.size());
    MUST_EQUAL(count, result);
    MUST(std::equal(expected.begin(), expected.end(), units.get()));
}

void convertToUtf8(const std::u16string &text, int32_t size)
{
    const auto units = std::make_unique<char16_t[]>(text.size());
    std::copy(text.begin(), text.end(), units.get());
    const ExactBuffer output(static_cast<size_t>(std::max(size, 0)));
    const int32_t result =
        DOV0_ConvertUnicodeToUTF8(units.get(), static_cast<int32_t>(text.size()), output.text(), size);
    if (text.empty() || size < 1) {
        MUST_EQUAL(result, 0);
        MUST_EQUAL(output.contents(), std::string(output.size(), '\xA5'));
        return;
    }
    const std::string whole = utf8ByModel(text);
    const auto room = static_cast<size_t>(size) - 1;
    const std::string stored = whole.substr(0, room);
    MUST_EQUAL(output.contents().substr(0, stored.size() + 1), stored + '\0');
    MUST_EQUAL(static_cast<size_t>(result), whole.size() > room ? 0 : std::strlen(whole.c_str()));
}

void countCharacters(const std::string &text, bool wantsUnits)
{
    const ExactBuffer input = ExactBuffer::ofBytes(text);
    Owned<char16_t> units;
    const int32_t count = DOV0_GetUTF8CharacterCount(input.text(), static_cast<int32_t>(text.size()),
                                                     wantsUnits ? units.address() : nullptr);
    const std::u16string expected = utf16ByModel(text);
    if (takeStorageFailure()) {
        MUST_EQUAL(count, 0);
        MUST(units.get() == nullptr);
        return;
    }
    MUST_EQUAL(static_cast<size_t>(count), expected.size());
    MUST_EQUAL(units.get() != nullptr, wantsUnits && !text.empty());
    if (units.get() != nullptr) {
        MUST(std::equal(expected.begin(), expected.end(), units.get()));
    }
}

// Without a code page in the locale object it is that of ICU's default converter, which is UTF-8 on Linux.
void convertToNative(const CodeSet &native, int32_t codepage, const std::string &text, int32_t size)
{
    localeCodepage = codepage;
    const ExactBuffer input = ExactBuffer::ofBytes(text);
    const ExactBuffer output(static_cast<size_t>(std::max(size, 0)));
    const int32_t result =
        DOV0_ConvertUTF8ToNative(input.text(), static_cast<int32_t>(text.size()), output.text(), size);
    const char *const name = codepage == NoCodepage ? ucnv_getDefaultName() : native.name;
    const std::string expected = IcuConverter(name).fromUnicode(utf16ByModel(text));
    if (text.empty() || size < 1 || expected.size() > static_cast<size_t>(size) || codepage == NoLocale ||
        codepage == UnknownCodepage) {
        MUST_EQUAL(result, 0);
    } else {
        MUST_EQUAL(static_cast<size_t>(result), expected.size());
        MUST_EQUAL(output.contents().substr(0, expected.size()), expected);
    }
}

void translate(const CodeSet &target, const CodeSet &source, const std::string &text, int32_t capacity)
{
    const ExactBuffer input = ExactBuffer::ofBytes(text);
    const ExactBuffer output(static_cast<size_t>(std::max(capacity, 0)));
    int32_t status = -1;
    int32_t consumed = -1;
    const int32_t result =
        LNG2_TranslateString(target.codepage, output.text(), capacity, source.codepage, input.text(),
                             static_cast<int32_t>(text.size()), &consumed, 0, &status);
    if (capacity < 1) {
        MUST_EQUAL(status, static_cast<int32_t>(U_ILLEGAL_ARGUMENT_ERROR));
    } else if (target.codepage == UnknownCodepage || source.codepage == UnknownCodepage) {
        MUST_EQUAL(status, static_cast<int32_t>(U_FILE_ACCESS_ERROR));
    } else {
        const std::string expected =
            IcuConverter(target.name).fromUnicode(IcuConverter(source.name).toUnicode(text));
        const std::string stored = expected.substr(0, output.size());
        MUST_EQUAL(output.contents().substr(0, stored.size()), stored);
        MUST_EQUAL(static_cast<size_t>(result), stored.size());
        MUST_EQUAL(status,
                   stored.size() < expected.size() ? static_cast<int32_t>(LNG2_STATUS_BUFFER_OVERFLOW) : 0);
        if (stored.size() < output.size()) {
            MUST_EQUAL(output.text()[stored.size()], '\0');
        }
        if (status == 0) {
            MUST_EQUAL(static_cast<size_t>(consumed), text.size());
        }
        return;
    }
    MUST_EQUAL(result, 0);
    MUST_EQUAL(output.contents(), std::string(output.size(), '\xA5'));
}

std::u16string unitsOf(const std::string &bytes)
{
    std::u16string units;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        units += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) << 8 |
                                       static_cast<unsigned char>(bytes[i + 1]));
    }
    return units;
}

// Whatever name an input gives: a code page comes with success, and its name leads back to it.
void lookUp(const std::string &name)
{
    int32_t status = -1;
    const int32_t codepage = LNG2_GetCodepageId(name.c_str(), &status);
    MUST_EQUAL(codepage != 0, status <= 0);
    char found[LNG2_CODEPAGE_NAME_SIZE];
    if (codepage != 0 && LNG2_GetCodepageName(codepage, found, sizeof found) == 0) {
        MUST_EQUAL(LNG2_GetCodepageId(found, nullptr), codepage);
    }
}

void refuseNull()
{
    char16_t *units = nullptr;
    int32_t count = 0;
    MUST_EQUAL(DOV0_ConvertDataToUnicode(nullptr, "x", 1, &units, &count), 0);
    MUST_EQUAL(DOV0_ConvertDataToUnicode("UTF-8", nullptr, 1, &units, &count), 0);
    MUST_EQUAL(DOV0_ConvertUnicodeToUTF8(nullptr, 1, nullptr, 1), 0);
    MUST_EQUAL(DOV0_GetUTF8CharacterCount(nullptr, 1, &units), 0);
    MUST_EQUAL(DOV0_ConvertUTF8ToNative(nullptr, 1, nullptr, 1), 0);
    MUST(units == nullptr);
    int32_t status = 0;
    MUST_EQUAL(LNG2_GetCodepageId(nullptr, &status), 0);
    MUST(status > 0);
}

} // namespace

// The library's own, with a code page of this target's choice.
extern "C" LNG2_Locale *LNG2_GetLocale(const void *selector1, const void *selector2, const void *selector3,
                                       int32_t *status)
{
    static const auto real = reinterpret_cast<decltype(&LNG2_GetLocale)>(dlsym(RTLD_NEXT, "LNG2_GetLocale"));
    if (localeCodepage == NoLocale) {
        *status = U_MEMORY_ALLOCATION_ERROR;
        return nullptr;
    }
    LNG2_Locale *const locale = real(selector1, selector2, selector3, status);
    locale->codepage = localeCodepage;
    return locale;
}

void fuzzOneInput(FuzzInput &input)
{
    UErrorCode error = U_ZERO_ERROR;
    uloc_setDefault("en_US", &error);
    if (input.remaining() == 0) {
        return refuseNull();
    }
    const int32_t kind = input.number(0, 5);
    CodeSet one = input.oneOf(CodeSets);
    const CodeSet other = input.oneOf(CodeSets);
    const int32_t size = input.number(0, 1100) - 1;
    const bool choice = input.flag();
    if (kind == 0) {
        convertToUnicode(choice ? std::string(input.part().c_str()) : one.name, input.rest());
    } else if (kind == 1) {
        convertToUtf8(unitsOf(input.rest()), size);
    } else if (kind == 2) {
        std::string text = input.rest();
        text += choice ? text : ""; // more than the stack buffer is for
        countCharacters(text, size % 2 == 0);
    } else if (kind == 3) {
        const int32_t codepages[] = {one.codepage, one.codepage, NoCodepage, NoLocale, UnknownCodepage};
        const int32_t codepage = input.oneOf(codepages);
        convertToNative(one, codepage, input.rest(), size);
    } else if (kind == 4) {
        if (size == 100) {
            one.codepage = UnknownCodepage;
        }
        translate(one, other, input.rest(), size);
    } else {
        lookUp(input.rest().c_str());
    }
}
