// The text of one trace message while it is put together: on the stack as long as it is short.
#ifndef DOV0610_FOUNDATION_TRACE_TEXT_H
#define DOV0610_FOUNDATION_TRACE_TEXT_H

#include "dov0610_platform.h"

#include <cstdarg>
#include <cstddef>

// The source file that a function's block names.
const char *sourceFileOf(const TRC1_EntryBlock &block) noexcept;

class TraceText {
public:
    TraceText() noexcept = default;
    ~TraceText();
    TraceText(const TraceText &) = delete;
    TraceText &operator=(const TraceText &) = delete;

    // Time, process, thread, source file, line and function: what every line begins with.
    void beginLine(const TRC1_EntryBlock &block, int32_t line) noexcept;

    // Formatted text, as it is.
    void append(const char *format, ...) noexcept DOV0_PRINTF_FORMAT(2, 3);

    // Formatted text of a message, with control characters made visible and one line end behind it.
    void appendMessage(const char *format, va_list arguments) noexcept DOV0_PRINTF_FORMAT(2, 0);

    void endLine() noexcept;

    const char *data() const noexcept { return text; }
    size_t length() const noexcept { return used; }

private:
    bool reserve(size_t more) noexcept;
    void appendVisible(const char *characters, size_t count) noexcept;

    char onStack[1024];
    char *text = onStack;
    size_t capacity = sizeof onStack;
    size_t used = 0;
};

#endif
