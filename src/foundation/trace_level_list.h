// A list of trace levels as an operator writes it: "error,dov0gsto=detail+storage,DOV0_GetEnv=all".
#ifndef DOV0610_FOUNDATION_TRACE_LEVEL_LIST_H
#define DOV0610_FOUNDATION_TRACE_LEVEL_LIST_H

#include <cstddef>
#include <cstdint>

// A piece of a list, by its place in the text it was read from.
struct TextPiece {
    const char *start;
    size_t length;
};

class TraceLevelList {
public:
    constexpr TraceLevelList() noexcept = default;

    // Reads a list; null is an empty one. Malformed pieces are left out and handed to onMalformed one by
    // one. Returns false when there was no storage, and is then empty.
    bool read(const char *text, void (*onMalformed)(const TextPiece &piece, void *context),
              void *context) noexcept;

    // The level for a function of a source file: that of the last entry for the function, else of the last
    // one for the file, else of the last one for everything, else 0.
    uint32_t levelOf(const char *sourceFile, const char *function) const noexcept;

    // Exchanges the contents of two lists.
    void swap(TraceLevelList &other) noexcept;

    // Gives the storage back.
    void clear() noexcept;

private:
    struct Entry;

    Entry *entries = nullptr; // followed in the same block by the text that they point into
    size_t count = 0;
};

#endif
