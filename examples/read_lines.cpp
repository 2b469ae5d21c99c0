// Prints a text file, whatever its encoding, as lines of UTF-8.
//
//     read_lines FILE [ENCODING]
//
// A byte order mark tells the encoding; a file without one is taken for ENCODING, or for UTF-8.
#include "dov0610.h"

#include <cstdio>
#include <memory>
#include <string>

namespace {

struct CloseFile {
    void operator()(FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, CloseFile>;

struct Encoding {
    std::string name;
    uint16_t type;
    int32_t markLength;
};

Encoding encodingOf(const char *path, const char *withoutMark)
{
    int32_t markLength = 0;
    unsigned char mark[DOV0_BYTE_ORDER_MARK_SIZE];
    const char *name = DOV0_LNG2_GetFileEncoding(path, &markLength, mark);
    if (name == nullptr) {
        name = withoutMark;
    }
    return {name, DOV0_LNG2_GetFileEncodingType(name), markLength};
}

bool endsInNewline(const std::string &line, uint16_t type)
{
    const size_t width = (type & DOV0_UTF32) != 0 ? 4 : (type & DOV0_UTF16) != 0 ? 2 : 1;
    if (line.size() < width) {
        return false;
    }
    std::string newline(width, '\0');
    newline[(type & DOV0_UTF_LITTLE_ENDIAN) != 0 ? 0 : width - 1] = '\n';
    return line.compare(line.size() - width, width, newline) == 0;
}

// Reads a line as the file has it, however long it is. False at the end of the file.
bool readLine(FILE *file, const Encoding &encoding, std::string &line)
{
    line.clear();
    char piece[1024];
    int32_t bytes = 0;
    do {
        const long start = std::ftell(file);
        if (DOV0_Fgets(piece, sizeof piece, file, &bytes, encoding.name.c_str(), encoding.type, 0) ==
            nullptr) {
            break;
        }
        line.append(piece, static_cast<size_t>(bytes));
        if (encoding.type != DOV0_UTF_BYTES) { // behind a long line the stream stands too far
            std::fseek(file, start + bytes, SEEK_SET);
        }
    } while (!endsInNewline(line, encoding.type));
    return !line.empty();
}

// The line in UTF-8 without its line end. False when the encoding is unknown.
bool toUTF8(const std::string &line, const Encoding &encoding, std::string &text)
{
    char16_t *units = nullptr;
    int32_t count = 0;
    if (DOV0_ConvertDataToUnicode(encoding.name.c_str(), line.data(), static_cast<int32_t>(line.size()),
                                  &units, &count) == 0) {
        return false;
    }
    while (count > 0 && (units[count - 1] == u'\n' || units[count - 1] == u'\r')) {
        --count;
    }
    text.assign(static_cast<size_t>(count) * 3 + 1, '\0'); // no unit takes more than three bytes
    text.resize(static_cast<size_t>(
        DOV0_ConvertUnicodeToUTF8(units, count, text.data(), static_cast<int32_t>(text.size()))));
    DOV0_FreeStorage(&units);
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr, "usage: read_lines FILE [ENCODING]\n");
        return 2;
    }
    const Encoding encoding = encodingOf(argv[1], argc == 3 ? argv[2] : "UTF-8");
    const File file(std::fopen(argv[1], "rb"));
    if (file == nullptr || std::fseek(file.get(), encoding.markLength, SEEK_SET) != 0) {
        std::fprintf(stderr, "read_lines: %s cannot be read\n", argv[1]);
        return 1;
    }
    std::string line;
    std::string text;
    while (readLine(file.get(), encoding, line)) {
        if (!toUTF8(line, encoding, text)) {
            std::fprintf(stderr, "read_lines: a line cannot be converted from %s\n", encoding.name.c_str());
            return 1;
        }
        std::printf("%s\n", text.c_str());
    }
    if (std::ferror(file.get()) != 0) {
        std::fprintf(stderr, "read_lines: %s cannot be read to its end\n", argv[1]);
        return 1;
    }
    return 0;
}
