// Where trace messages go: standard error, or a file that may be bounded in size.
#ifndef DOV0610_FOUNDATION_TRACE_OUTPUT_H
#define DOV0610_FOUNDATION_TRACE_OUTPUT_H

#include <climits>
#include <cstddef>
#include <cstdint>

class TraceOutput {
public:
    constexpr TraceOutput() noexcept = default;

    // For an output that is standard error yet: opens a file to append to, or leaves it so for a null or empty
    // name. On failure nothing changes, errno says why, and the result is false.
    bool open(const char *fileName) noexcept;

    // Bound of the file in bytes; 0 for none.
    void setLimit(uint64_t bytes) noexcept { limit = bytes; }

    // Writes a message whole. What cannot be written is dropped: there is nobody to tell.
    void write(const char *text, size_t length) noexcept;

    // Exchanges two outputs, all but their bounds.
    void swap(TraceOutput &other) noexcept;

    // Gives the file back and takes standard error.
    void close() noexcept;

private:
    void beginAgainIfFull(size_t more) noexcept;
    bool isFullFile(size_t more) const noexcept;
    bool isFile() const noexcept { return name[0] != '\0'; }

    int descriptor = 2;
    char name[PATH_MAX] =
        ""; // empty for standard error; no storage, so that exhausted storage can be reported
    uint64_t limit = 0;
};

#endif
