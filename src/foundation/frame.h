// The frame that every exported function runs in: it takes up the trace level that applies to the
// function, reports entry and exit as flow events, and gives messages and dumps their level test.
//
// A file opens with TRACE_CONTROL on the line right above its function, and the function with a
// Frame (or, where it reports no events, a TraceLevel):
//
//     TRACE_CONTROL("dov0gsto", DOV0_GetStorage);
//     extern "C" void *DOV0_GetStorage(int32_t size) noexcept
//     {
//         Frame frame(TRC1__EPB_);
//         TRACE(frame, Trace::Detail, "size %d\n", size);
//         return frame.leave(block);
//     }
//
// With tracing off that is one comparison of two words and one test of a bit for each message.
#ifndef DOV0610_FOUNDATION_FRAME_H
#define DOV0610_FOUNDATION_FRAME_H

#include "dov0610.h"
#include "dov0610_platform.h"

#include <cstdint>
#include <type_traits>

// Names the library's version; every unit block ends with its address.
struct BuildInformation {
    const char *version;
};
extern const BuildInformation TheBuildInformation;

// Trace level bits by their short names.
namespace Trace {
constexpr uint32_t Detail = DOV0_TRACE_DETAIL;
constexpr uint32_t Storage = DOV0_TRACE_STORAGE;
constexpr uint32_t Dump = DOV0_TRACE_DUMP;
constexpr uint32_t State = DOV0_TRACE_STATE;
constexpr uint32_t Flow = DOV0_TRACE_FLOW;
constexpr uint32_t Error = DOV0_TRACE_ERROR;
constexpr uint32_t Configuration = DOV0_TRACE_CONFIGURATION;
} // namespace Trace

// The trace control data of a source file and its one function, which must begin on the next line.
// The date and time are those of the build description, not of the clock, so that builds repeat.
#define TRACE_CONTROL(sourceFile, function)                                                                  \
    namespace {                                                                                              \
    constinit int32_t TRC1__INIT_ = 1;                                                                       \
    constinit char TRC1__D_[] = DOV0_BUILD_DATE;                                                             \
    constinit char TRC1__T_[] = DOV0_BUILD_TIME;                                                             \
    constinit char TRC1__F_[] = sourceFile;                                                                  \
    constinit char TRC1__C_[] = "*";                                                                         \
    constinit char TRC1__L_[] = "DOV610";                                                                    \
    constinit char TRC1_I_[] = #function;                                                                    \
    constinit TRC1_UnitBlock TRC1__CUB_ = {400,                                                              \
                                           0x83000000U,                                                      \
                                           {{TRC1_TAG_FILE_NAME, TRC1__F_},                                  \
                                            {TRC1_TAG_COMPILE_DATE, TRC1__D_},                               \
                                            {TRC1_TAG_COMPILE_TIME, TRC1__T_},                               \
                                            {TRC1_TAG_COMPONENT, TRC1__L_},                                  \
                                            {TRC1_TAG_CLASS, TRC1__C_},                                      \
                                            {TRC1_TAG_END, &TheBuildInformation}}};                          \
    constinit TRC1_EntryBlock TRC1__EPB_ = {                                                                 \
        &TRC1__CUB_, TRC1_I_, 0, sizeof(#function) - 1, __LINE__ + 1, &TRC1__INIT_, 512, 0, 0, {0, 0}};      \
    }                                                                                                        \
    static_assert(true)

// The trace level in force for one call of one function.
class TraceLevel {
public:
    explicit TraceLevel(TRC1_EntryBlock &entryBlock) noexcept
        : theBlock(entryBlock),
          level(isCurrent(entryBlock) ? cachedLevel(entryBlock) : synchronise(entryBlock))
    {
    }
    TraceLevel(const TraceLevel &) = delete;
    TraceLevel &operator=(const TraceLevel &) = delete;

    // Whether any of these bits is on.
    bool traces(uint32_t bits) const noexcept { return __builtin_expect((level & bits) != 0, 0); }

    TRC1_EntryBlock *block() const noexcept { return &theBlock; }

private:
    // The facility stores the level before the generation, so a current generation vouches for the level.
    static bool isCurrent(const TRC1_EntryBlock &entryBlock) noexcept
    {
        const int32_t *word = __atomic_load_n(&entryBlock.generationWord, __ATOMIC_RELAXED);
        return __builtin_expect(__atomic_load_n(&entryBlock.generation, __ATOMIC_ACQUIRE) ==
                                    __atomic_load_n(word, __ATOMIC_RELAXED),
                                1);
    }

    static uint32_t cachedLevel(const TRC1_EntryBlock &entryBlock) noexcept
    {
        return __atomic_load_n(&entryBlock.level, __ATOMIC_RELAXED);
    }

    // Another thread may have synchronised the block meanwhile, hence the second look.
    [[gnu::noinline, gnu::cold]] static uint32_t synchronise(TRC1_EntryBlock &entryBlock) noexcept
    {
        return isCurrent(entryBlock) ? cachedLevel(entryBlock) : TRC1_Sync(&entryBlock);
    }

    TRC1_EntryBlock &theBlock;
    const uint32_t level;
};

// A line number that no value being returned is mistaken for.
struct SourceLine {
    int32_t number;
};

// A trace level with entry and exit events. Each return goes through leave(), whose line it reports.
class Frame : public TraceLevel {
public:
    explicit Frame(TRC1_EntryBlock &entryBlock, int32_t line = __builtin_LINE()) noexcept
        : TraceLevel(entryBlock)
    {
        if (traces(Trace::Flow)) {
            TRC1_Event(block(), line, TRC1_EVENT_ENTRY);
        }
    }

    // Exit with the value being returned.
    template <typename Value> Value leave(Value value, int32_t line = __builtin_LINE()) const noexcept
    {
        if (traces(Trace::Flow)) {
            TRC1_Event(block(), line, TRC1_EVENT_EXIT_VALUE, eventValue(value));
        }
        return value;
    }

    // Exit of a function without a result. GCC takes the line of this file when the type is named.
    void leave(SourceLine line = {__builtin_LINE()}) const noexcept
    {
        if (traces(Trace::Flow)) {
            TRC1_Event(block(), line.number, TRC1_EVENT_EXIT);
        }
    }

    // Exit whose event carries no value although the function returns one.
    template <typename Value>
    Value leaveUnreported(Value value, int32_t line = __builtin_LINE()) const noexcept
    {
        leave(SourceLine{line});
        return value;
    }

private:
    // Pointers are reported whole, numbers as 32 bits with their sign.
    template <typename Value> static intptr_t eventValue(Value value) noexcept
    {
        if constexpr (std::is_pointer_v<Value>) {
            return reinterpret_cast<intptr_t>(value);
        } else {
            return static_cast<int32_t>(value);
        }
    }
};

// A message under any of these bits. Its arguments are computed only then.
#define TRACE(frame, bits, ...)                                                                              \
    do {                                                                                                     \
        if ((frame).traces(bits)) {                                                                          \
            TRACE_ALWAYS(frame, __VA_ARGS__);                                                                \
        }                                                                                                    \
    } while (false)

// A message whatever the level.
#define TRACE_ALWAYS(frame, ...) TRC1_Printf((frame).block(), __LINE__, __VA_ARGS__)

// Some texts of the library combine a zero flag with a precision ("%04.4X"). That is well defined, and
// the compiler warns about it; the texts stay as they are.
#define TRACE_WITH_ZERO_FLAG(frame, bits, ...)                                                               \
    do {                                                                                                     \
        _Pragma("GCC diagnostic push") _Pragma("GCC diagnostic ignored \"-Wformat\"")                        \
            TRACE(frame, bits, __VA_ARGS__);                                                                 \
        _Pragma("GCC diagnostic pop")                                                                        \
    } while (false)

// A dump under any of these bits, each byte printed with itemFormat ("%02.2X" nearly everywhere).
#define DUMP(frame, bits, address, length, itemFormat)                                                       \
    do {                                                                                                     \
        if ((frame).traces(bits)) {                                                                          \
            DUMP_ALWAYS(frame, address, length, itemFormat);                                                 \
        }                                                                                                    \
    } while (false)

// A dump whatever the level.
#define DUMP_ALWAYS(frame, address, length, itemFormat)                                                      \
    TRC1_Dump((frame).block(), __LINE__, address, length, itemFormat)

// A text as a message shows it: a null one by name, never handed to "%s" itself.
inline const char *shown(const char *text) noexcept
{
    return text != nullptr ? text : "(null)";
}

#endif
