// Several threads that tokenize in alternation, as strtok_r does for each alone, with the table of slots modelled and the
// whole trace compared. The threads are pretended: the library asks PLT1_ThreadID() who calls.
// Functions: DOV0_strtok
#include "fuzz_target.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <vector>

namespace {

constexpr char Function[] = "DOV0_strtok";
constexpr size_t SlotCount = 256;
constexpr int MostSteps = 64;

int32_t callingThread = 1;

// A text in two copies: the library's, and one for strtok_r.
struct TextInTwo {
    explicit TextInTwo(const std::string &text)
        : own(ExactBuffer::ofText(text)), model(ExactBuffer::ofText(text))
    {
    }

    // The place in the library's copy that one in the model's stands for.
    char *inOwn(const char *place) const
    {
        return place != nullptr ? own.text() + (place - model.text()) : nullptr;
    }

    ExactBuffer own;
    ExactBuffer model;
};

struct Slot {
    int32_t thread = 0;
    char *savePointer = nullptr; // into the library's copy of a text
};

// Outlives an input, as the library's table does.
Slot slots[SlotCount];

size_t slotOf(int32_t thread)
{
    return static_cast<size_t>(
        std::find_if(slots, slots + SlotCount, [thread](const Slot &slot) { return slot.thread == thread; }) -
        slots);
}

// One thread's work.
struct Work {
    std::optional<TextInTwo> text;
    char *save = nullptr; // strtok_r's, into the model's copy
};

using Delimiters = std::optional<std::string>;

// A thread that begins a text and holds its slot until it is gone. It is not traced, as there are many.
class Bystander {
public:
    explicit Bystander(int32_t identity) : thread(identity), index(slotOf(0))
    {
        callingThread = thread;
        MUST_EQUAL(std::string(DOV0_strtok(text.text(), " ")), "a");
        slots[index] = {thread, text.text() + 2};
    }
    ~Bystander()
    {
        callingThread = thread;
        MUST_EQUAL(std::string(DOV0_strtok(nullptr, " ")), "b");
        MUST(DOV0_strtok(nullptr, " ") == nullptr);
        slots[index] = {0, text.text() + 3};
    }
    Bystander(const Bystander &) = delete;
    Bystander &operator=(const Bystander &) = delete;

private:
    const int32_t thread;
    const size_t index;
    const ExactBuffer text = ExactBuffer::ofText("a b");
};

class Session {
public:
    explicit Session(uint32_t traceLevel) : level(traceLevel) {}

    // Every thread ends its text, so that the next input finds all slots free.
    ~Session()
    {
        setTraceLevel(0);
        crowd.clear();
        setTraceLevel(level);
        for (const Slot &slot : slots) {
            while (slot.thread != 0) {
                step(slot.thread, std::nullopt, "");
            }
        }
    }
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    // Takes all slots but two, for threads that nothing else is asked of.
    void fill()
    {
        setTraceLevel(0);
        for (int32_t thread = 1001; thread < 1255; ++thread) {
            crowd.push_back(std::make_unique<Bystander>(thread));
        }
        setTraceLevel(level);
    }

    // A call of one thread, with a new text or for the next token. Compares result, text and trace.
    void step(int32_t thread, const std::optional<std::string> &text, const Delimiters &delimiters)
    {
        expected = {entry(Function)};
        Work &work = works[thread];
        if (text) {
            work.text.emplace(*text);
        }
        char *const token = stepByModel(thread, work, text.has_value(), delimiters);
        expected.push_back(leave(Function, token));

        const ExactBuffer delimiterText = ExactBuffer::ofText(delimiters.value_or(""));
        callingThread = thread;
        takeTrace();
        char *const result =
            DOV0_strtok(text ? work.text->own.text() : nullptr, delimiters ? delimiterText.text() : nullptr);
        const TraceLog log = takeTrace();
        MUST_EQUAL(result, token);
        if (work.text) {
            MUST_EQUAL(work.text->own.contents(), work.text->model.contents());
        }
        MUST_EQUAL(log, level != 0 ? expected : TraceLog{});
    }

private:
    void say(const std::string &text) { expected.push_back(std::string(Function) + ": " + text); }

    static std::string address(const char *pointer)
    {
        char text[32];
        std::snprintf(text, sizeof text, "@%p", static_cast<const void *>(pointer));
        return text;
    }

    char *stepByModel(int32_t thread, Work &work, bool isNew, const Delimiters &delimiters)
    {
        const std::string identity = std::to_string(thread);
        size_t index = slotOf(thread);
        const bool isOwner = index < SlotCount;
        if (!isOwner) {
            index = slotOf(0);
            if (index == SlotCount) {
                say("***** No slots available in the arrayOfSavePtr\n");
                return nullptr;
            }
        }
        const std::string number = std::to_string(index);
        say(isOwner ? "Found a match on threadID " + identity + " in arrayOfSavePtr[" + number + "]\n"
                    : "Found available arrayOfSavePtr[" + number + "] with threadID=0\n");
        Slot &slot = slots[index];
        slot.thread = thread;
        const std::string list = delimiters.value_or("");
        if (isNew) {
            const std::string text = work.text->model.text();
            if (!text.empty()) {
                say("Using threadID " + identity + " index " + number + " for input string <" + text + ">\n");
            }
            slot.savePointer = nullptr;
            if (!text.empty() && !list.empty()) {
                say("Calling strtok_r with string1 <" + text + "> string2 <" + list + "> arrayOfSavePtr[" +
                    number + "].savePointer " + address(nullptr) + "\n");
            }
        } else {
            say("Reusing savePointer index " + number + " " + address(slot.savePointer) + "\n");
            if (!list.empty()) {
                say("Calling strtok_r with NULL string1 and string2 <" + list + ">\n");
            }
        }
        char *token = nullptr;
        if (isNew || isOwner) { // else there is nothing to continue
            token = strtok_r(isNew ? work.text->model.text() : nullptr, list.c_str(), &work.save);
            slot.savePointer = work.text->inOwn(work.save);
        }
        if (token != nullptr) {
            say("Returning tok <" + std::string(token) + "> savePointer index " + number + " " +
                address(slot.savePointer) + "\n");
            return work.text->inOwn(token);
        }
        say("Returning NULL\n");
        say("Setting arrayOfSavePtr[" + number + "].threadID " + identity + " to 0\n");
        slot.thread = 0;
        return nullptr;
    }

    const uint32_t level;
    TraceLog expected;
    std::map<int32_t, Work> works;
    std::vector<std::unique_ptr<Bystander>> crowd;
};

Delimiters chosenDelimiters(FuzzInput &input)
{
    const int32_t kind = input.number(0, 5);
    switch (kind) {
    case 0:
        return ",";
    case 1:
        return " \t";
    case 2:
        return ".,";
    case 3:
        return std::nullopt;
    default:
        return std::string(input.take(static_cast<size_t>(kind - 3)).c_str());
    }
}

} // namespace

extern "C" int32_t PLT1_ThreadID(void)
{
    return callingThread;
}

void fuzzOneInput(FuzzInput &input)
{
    Session session(input.level);
    if (input.byte() == 'F' && input.level != 0) { // once is enough: it takes long
        session.fill();
    }
    for (int steps = 0; steps < MostSteps && input.remaining() > 0; ++steps) {
        const int32_t thread = input.number(1, 4);
        const Delimiters delimiters = chosenDelimiters(input);
        if (input.number(0, 3) == 0) {
            session.step(thread, std::string(input.take(static_cast<size_t>(input.number(0, 40))).c_str()),
                         delimiters);
        } else {
            session.step(thread, std::nullopt, delimiters);
        }
    }
}
