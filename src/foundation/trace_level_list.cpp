// Reads and asks lists of trace levels. A list is read once and asked once for each function and
// configuration, so it is kept as the plain sequence of its entries.
#include "foundation/trace_level_list.h"

#include "dov0610.h"

#include <cstdlib>
#include <cstring>
#include <utility>

struct TraceLevelList::Entry {
    TextPiece selector; // empty: everything
    uint32_t levels;
};

namespace {

constexpr uint32_t AllLevels = DOV0_TRACE_DETAIL | DOV0_TRACE_STORAGE | DOV0_TRACE_DUMP | DOV0_TRACE_STATE |
                               DOV0_TRACE_FLOW | DOV0_TRACE_ERROR | DOV0_TRACE_CONFIGURATION;

struct LevelName {
    const char *name;
    uint32_t level;
};

constexpr LevelName LevelNames[] = {
    {"detail", DOV0_TRACE_DETAIL},
    {"storage", DOV0_TRACE_STORAGE},
    {"dump", DOV0_TRACE_DUMP},
    {"state", DOV0_TRACE_STATE},
    {"flow", DOV0_TRACE_FLOW},
    {"error", DOV0_TRACE_ERROR},
    {"config", DOV0_TRACE_CONFIGURATION},
    {"all", AllLevels},
    {"none", 0},
};

bool equals(const TextPiece &piece, const char *text) noexcept
{
    return std::strlen(text) == piece.length && std::memcmp(text, piece.start, piece.length) == 0;
}

bool isBlank(char c) noexcept
{
    return c == ' ' || c == '\t';
}

TextPiece withoutBlanksAround(TextPiece piece) noexcept
{
    while (piece.length > 0 && isBlank(piece.start[0])) {
        ++piece.start;
        --piece.length;
    }
    while (piece.length > 0 && isBlank(piece.start[piece.length - 1])) {
        --piece.length;
    }
    return piece;
}

// Takes the part up to the separator off the front of rest; all of it when there is no separator.
TextPiece takeUpTo(char separator, TextPiece &rest, bool &more) noexcept
{
    const auto *end = static_cast<const char *>(std::memchr(rest.start, separator, rest.length));
    more = end != nullptr;
    const TextPiece front = {rest.start, more ? static_cast<size_t>(end - rest.start) : rest.length};
    const size_t taken = front.length + (more ? 1 : 0);
    rest = {rest.start + taken, rest.length - taken};
    return front;
}

// The value of a digit in a base, or the base itself for any other character.
uint32_t digitValue(char c, uint32_t base) noexcept
{
    uint32_t value = base;
    if (c >= '0' && c <= '9') {
        value = static_cast<uint32_t>(c - '0');
    } else if (c >= 'a' && c <= 'f') {
        value = static_cast<uint32_t>(c - 'a') + 10;
    } else if (c >= 'A' && c <= 'F') {
        value = static_cast<uint32_t>(c - 'A') + 10;
    }
    return value < base ? value : base;
}

bool readNumber(TextPiece text, uint32_t &number) noexcept
{
    uint32_t base = 10;
    if (text.length > 2 && text.start[0] == '0' && (text.start[1] == 'x' || text.start[1] == 'X')) {
        base = 16;
        text = {text.start + 2, text.length - 2};
    }
    uint64_t value = 0;
    for (size_t i = 0; i < text.length; ++i) {
        const uint32_t digit = digitValue(text.start[i], base);
        if (digit == base) {
            return false;
        }
        value = value * base + digit;
        if (value > UINT32_MAX) {
            return false;
        }
    }
    number = static_cast<uint32_t>(value);
    return text.length > 0;
}

bool readLevelNames(TextPiece text, uint32_t &levels) noexcept
{
    levels = 0;
    for (bool more = true; more;) {
        const TextPiece name = withoutBlanksAround(takeUpTo('+', text, more));
        const LevelName *known = nullptr;
        for (const LevelName &candidate : LevelNames) {
            if (equals(name, candidate.name)) {
                known = &candidate;
            }
        }
        if (known == nullptr) {
            return false;
        }
        levels |= known->level;
    }
    return true;
}

bool isSelector(const TextPiece &text) noexcept
{
    for (size_t i = 0; i < text.length; ++i) {
        const char c = text.start[i];
        if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_')) {
            return false;
        }
    }
    return true;
}

// Takes a piece "selector=levels" or "levels" apart; false when it is neither.
bool readPiece(TextPiece piece, TextPiece &selector, uint32_t &levels) noexcept
{
    bool hasSelector = false;
    TextPiece rest = piece;
    selector = withoutBlanksAround(takeUpTo('=', rest, hasSelector));
    const TextPiece levelText = withoutBlanksAround(hasSelector ? rest : piece);
    if (!hasSelector) {
        selector.length = 0;
    }
    return isSelector(selector) && (readNumber(levelText, levels) || readLevelNames(levelText, levels));
}

} // namespace

bool TraceLevelList::read(const char *text, void (*onMalformed)(const TextPiece &piece, void *context),
                          void *context) noexcept
{
    clear();
    if (text == nullptr || withoutBlanksAround({text, std::strlen(text)}).length == 0) {
        return true;
    }
    const size_t length = std::strlen(text);
    size_t pieces = 1;
    for (size_t i = 0; i < length; ++i) {
        pieces += text[i] == ',' ? 1 : 0;
    }
    entries = static_cast<Entry *>(std::malloc(pieces * sizeof(Entry) + length));
    if (entries == nullptr) {
        return false;
    }
    auto *copy = reinterpret_cast<char *>(entries + pieces);
    std::memcpy(copy, text, length);

    TextPiece rest = {copy, length};
    for (bool more = true; more;) {
        const TextPiece piece = withoutBlanksAround(takeUpTo(',', rest, more));
        Entry entry = {};
        if (readPiece(piece, entry.selector, entry.levels)) {
            entries[count++] = entry;
        } else {
            onMalformed(piece, context);
        }
    }
    return true;
}

uint32_t TraceLevelList::levelOf(const char *sourceFile, const char *function) const noexcept
{
    uint32_t levels[3] = {0, 0, 0}; // for everything, the file, the function
    bool found[3] = {false, false, false};
    for (size_t i = 0; i < count; ++i) {
        const Entry &entry = entries[i];
        size_t specificity = 0;
        if (entry.selector.length != 0) {
            if (equals(entry.selector, function)) {
                specificity = 2;
            } else if (equals(entry.selector, sourceFile)) {
                specificity = 1;
            } else {
                continue;
            }
        }
        levels[specificity] = entry.levels;
        found[specificity] = true;
    }
    return found[2] ? levels[2] : found[1] ? levels[1] : levels[0];
}

void TraceLevelList::swap(TraceLevelList &other) noexcept
{
    std::swap(entries, other.entries);
    std::swap(count, other.count);
}

void TraceLevelList::clear() noexcept
{
    std::free(entries);
    entries = nullptr;
    count = 0;
}
