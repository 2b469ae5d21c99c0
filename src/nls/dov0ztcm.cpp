// Shows a message on the operators' console: through the agent framework, or, when the data provider runs on its own,
// by the console's command-line tool.
#include "foundation/dp_start_mode.h"
#include "foundation/frame.h"
#include "foundation/local_environment.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

enum ConsoleFeature : int32_t { Undecided = -1, Disabled = 0, Enabled = 1 };

constinit std::atomic<int32_t> DoOMC = Undecided;
constinit int32_t decision = 0; // a once control

constexpr char ZTconsoleCommand[] = "AGFMESG";

constexpr size_t RoomForOptions = 256;
constexpr int32_t NotSent = -1;

// The command as it is put together.
struct Command {
    char *text;
    size_t length;

    void append(const char *bytes, size_t count) noexcept
    {
        std::memcpy(text + length, bytes, count);
        length += count;
        text[length] = '\0';
    }
    void append(const char *bytes) noexcept { append(bytes, std::strlen(bytes)); }
};

void decideFeature(void *callersFrame) noexcept
{
    const Frame &frame = *static_cast<const Frame *>(callersFrame);
    const char first = DOV0_GetEnv("DOV_OMC", "Y")[0];
    if (first == 'N' || first == 'n') {
        DoOMC.store(Disabled, std::memory_order_relaxed);
        TRACE(frame, Trace::State, "Omnia Message Console feature disabled\n");
        return;
    }
    DoOMC.store(Enabled, std::memory_order_relaxed);
    if (IndependentDPstartMode.load(std::memory_order_relaxed) != 0) {
        DOV0_PutEnv("QPL_TRC1= "); // the tools that the agent starts do not trace
        TRACE(frame, Trace::Detail, "OMC module path %s in effect\n", shown(DOV0_GetEnv("PATH", nullptr)));
    }
}

bool isSpecialToTheShell(char c) noexcept
{
    return c == '"' || c == '$' || c == '`' || c == '\\';
}

size_t lengthOf(const char *text) noexcept
{
    return text != nullptr ? std::strlen(text) : 0;
}

// The bytes of the message in the command; each special one takes a backslash where escaping is on.
size_t quotedLength(const char *message, bool escapes) noexcept
{
    size_t length = 0;
    for (const char *c = message; *c != '\0'; ++c) {
        length += escapes && isSpecialToTheShell(*c) ? 2U : 1U;
    }
    return length;
}

void appendQuoted(Command &command, const char *message, bool escapes) noexcept
{
    command.append(" \"");
    if (!escapes) {
        command.append(message);
    } else {
        for (const char *c = message; *c != '\0'; ++c) {
            if (isSpecialToTheShell(*c)) {
                command.append("\\");
            }
            command.append(c, 1);
        }
    }
    command.append("\"");
}

bool isY(char c) noexcept
{
    return c == 'Y' || c == 'y';
}

// Not asked for through DOV0_GetEnv: who does not set the switch sees no trace of it.
bool mayEscape() noexcept
{
    const char *value = PLT1_GetEnv("DOV_OMC_ESCAPE", 0);
    if (value != nullptr) {
        return isY(value[0]);
    }
    EnvArrayLock.ensureInitialized();
    const LockHolder holder(EnvArrayLock);
    const LocalEnvEntry *entry = findLocalEnv("DOV_OMC_ESCAPE");
    return entry != nullptr && isY(entry->value[0]);
}

// Starts the console's tool and waits until it ends.
int32_t startConsoleTool(const Frame &frame, const char *cText, const char *sText,
                         const char *message) noexcept
{
    const bool escapes = mayEscape();
    const size_t size = sizeof ZTconsoleCommand - 1 + quotedLength(message, escapes) + RoomForOptions +
                        lengthOf(cText) + lengthOf(sText);
    Command command = {nullptr, 0};
    if (size <= INT32_MAX) {
        command.text = static_cast<char *>(DOV0_GetStorage(static_cast<int32_t>(size)));
    }
    if (command.text == nullptr) {
        TRACE(frame, Trace::Error,
              "***** Unable to allocate console message buffer. ZT console message bypassed\n");
        return NotSent;
    }
    command.append(ZTconsoleCommand);
    if (lengthOf(sText) > 0) {
        command.append(" -s ");
        command.append(sText);
    }
    if (lengthOf(cText) > 0) {
        command.append(" -c ");
        command.append(cText, std::strcspn(cText, " ")); // only the first word
    }
    appendQuoted(command, message, escapes);
    TRACE(frame, Trace::Detail, "Issuing system command (%s)\n", command.text);
    const int32_t status = std::system(command.text); // NOLINT: how the tool is started
    TRACE(frame, Trace::Detail, "Length %d Status %d Console command (%s)\n",
          static_cast<int32_t>(command.length), status, command.text);
    DOV0_FreeStorage(&command.text);
    return status;
}

} // namespace

TRACE_CONTROL("dov0ztcm", DOV0_ZTconsoleMessage);
extern "C" int32_t DOV0_ZTconsoleMessage(const char *cText, const char *sText, const char *message) noexcept
{
    const Frame frame(TRC1__EPB_);

    if (__atomic_load_n(&decision, __ATOMIC_ACQUIRE) >= 0) {
        PLT1_InitializeOnce(&decision, decideFeature, const_cast<Frame *>(&frame), TRC1__F_, __LINE__);
    }
    if (DoOMC.load(std::memory_order_relaxed) == Disabled) {
        return frame.leave(NotSent);
    }
    if (message == nullptr) {
        TRACE(frame, Trace::Error, "***** No message input. ZT console message bypassed\n");
        return frame.leave(NotSent);
    }
    if (IndependentDPstartMode.load(std::memory_order_relaxed) == 0) {
        TRACE(frame, Trace::Flow, "Calling AGF_CreateMessage <%s> <%s> <%s>\n", shown(sText), shown(cText),
              shown(message));
        AGF_CreateMessage(sText, cText, message, 0);
        return frame.leave<int32_t>(0);
    }
    return frame.leave(startConsoleTool(frame, cText, sText, message));
}
