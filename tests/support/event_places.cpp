// The line of an event must be the place in the sources where its function is entered or left.
#include "support/trace_recorder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <mutex>

namespace {

std::vector<std::string> linesOf(const std::string &unit)
{
    std::vector<std::string> lines;
    for (const auto &folder : std::filesystem::directory_iterator(SOURCES)) {
        std::ifstream stream(folder.path() / (unit + ".cpp"));
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
    }
    return lines;
}

// Empty where there is no such line.
std::string sourceLine(const std::string &unit, int32_t number)
{
    static std::mutex lock;
    static auto *const files = new std::map<std::string, std::vector<std::string>>;
    const std::lock_guard<std::mutex> guard(lock);
    auto found = files->find(unit);
    if (found == files->end()) {
        found = files->emplace(unit, linesOf(unit)).first;
    }
    const auto index = static_cast<size_t>(number) - 1;
    return index < found->second.size() ? found->second[index] : "";
}

} // namespace

void checkEventPlace(const TRC1_EntryBlock &block, int32_t line, int32_t kind)
{
    const std::string unit = static_cast<const char *>(block.unit->entries[0].value);
    const std::string text = sourceLine(unit, line);
    const char *const place = kind == TRC1_EVENT_ENTRY ? "Frame frame(" : "leave";
    EXPECT_NE(text.find(place), std::string::npos)
        << unit << ":" << line << " " << block.name << ", event " << kind << ": " << text;
}
