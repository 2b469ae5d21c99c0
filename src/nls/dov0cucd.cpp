// Converts a command from UTF-8 to the code page in which the system's shell expects it.
#include "foundation/frame.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int32_t LongestCommand = INT32_MAX - 2; // a blank and a terminator follow

bool isAscii(const char *text, int32_t length) noexcept
{
    return std::all_of(text, text + length, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Translates the command with a blank behind it. Returns the length of the result, 0 on failure.
int32_t translate(const Frame &frame, const char *command, int32_t length, char *output, int32_t size,
                  int32_t codepageToUse) noexcept
{
    const char *source = command;
    char *inCmd = nullptr;
    if (command[length - 1] != ' ') {
        inCmd = static_cast<char *>(DOV0_GetStorage(length + 1));
        if (inCmd == nullptr) {
            TRACE(frame, Trace::Error, "*ERROR: Unable to allocate inCmd buffer for length %d\n", length + 1);
            return 0;
        }
        TRACE(frame, Trace::Storage, "Allocated inCmd buffer @%p for length %d\n", static_cast<void *>(inCmd),
              length + 1);
        std::memcpy(inCmd, command, static_cast<size_t>(length));
        inCmd[length++] = ' ';
        source = inCmd;
    }
    int32_t consumed = 0;
    int32_t status = 0;
    int32_t converted = LNG2_TranslateString(codepageToUse, output, size, LNG2_CODEPAGE_UTF8, source, length,
                                             &consumed, 0, &status);
    if (status != 0) {
        TRACE(frame, Trace::Error, "*ERROR: Command data conversion failed, codepage %d status %d\n",
              codepageToUse, status);
        converted = 0;
    }
    if (inCmd != nullptr) {
        TRACE(frame, Trace::Storage, "Freeing inCmd buffer @%p\n", static_cast<void *>(inCmd));
        DOV0_FreeStorage(&inCmd);
    }
    return converted;
}

} // namespace

TRACE_CONTROL("dov0cucd", DOV0_ConvertUTF8CommandToDOS);
extern "C" int32_t DOV0_ConvertUTF8CommandToDOS(const char *command, int32_t length, char *output,
                                                int32_t size) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (command == nullptr || output == nullptr || length < 1 || size < 1 || size < length ||
        length > LongestCommand) {
        TRACE(frame, Trace::Detail, "Conversion bypassed inCmd <@%p,%d> outCmd <@%p,%d>\n",
              static_cast<const void *>(command), length, static_cast<void *>(output), size);
        return frame.leave<int32_t>(0);
    }
    TRACE(frame, Trace::Detail, "inUTF8command length %d <%.*s>\n", length, length, command);
    if (isAscii(command, length)) {
        // The blank and the terminator are stored even where size has no room for them: callers know.
        std::memmove(output, command, static_cast<size_t>(length));
        output[length] = ' ';
        output[length + 1] = '\0';
        TRACE(frame, Trace::Detail, "No conversion required for inUTF8command\n");
        return frame.leave(length + 1);
    }
    int32_t status = 0;
    LNG2_Locale *locale = LNG2_GetThreadLocale(&status);
    if (locale == nullptr) {
        TRACE(frame, Trace::Error, "*ERROR: No locale for command data conversion, status %d\n", status);
        return frame.leave<int32_t>(0);
    }
    const int32_t codepageToUse = DOV0_CheckSystemCommandCodepage(locale->codepage, locale->languageId);
    TRACE(frame, Trace::Detail, "Locale languageId <%d> codepage <%d> codepageToUse <%d> Name <%s>",
          locale->languageId, locale->codepage, codepageToUse, locale->name);
    const int32_t converted = translate(frame, command, length, output, size, codepageToUse);
    LNG2_ReleaseLocale(locale);
    return frame.leave(converted);
}
