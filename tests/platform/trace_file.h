// A trace file in a folder of its own, and its lines taken apart.
#ifndef DOV0610_TESTS_TRACE_FILE_H
#define DOV0610_TESTS_TRACE_FILE_H

#include "dov0610.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

struct TraceLine {
    std::string time;
    int process = 0;
    int thread = 0;
    std::string file;
    int line = 0;
    std::string function;
    std::string text;
};

class TraceFile {
public:
    TraceFile()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "dov0610-trace-XXXXXX").string();
        folder = mkdtemp(pattern.data());
    }
    ~TraceFile() { std::filesystem::remove_all(folder); }
    TraceFile(const TraceFile &) = delete;
    TraceFile &operator=(const TraceFile &) = delete;

    std::string name() const { return (folder / "trace.log").string(); }
    const std::filesystem::path &directory() const { return folder; }

    // Puts the name into the environment that the facility reads at its first use.
    void nameInEnvironment() const { setenv("DOV_TRACE_FILE", name().c_str(), 1); }

    static std::string contents(const std::string &fileName)
    {
        std::ifstream stream(fileName, std::ios::binary);
        std::ostringstream text;
        text << stream.rdbuf();
        return text.str();
    }

    std::string contents() const { return contents(name()); }

    // The lines, each of which must be laid out as promised.
    static std::vector<TraceLine> linesOf(const std::string &text)
    {
        std::vector<TraceLine> lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            TraceLine parts;
            char time[28] = "";
            char file[64] = "";
            char function[64] = "";
            int end = 0;
            const int found = std::sscanf(line.c_str(), "%27[0-9T:.Z-] %d:%d %63[^: ]:%d %63[^ ]%n", time,
                                          &parts.process, &parts.thread, file, &parts.line, function, &end);
            const auto rest = static_cast<size_t>(end);
            if (found != 6 || std::string(time).size() != 27 || time[26] != 'Z' || line[rest] != ' ') {
                throw std::runtime_error("not laid out as a trace line: " + line);
            }
            parts.time = time;
            parts.file = file;
            parts.function = function;
            parts.text = line.substr(rest + 1);
            lines.push_back(parts);
        }
        return lines;
    }

    std::vector<TraceLine> lines() const { return linesOf(contents()); }

    // "function text" of each line.
    std::vector<std::string> texts() const
    {
        std::vector<std::string> found;
        for (const TraceLine &line : lines()) {
            found.push_back(line.function + " " + line.text);
        }
        return found;
    }

private:
    std::filesystem::path folder;
};

// Trace control data as a host's own code would keep it.
struct HostFunction {
    TRC1_UnitBlock unit;
    int32_t generationWord = 1;
    TRC1_EntryBlock block;

    HostFunction(const char *file, const char *function)
        : unit{400, 0x83000000U, {{TRC1_TAG_FILE_NAME, file}, {TRC1_TAG_END, nullptr}, {}, {}, {}, {}}},
          block{&unit, function, 0, 0, 1, &generationWord, 512, 0, 0, {0, 0}}
    {
    }
};

// Each operation that writes must leave errno as its caller had it, whatever it meets.
inline void expectErrnoKept(TRC1_EntryBlock &block)
{
    errno = EPERM;
    TRC1_Printf(&block, 1, "x\n");
    EXPECT_EQ(errno, EPERM);
    TRC1_Event(&block, 1, TRC1_EVENT_ENTRY);
    EXPECT_EQ(errno, EPERM);
    TRC1_Dump(&block, 1, "x", 1, "%02.2X");
    EXPECT_EQ(errno, EPERM);
}

#endif
