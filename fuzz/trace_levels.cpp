// Lists of trace levels as an operator may type them, and messages of any text, through the trace facility that ships:
// which lists are taken, the level of every function afterwards, and that a message stays one line.
// Functions: TRC1_Configure TraceLevelList::read TraceLevelList::levelOf TRC1_Sync TRC1_Printf TRC1_Event TRC1_Dump
#include "fuzz_target.h"

#include <optional>
#include <sys/mman.h>
#include <unistd.h>

namespace {

struct Entry {
    std::string selector;
    uint32_t level;
};

using List = std::vector<Entry>;

// The list in force, as the model has it.
List listInForce;

constexpr char OwnFile[] = "own_file";

std::string trimmed(const std::string &text)
{
    const size_t first = text.find_first_not_of(" \t");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::vector<std::string> split(const std::string &text, char separator)
{
    std::vector<std::string> parts = {""};
    for (const char character : text) {
        if (character == separator) {
            parts.emplace_back();
        } else {
            parts.back() += character;
        }
    }
    return parts;
}

std::optional<uint32_t> numberByModel(const std::string &text)
{
    const bool isHexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const std::string digits = isHexadecimal ? text.substr(2) : text;
    const char *const known = isHexadecimal ? "0123456789abcdefABCDEF" : "0123456789";
    if (digits.empty() || digits.find_first_not_of(known) != std::string::npos) {
        return std::nullopt;
    }
    const size_t first = digits.find_first_not_of('0');
    const std::string significant = first == std::string::npos ? "0" : digits.substr(first);
    if (significant.size() > 10) {
        return std::nullopt;
    }
    const uint64_t number = std::stoull(significant, nullptr, isHexadecimal ? 16 : 10);
    return number <= UINT32_MAX ? std::optional<uint32_t>(static_cast<uint32_t>(number)) : std::nullopt;
}

std::optional<uint32_t> levelsByModel(const std::string &text)
{
    static const std::vector<Entry> names = {{"detail", 0x01},  {"storage", 0x02}, {"dump", 0x0C},
                                             {"state", 0x10},   {"flow", 0x40},    {"error", 0x80},
                                             {"config", 0x100}, {"all", 0x1DF},    {"none", 0}};
    if (const auto number = numberByModel(text)) {
        return number;
    }
    uint32_t levels = 0;
    for (const std::string &part : split(text, '+')) {
        bool isKnown = false;
        for (const Entry &name : names) {
            if (trimmed(part) == name.selector) {
                levels |= name.level;
                isKnown = true;
            }
        }
        if (!isKnown) {
            return std::nullopt;
        }
    }
    return levels;
}

// The entries of a list; none when a piece of it is malformed.
std::optional<List> listByModel(const std::string &text)
{
    List list;
    if (trimmed(text).empty()) {
        return list;
    }
    for (const std::string &piece : split(text, ',')) {
        const size_t equal = piece.find('=');
        const std::string selector = equal == std::string::npos ? "" : trimmed(piece.substr(0, equal));
        const auto levels =
            levelsByModel(trimmed(equal == std::string::npos ? piece : piece.substr(equal + 1)));
        const bool isName =
            selector.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_") ==
            std::string::npos;
        if (!levels || !isName) {
            return std::nullopt;
        }
        list.push_back({selector, *levels});
    }
    return list;
}

uint32_t levelByModel(const std::string &file, const std::string &function)
{
    for (const std::string &selector : {function, file, std::string()}) {
        for (auto entry = listInForce.rbegin(); entry != listInForce.rend(); ++entry) {
            if (entry->selector == selector) {
                return entry->level;
            }
        }
    }
    return 0;
}

// A function of a source file, as the library describes one to the facility.
class Function {
public:
    Function(const std::string &fileName, const std::string &functionName)
        : file(fileName), name(functionName)
    {
        unit = {400, 0x83000000U, {{TRC1_TAG_FILE_NAME, file.c_str()}, {TRC1_TAG_END, nullptr}}};
        block.unit = &unit;
        block.name = name.c_str();
        block.nameLength = static_cast<int32_t>(name.size());
        block.generationWord = &ownGeneration;
    }
    Function(const Function &) = delete;
    Function &operator=(const Function &) = delete;

    const std::string file;
    const std::string name;
    TRC1_EntryBlock block = {};

private:
    TRC1_UnitBlock unit = {};
    const int32_t ownGeneration = 1;
};

void askLevel(const std::string &file, const std::string &name)
{
    Function function(file, name);
    MUST_EQUAL(TRC1_Sync(&function.block), levelByModel(file, name));
    MUST_EQUAL(function.block.level, levelByModel(file, name));
    MUST_EQUAL(function.block.generation, *function.block.generationWord);
}

// What the facility has written to its file since the last call, in lines. Every line must have an end.
std::vector<std::string> takeOutput(int descriptor)
{
    const off_t size = lseek(descriptor, 0, SEEK_END);
    std::string text(static_cast<size_t>(size), '\0');
    MUST(pread(descriptor, text.data(), text.size(), 0) == size);
    MUST(ftruncate(descriptor, 0) == 0);
    std::vector<std::string> lines = split(text, '\n');
    MUST_EQUAL(lines.back(), "");
    lines.pop_back();
    return lines;
}

// What follows time, process, source file and line.
std::string behind(const std::string &place, const std::string &line)
{
    const size_t found = line.find(place);
    MUST(found != std::string::npos);
    return line.substr(found + place.size());
}

std::string visibleByModel(std::string text)
{
    if (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    std::string result;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        char escape[8] = {character, '\0'};
        if (byte == '\n' || byte == '\r') {
            std::snprintf(escape, sizeof escape, "\\%c", byte == '\n' ? 'n' : 'r');
        } else if ((byte < 0x20 && byte != '\t') || byte == 0x7F) {
            std::snprintf(escape, sizeof escape, "\\x%02X", byte);
        }
        result += escape;
    }
    return result;
}

void configure(const std::string &text, int descriptor, const std::string &file)
{
    const auto list = listByModel(text);
    const ExactBuffer levels = ExactBuffer::ofText(text);
    MUST_EQUAL(TRC1_Configure(levels.text(), "/nonexistent/trace"), -1);
    takeOutput(descriptor);
    const int32_t result = TRC1_Configure(levels.text(), file.c_str());
    MUST_EQUAL(result, list ? 0 : -1);
    MUST_EQUAL(takeOutput(descriptor).size(),
               list ? size_t{0} : size_t{1}); // one report names all that is malformed
    if (list) {
        listInForce = *list;
    }
    askLevel("some_file", "SomeFunction");
    for (const Entry &entry : listInForce) {
        askLevel("some_file", entry.selector);
        askLevel(entry.selector, "SomeFunction");
    }
}

void writeMessages(const std::string &text, int descriptor)
{
    Function function(OwnFile, "OwnFunction");
    const std::string place = std::string(" ") + OwnFile + ":77 OwnFunction ";
    const std::string shown = text.c_str();
    const ExactBuffer message = ExactBuffer::ofText(shown);
    TRC1_Printf(&function.block, 77, "%s", message.text());
    std::vector<std::string> lines = takeOutput(descriptor);
    MUST_EQUAL(lines.size(), size_t{1});
    MUST_EQUAL(behind(place, lines[0]), visibleByModel(shown));

    const ExactBuffer bytes = ExactBuffer::ofBytes(text);
    TRC1_Dump(&function.block, 77, bytes.bytes(), static_cast<int32_t>(text.size()), "%02.2X");
    lines = takeOutput(descriptor);
    std::string digits;
    for (const std::string &line : lines) {
        const std::string items = behind(place, line);
        digits += text.empty() ? "" : items.substr(items.find(':') + 1);
    }
    std::string expected;
    for (const char character : text) {
        char item[8];
        std::snprintf(item, sizeof item, " %02X", static_cast<unsigned char>(character));
        expected += item;
    }
    MUST_EQUAL(digits, expected);
    MUST_EQUAL(lines.size(),
               text.empty() ? size_t{1} : (text.size() + 15) / 16); // no byte: a line that says so

    const auto value = static_cast<intptr_t>(text.size());
    TRC1_Event(&function.block, 77, TRC1_EVENT_ENTRY);
    TRC1_Event(&function.block, 77, TRC1_EVENT_EXIT_VALUE, value);
    TRC1_Event(&function.block, 77, TRC1_EVENT_EXIT_VALUE, static_cast<intptr_t>(INT64_MAX));
    TRC1_Event(&function.block, 77, TRC1_EVENT_EXIT);
    lines = takeOutput(descriptor);
    MUST_EQUAL(lines.size(), size_t{4});
    MUST_EQUAL(behind(place, lines[0]), "entry");
    MUST_EQUAL(behind(place, lines[1]), "exit " + std::to_string(value));
    MUST_EQUAL(behind(place, lines[2]), sizeof(intptr_t) > 4 ? "exit 0x7fffffffffffffff" : "exit -1");
    MUST_EQUAL(behind(place, lines[3]), "exit");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const int descriptor = memfd_create("fuzz", MFD_CLOEXEC);
    static const std::string file = "/proc/self/fd/" + std::to_string(descriptor);
    static const int32_t begun = TRC1_Configure(nullptr, file.c_str());
    MUST_EQUAL(begun, 0);
    FuzzInput input(data, size, 0);
    if (input.flag()) {
        writeMessages(input.rest(), descriptor);
    } else {
        configure(input.rest().c_str(), descriptor, file);
    }
    return 0;
}
