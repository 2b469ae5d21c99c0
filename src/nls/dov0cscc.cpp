// Finds the code page that commands for the system's shell are written in, where text is written in a Windows one.
#include "foundation/frame.h"

#include <cstddef>

namespace {

// Parallel, each ended by 0.
constexpr int32_t Windows_CodePage[] = {1252, 1253, 1250, 1254, 1255, 1256, 1251, 1257, 0};
constexpr int32_t MSDOS_CodePage[] = {850, 851, 852, 853, 856, 864, 866, 865, 0};

constexpr int32_t LanguageIsGreek = LNG2_LANGUAGE_GREEK;
constexpr int32_t LanguageIsTurkey = LNG2_LANGUAGE_TURKISH;

constexpr int32_t LatinDosCodepage = 850;
constexpr int32_t GreekDosCodepage = 737;

int32_t dosCodepageOf(int32_t codepage) noexcept
{
    for (size_t i = 0; Windows_CodePage[i] != 0; ++i) {
        if (Windows_CodePage[i] == codepage) {
            return MSDOS_CodePage[i];
        }
    }
    return codepage;
}

} // namespace

TRACE_CONTROL("dov0cscc", DOV0_CheckSystemCommandCodepage);
extern "C" int32_t DOV0_CheckSystemCommandCodepage(int32_t codepage, int32_t language) noexcept
{
    const Frame frame(TRC1__EPB_);

    int32_t codepageToUse = dosCodepageOf(codepage);
    if (codepageToUse == LatinDosCodepage && (language == LanguageIsGreek || language == LanguageIsTurkey)) {
        codepageToUse = GreekDosCodepage; // for Turkish too, on purpose
    }
    return frame.leave(codepageToUse);
}
