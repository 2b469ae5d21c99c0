// Feeds the files of a corpus to a fuzz target without libFuzzer: "replay FOLDER".
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

int main(int argumentCount, char **arguments)
{
    if (argumentCount != 2) {
        std::fprintf(stderr, "usage: %s CORPUS_FOLDER\n", arguments[0]);
        return 2;
    }
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::directory_iterator(arguments[1])) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end()); // the same order everywhere
    if (files.empty()) {
        std::fprintf(stderr, "%s: no file in it\n", arguments[1]);
        return 1;
    }
    for (const std::filesystem::path &file : files) {
        std::ifstream stream(file, std::ios::binary);
        std::vector<char> bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
        if (!stream.good() && !stream.eof()) {
            std::fprintf(stderr, "%s: cannot be read\n", file.c_str());
            return 1;
        }
        std::fprintf(stderr, "%s\n", file.filename().c_str()); // the last one shown ended the process
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    }
    std::fprintf(stderr, "%zu inputs\n", files.size());
    return 0;
}
