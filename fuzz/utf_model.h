// Unicode text by the book: how malformed sequences are replaced, and the encodings written out bit by bit.
#ifndef DOV0610_FUZZ_UTF_MODEL_H
#define DOV0610_FUZZ_UTF_MODEL_H

#include <cstdint>
#include <string>
#include <string_view>

constexpr char32_t ReplacementCharacter = 0xFFFD;

// Takes one character off the front of UTF-8 text that is not empty. A malformed sequence gives one replacement
// character and goes as far as it might have become a character.
inline char32_t takeFromUtf8(std::string_view &text)
{
    const auto byteAt = [&text](size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned lead = byteAt(0);
    size_t size = 1;
    char32_t character = lead;
    if (lead >= 0x80) {
        // The second byte has a narrower range after some lead bytes: no overlong forms, no surrogates, no end.
        const unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
        const unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
        const size_t wanted = lead >= 0xC2 && lead <= 0xDF   ? 2
                              : lead >= 0xE0 && lead <= 0xEF ? 3
                              : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                             : 0;
        character = wanted != 0 ? lead & (0x7FU >> wanted) : 0;
        while (size < wanted && byteAt(size) >= (size == 1 ? lowest : 0x80) &&
               byteAt(size) <= (size == 1 ? highest : 0xBF)) {
            character = character << 6 | (byteAt(size) & 0x3F);
            ++size;
        }
        if (size != wanted) {
            character = ReplacementCharacter;
        }
    }
    text.remove_prefix(size);
    return character;
}

inline std::u16string utf16ByModel(std::string_view utf8)
{
    std::u16string units;
    while (!utf8.empty()) {
        const char32_t character = takeFromUtf8(utf8);
        if (character >= 0x10000) {
            units += static_cast<char16_t>(0xD7C0 + (character >> 10));
            units += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
        } else {
            units += static_cast<char16_t>(character);
        }
    }
    return units;
}

// Surrogates that are not one half of a pair are replaced.
inline std::string utf8ByModel(std::u16string_view units)
{
    std::string text;
    for (size_t i = 0; i < units.size(); ++i) {
        char32_t character = units[i];
        if (character >= 0xD800 && character <= 0xDFFF) {
            const bool isPair = character < 0xDC00 && i + 1 < units.size() && units[i + 1] >= 0xDC00 &&
                                units[i + 1] <= 0xDFFF;
            character =
                isPair ? 0x10000 + ((character & 0x3FF) << 10 | (units[++i] & 0x3FFU)) : ReplacementCharacter;
        }
        const int more = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
        static constexpr unsigned Leads[] = {0x00, 0xC0, 0xE0, 0xF0};
        text += static_cast<char>(Leads[more] | character >> 6 * more);
        for (int shift = 6 * (more - 1); shift >= 0; shift -= 6) {
            text += static_cast<char>(0x80 | (character >> shift & 0x3F));
        }
    }
    return text;
}

#endif
