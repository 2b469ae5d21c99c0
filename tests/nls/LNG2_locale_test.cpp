#include "nls/language_stand_in.h"
#include "support/heap_faults.h"

#include <clocale>
#include <cstdio>
#include <gtest/gtest.h>
#include <sstream>
#include <thread>
#include <unicode/uloc.h>
#include <utility>

namespace {

void setDefaultLocale(const char *name)
{
    UErrorCode error = U_ZERO_ERROR;
    uloc_setDefault(name, &error);
    ASSERT_LE(error, U_ZERO_ERROR);
}

struct Seen {
    int32_t languageId;
    int32_t codepage;
    std::string name;
    bool operator==(const Seen &other) const = default;
};

Seen taken(LNG2_Locale *locale)
{
    const Seen seen = {locale->languageId, locale->codepage, locale->name};
    LNG2_ReleaseLocale(locale);
    return seen;
}

Seen processLocale()
{
    int32_t status = -1;
    LNG2_Locale *locale = LNG2_GetLocale(nullptr, nullptr, nullptr, &status);
    EXPECT_EQ(status, U_ZERO_ERROR);
    return taken(locale);
}

Seen threadLocale()
{
    int32_t status = -1;
    LNG2_Locale *locale = LNG2_GetThreadLocale(&status);
    EXPECT_EQ(status, U_ZERO_ERROR);
    return taken(locale);
}

} // namespace

TEST(LNG2_GetLocale, NamesTheDefaultLocaleWithoutACodePage)
{
    setDefaultLocale("de_DE");
    EXPECT_EQ(processLocale(), (Seen{0x0407, 0, "de_DE"}));
    setDefaultLocale("el_GR");
    EXPECT_EQ(processLocale(), (Seen{19660825, 0, "el_GR"}));
    setDefaultLocale("tr_TR");
    EXPECT_EQ(processLocale(), (Seen{51904551, 0, "tr_TR"}));
}

TEST(LNG2_GetLocale, GivesEachCallerAnObjectOfItsOwn)
{
    int32_t status = -1;
    LNG2_Locale *one = LNG2_GetLocale(nullptr, nullptr, nullptr, &status);
    LNG2_Locale *other = LNG2_GetLocale(nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(one, other);
    one->codepage = 850;
    std::snprintf(one->name, sizeof one->name, "xx");
    EXPECT_EQ(other->codepage, 0);
    EXPECT_STREQ(other->name, uloc_getDefault());
    LNG2_ReleaseLocale(one);
    LNG2_ReleaseLocale(other);
    LNG2_ReleaseLocale(nullptr);
}

TEST(LNG2_GetLocale, FailsWithoutStorage)
{
    threadLocale(); // what ICU keeps from its first use
    int32_t status = -1;
    LNG2_Locale *locale = nullptr;
    withoutHeap([&] { locale = LNG2_GetLocale(nullptr, nullptr, nullptr, &status); });
    EXPECT_EQ(locale, nullptr);
    EXPECT_EQ(status, U_MEMORY_ALLOCATION_ERROR);
    withoutHeap([&] { locale = LNG2_GetThreadLocale(&status); });
    EXPECT_EQ(locale, nullptr);
    EXPECT_EQ(status, U_MEMORY_ALLOCATION_ERROR);
}

TEST(LNG2_GetThreadLocale, ComesWithTheCodePageOfItsLanguage)
{
    const struct {
        const char *name;
        int32_t languageId;
        int32_t codepage;
    } expected[] = {{"en_US", 0x0409, 1252},   {"en_US_POSIX", 0x007F, 1252}, {"de_DE", 0x0407, 1252},
                    {"fr_FR", 0x040C, 1252},   {"cs_CZ", 0x0405, 1250},       {"pl_PL", 0x0415, 1250},
                    {"ru_RU", 0x0419, 1251},   {"sr_Cyrl_RS", 0x281A, 1251},  {"sr_Latn_RS", 0x241A, 1250},
                    {"el_GR", 19660825, 1253}, {"tr_TR", 51904551, 1254},     {"he_IL", 0x040D, 1255},
                    {"ar_EG", 0x0C01, 1256},   {"et_EE", 0x0425, 1257},       {"vi_VN", 0x042A, 1258},
                    {"th_TH", 0x041E, 874},    {"ja_JP", 0x0411, 932},        {"ko_KR", 0x0412, 949},
                    {"zh_CN", 0x0804, 936},    {"zh_TW", 0x0404, 950},        {"zh_Hans_HK", 0x0804, 936},
                    {"ha_NG", 0x0068, 1252},   {"iu_Latn_CA", 0x085D, 1252},  {"hi_IN", 0x0439, 1208}};
    for (const auto &locale : expected) {
        setDefaultLocale(locale.name);
        const Seen seen = threadLocale();
        EXPECT_EQ(seen.codepage, locale.codepage) << locale.name;
        EXPECT_EQ(seen.name, locale.name);
        if (std::string(locale.name) != "zh_Hans_HK") {
            EXPECT_EQ(seen.languageId, locale.languageId) << locale.name;
        }
    }
}

// The code pages of Windows for text that is not Unicode, by language and, where that decides, by script or country.
TEST(LNG2_GetThreadLocale, ComesWithTheCodePageOfEveryLanguage)
{
    const std::pair<int32_t, const char *> expected[] = {
        {1252, "af arn br ca co cy da de en es eu fi fil fo fr fy ga gd gl gsw ha id ig is it iu_Latn kl lb "
               "mi moh ms nb "
               "nl nn no nso oc pt qu quc quz rm rw se sma smj smn sms st sv sw tn tzm wo xh yo zu"},
        {1250, "bs cs dsb hr hsb hu pl ro sk sl sq tk sr_Latn"},
        {1251, "ba be bg kk ky mk mn ru sah sr tg tt uk az_Cyrl bs_Cyrl uz_Cyrl"},
        {1253, "el"},
        {1254, "az tr uz tg_Latn"},
        {1255, "he yi"},
        {1256, "ar fa prs ps sd ug ur ku_Arab pa_Arab"},
        {1257, "et lt lv"},
        {1258, "vi"},
        {874, "th"},
        {932, "ja"},
        {936, "zh zh_CN zh_SG zh_Hans zh_Hans_HK zh_Hans_TW zh_Hans_MO"},
        {950, "zh_TW zh_HK zh_MO zh_Hant zh_Hant_CN"},
        {949, "ko"},
        {1208, "hi am ka iu ku pa xx e enx"},
    };
    for (const auto &[codepage, locales] : expected) {
        std::istringstream names(locales);
        for (std::string name; names >> name;) {
            setDefaultLocale(name.c_str());
            EXPECT_EQ(threadLocale().codepage, codepage) << name;
        }
    }
}

TEST(LNG2_GetThreadLocale, HasNoCodePageForALanguageOfAnyLength)
{
    for (size_t length = 9; length < 80; ++length) {
        const std::string name(length, 'e');
        UErrorCode error = U_ZERO_ERROR;
        uloc_setDefault(name.c_str(), &error);
        const Seen seen = threadLocale();
        EXPECT_EQ(seen.codepage, 1208) << length;
        EXPECT_EQ(seen.name, uloc_getDefault());
    }
}

TEST(LNG2_GetThreadLocale, FollowsTheLocaleThatAThreadChose)
{
    setDefaultLocale("el_GR");
    std::thread([] {
        locale_t plain = newlocale(LC_ALL_MASK, "C.UTF-8", nullptr);
        ASSERT_NE(plain, nullptr);
        uselocale(plain);
        EXPECT_EQ(threadLocale(), (Seen{0x007F, 1252, "en_US_POSIX"}));
        EXPECT_EQ(processLocale(), (Seen{19660825, 0, "el_GR"}));
        uselocale(LC_GLOBAL_LOCALE);
        freelocale(plain);
    }).join();
    EXPECT_EQ(threadLocale(), (Seen{19660825, 1253, "el_GR"}));
}
