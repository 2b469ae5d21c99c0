// Path names of directories and names of any length, with what is traced about them.
// Functions: DOV0_ConstructFullyQualifiedName DOV0_CheckPathSpec
#include "fuzz_target.h"

#include <cstdlib>
#include <optional>

namespace {

using Text = std::optional<std::string>;

// A text of a chosen length that may be null.
Text chosen(FuzzInput &input)
{
    if (input.number(0, 7) == 7) {
        return std::nullopt;
    }
    const int32_t repeated = input.number(1, 12);
    const std::string part = input.take(static_cast<size_t>(input.number(0, 80))).c_str();
    std::string text;
    for (int32_t i = 0; i < repeated; ++i) {
        text += part;
    }
    return text;
}

// The work directory is taken once in a process, by the first call that gets storage for it.
void settleWorkDirectory()
{
    setenv("DOV_WORK_PATH", "/var/agent", 1);
    failStorageRequest(1);
    MUST(DOV0_ConstructFullyQualifiedName(nullptr, "x.dat") == nullptr);
    MUST(takeStorageFailure());
    const Owned<char> path(DOV0_ConstructFullyQualifiedName(nullptr, "x.dat"));
    MUST_EQUAL(std::string(path.get()), "/var/agent/x.dat");
    setenv("DOV_WORK_PATH", "/elsewhere", 1);
}

void construct(const Text &directory, const Text &name, uint32_t level)
{
    constexpr char Function[] = "DOV0_ConstructFullyQualifiedName";
    constexpr size_t Longest = 511;
    const ExactBuffer directoryText = ExactBuffer::ofText(directory.value_or(""));
    const ExactBuffer nameText = ExactBuffer::ofText(name.value_or(""));

    takeTrace();
    const Owned<char> path(DOV0_ConstructFullyQualifiedName(directory ? directoryText.text() : nullptr,
                                                            name ? nameText.text() : nullptr));
    const TraceLog log = from(Function, takeTrace());

    TraceLog expected = {entry(Function)};
    if (!name) {
        MUST(path.get() == nullptr);
        expected.push_back(message(Function, "***** Input NameSpec is NULL\n"));
    } else if (takeStorageFailure()) {
        MUST(path.get() == nullptr);
        expected.push_back(
            std::string(Function) + ": ****Error: unable to allocate fully qualified pathname buffer for " +
            (directory ? "PathSpec <" + *directory + ">, " : "") + "NameSpec <" + *name + ">\n");
    } else {
        const std::string front = directory.value_or("/var/agent/");
        const std::string whole = front.substr(0, Longest) + *name;
        MUST_EQUAL(std::string(path.get()), whole.substr(0, Longest));
        expected.push_back(std::string(Function) + ": Input PathSpec " + directory.value_or("NULL") +
                           ", NameSpec " + *name + "\n");
        if (front.size() + name->size() > Longest) {
            const size_t copied = front.size() < Longest ? Longest - front.size() : 0;
            expected.push_back(std::string(Function) + ": Warning: only copied " + std::to_string(copied) +
                               " bytes of <" + *name + "> to pathname <" + path.get() + ">\n");
        }
    }
    expected.push_back(leave(Function, path.get()));
    MUST_EQUAL(log, level != 0 ? expected : TraceLog{});
}

void check(const Text &directory)
{
    const ExactBuffer text = ExactBuffer::ofText(directory.value_or(""));
    const Owned<char> path(DOV0_CheckPathSpec(directory ? text.text() : nullptr));
    MUST_EQUAL(path.get() == nullptr, !directory || takeStorageFailure());
    if (path.get() != nullptr) {
        MUST_EQUAL(std::string(path.get()), *directory + "/");
    }
}

} // namespace

void fuzzOneInput(FuzzInput &input)
{
    static const bool isSettled = [] {
        setTraceLevel(Trace::All);
        settleWorkDirectory();
        return true;
    }();
    MUST(isSettled);
    setTraceLevel(input.level);
    const Text directory = chosen(input);
    const Text name = chosen(input);
    construct(directory, name, input.level);
    check(directory);
}
