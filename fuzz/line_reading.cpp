// Lines of files in all encodings, read with any buffer from a stream that gives its bytes in pieces of any size, may
// fail, and may not be able to seek. The model is a position in a string.
// Functions: DOV0_Fgets DOV0_fgets DOV0_LNG2_GetFileEncodingType DOV0_LNG2_GetFileEncoding
#include "fuzz_target.h"
#include "icu_model.h"
#include "utf_model.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string_view>
#include <sys/mman.h>
#include <unicode/ucnv.h>
#include <unistd.h>

namespace {

struct Encoding {
    const char *name; // null for none
    uint16_t type;
    const char *converter; // ICU's name; null when it has none
};

// A name without an order is read as big-endian. Some names come with a type that is not theirs.
constexpr Encoding Encodings[] = {
    {"UTF-16", 0x02, "UTF-16BE"},
    {"UTF-16BE", 0x12, "UTF-16BE"},
    {"UTF-16LE", 0x0A, "UTF-16LE"},
    {"UTF-32", 0x04, "UTF-32BE"},
    {"UTF-32BE", 0x14, "UTF-32BE"},
    {"UTF-32LE", 0x0C, "UTF-32LE"},
    {"UTF-8", 0x00, "UTF-8"},
    {"ISO-8859-1", 0x00, "ISO-8859-1"},
    {"windows-1252", 0x00, "windows-1252"},
    {nullptr, 0x12, nullptr},
    {"no such encoding", 0x00, nullptr},
    {"no such encoding", 0x0A, nullptr},
    {"UTF-16LE", 0x1A, "UTF-16LE"},
    {"UTF-8", 0x06, "UTF-8"},
    {"UTF-8", 0x12, "UTF-8"},
};

// What a stream gives and how.
struct File {
    std::string bytes;
    size_t position = 0;
    size_t piece = 1;          // bytes that one read gives at most
    size_t failsAt = SIZE_MAX; // reading from here on is an error
    bool canSeek = true;
};

ssize_t readFile(void *cookie, char *buffer, size_t size)
{
    File &file = *static_cast<File *>(cookie);
    if (file.position >= file.failsAt) {
        errno = EIO;
        return -1;
    }
    const size_t end = std::min(file.bytes.size(), file.failsAt);
    const size_t count = file.position < end ? std::min({size, file.piece, end - file.position}) : 0;
    std::memcpy(buffer, file.bytes.data() + std::min(file.position, file.bytes.size()), count);
    file.position += count;
    return static_cast<ssize_t>(count);
}

int seekFile(void *cookie, off64_t *offset, int whence)
{
    File &file = *static_cast<File *>(cookie);
    const auto size = static_cast<off64_t>(file.bytes.size());
    const auto here = static_cast<off64_t>(file.position);
    const off64_t target = *offset + (whence == SEEK_SET ? 0 : whence == SEEK_CUR ? here : size);
    if (!file.canSeek || target < 0) {
        errno = file.canSeek ? EINVAL : ESPIPE;
        return -1;
    }
    file.position = static_cast<size_t>(target);
    *offset = target;
    return 0;
}

struct CloseStream {
    void operator()(FILE *stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<FILE, CloseStream>;

Stream openFile(File &file)
{
    Stream stream(fopencookie(&file, "r", {readFile, nullptr, seekFile, nullptr}));
    MUST(stream != nullptr);
    return stream;
}

// The stream of the model: all there is to read, and where.
struct Reader {
    std::string_view bytes;
    bool canSeek;
    size_t position = 0;

    std::string take(size_t most)
    {
        const std::string taken(position < bytes.size() ? bytes.substr(position, most) : std::string_view());
        position += taken.size();
        return taken;
    }
};

std::string newlineByModel(uint16_t type)
{
    switch (type) {
    case 0x02:
    case 0x12:
        return std::string("\0\n", 2);
    case 0x0A:
        return std::string("\n\0", 2);
    case 0x04:
    case 0x14:
        return std::string("\0\0\0\n", 4);
    case 0x0C:
        return std::string("\n\0\0\0", 4);
    default:
        return "\n";
    }
}

// The first unit that is a newline, by the search of DOV0_FindChar: a unit counts only when its first byte 0A is at the
// place that it has in the newline.
size_t newlineIn(const std::string &bytes, const std::string &newline)
{
    for (size_t i = 0; i + newline.size() <= bytes.size(); i += newline.size()) {
        if (bytes.compare(i, newline.size(), newline) == 0) {
            return i;
        }
    }
    return std::string::npos;
}

std::string lineByModel(Reader &reader, int32_t bufferSize, uint16_t type)
{
    const int32_t readSize = bufferSize < 64 ? bufferSize / 4 * 4 : 64;
    const std::string newline = newlineByModel(type);
    std::string line;
    while (static_cast<int32_t>(line.size()) <= bufferSize - readSize) {
        const std::string chunk = reader.take(static_cast<size_t>(readSize));
        if (chunk.empty()) {
            break;
        }
        const size_t found = newlineIn(chunk, newline);
        if (found == std::string::npos) {
            line += chunk;
            continue;
        }
        line += chunk.substr(0, found + newline.size());
        if (reader.canSeek) { // exact only for a line that ends in its first chunk
            reader.position += line.size() - chunk.size();
        }
        break;
    }
    return line;
}

// A line up to its newline, of which the library sees the part before a zero byte.
std::string plainLineByModel(Reader &reader, int32_t bufferSize)
{
    std::string line;
    while (static_cast<int32_t>(line.size()) < bufferSize - 1 && (line.empty() || line.back() != '\n')) {
        const std::string byte = reader.take(1);
        if (byte.empty()) {
            break;
        }
        line += byte;
    }
    return line;
}

void readLines(File &file, const Encoding &encoding, int32_t bufferSize, bool convertToUTF8, int32_t lines)
{
    Reader reader = {std::string_view(file.bytes).substr(0, file.failsAt), file.canSeek};
    const Stream stream = openFile(file);
    const bool isPlain = encoding.type == 0 || encoding.name == nullptr;
    const bool converts = convertToUTF8 && encoding.name != nullptr && std::string(encoding.name) != "UTF-8";
    for (int32_t i = 0; i < lines; ++i) {
        const ExactBuffer buffer(static_cast<size_t>(std::max(bufferSize, 0)));
        int32_t count = -1;
        const char *const result = DOV0_Fgets(buffer.text(), bufferSize, stream.get(), &count, encoding.name,
                                              encoding.type, convertToUTF8 ? 1 : 0);
        if (isPlain && bufferSize < 2) { // nothing can be read into it
            return;
        }
        std::string line =
            isPlain ? plainLineByModel(reader, bufferSize) : lineByModel(reader, bufferSize, encoding.type);
        const bool atEnd = line.empty();
        if (isPlain) {
            if (reader.position >= file.failsAt && (atEnd || line.back() != '\n')) {
                return; // whether the system's fgets gives what it read before an error is its own matter
            }
            line = line.c_str();
        }
        MUST_EQUAL(static_cast<size_t>(count), line.size());
        if (atEnd) {
            MUST(result == nullptr);
            return;
        }
        if (!converts) {
            MUST(result == buffer.text());
            MUST_EQUAL(buffer.contents().substr(0, line.size()), line);
            MUST(!isPlain || buffer.text()[line.size()] == '\0');
        } else if (encoding.converter == nullptr) {
            MUST(result == nullptr);
        } else {
            const std::string converted = utf8ByModel(IcuConverter(encoding.converter).toUnicode(line));
            const size_t capacity = std::min<size_t>(buffer.size(), DOV0_LINE_CONVERSION_SIZE);
            const std::string stored = converted.substr(0, capacity);
            MUST(result == buffer.text());
            MUST_EQUAL(buffer.contents().substr(0, capacity),
                       stored + std::string(capacity - stored.size(), '\0'));
        }
    }
}

// The simple reader. Its buffer is looked at as a whole, so what is behind the line counts too.
void readRecords(File &file, int32_t size, int32_t lines)
{
    Reader reader = {std::string_view(file.bytes), file.canSeek};
    file.failsAt = SIZE_MAX;
    const Stream stream = openFile(file);
    const ExactBuffer buffer(static_cast<size_t>(std::max(size, 0)), '\0');
    for (int32_t i = 0; i < lines; ++i) {
        std::string expected = buffer.contents();
        const char *const result = DOV0_fgets(buffer.text(), size, stream.get());
        const std::string line = plainLineByModel(reader, size);
        if (size < 2 || line.empty()) {
            MUST(size == 1 || result == nullptr);
            return;
        }
        expected.replace(0, line.size() + 1, line + '\0');
        int32_t markLength = 0;
        UErrorCode error = U_ZERO_ERROR;
        const char *const mark = ucnv_detectUnicodeSignature(expected.data(), size, &markLength, &error);
        if (mark != nullptr && std::string(mark) != "UTF-8") {
            MUST(result == nullptr);
            continue;
        }
        const std::string record = line.c_str();
        MUST(result == buffer.text());
        MUST_EQUAL(std::string(result), mark != nullptr ? record.substr(3) : record);
    }
}

// What the mark at the beginning of a file says.
void detect(const File &file)
{
    if (file.bytes.empty()) {
        return; // the library keeps the stream of such a file open
    }
    static const int descriptor = memfd_create("fuzz", MFD_CLOEXEC);
    MUST(ftruncate(descriptor, 0) == 0);
    MUST(pwrite(descriptor, file.bytes.data(), file.bytes.size(), 0) ==
         static_cast<ssize_t>(file.bytes.size()));
    static const std::string path = "/proc/self/fd/" + std::to_string(descriptor);

    const std::string head = file.bytes.substr(0, 20);
    int32_t expectedLength = 0;
    UErrorCode error = U_ZERO_ERROR;
    const char *const expected =
        ucnv_detectUnicodeSignature(head.data(), static_cast<int32_t>(head.size()), &expectedLength, &error);
    int32_t length = -1;
    unsigned char mark[4] = {1, 2, 3, 4};
    const char *const result = DOV0_LNG2_GetFileEncoding(path.c_str(), &length, mark);
    MUST_EQUAL(std::string(result != nullptr ? result : "none"), expected != nullptr ? expected : "none");
    MUST_EQUAL(length, expectedLength);
    std::string expectedMark = head.substr(0, static_cast<size_t>(std::min(expectedLength, 4)));
    expectedMark.resize(4, '\0');
    MUST_EQUAL(std::string(reinterpret_cast<char *>(mark), 4), expectedMark);
    MUST(DOV0_LNG2_GetFileEncoding("/nonexistent/file", &length, mark) == nullptr);
}

void nameTypes(const std::string &name)
{
    for (const Encoding &encoding : Encodings) {
        if (encoding.name != nullptr && name == encoding.name) { // its first row has the type of the name
            MUST_EQUAL(DOV0_LNG2_GetFileEncodingType(name.c_str()), encoding.type);
            return;
        }
    }
    MUST_EQUAL(DOV0_LNG2_GetFileEncodingType(name.c_str()), uint16_t{0});
    MUST_EQUAL(DOV0_LNG2_GetFileEncodingType(nullptr), uint16_t{0});
}

} // namespace

void fuzzOneInput(FuzzInput &input)
{
    const int32_t kind = input.number(0, 7);
    const Encoding &encoding = Encodings[input.number(0, std::size(Encodings) - 1)];
    const bool convertToUTF8 = input.flag();
    const int32_t chosenSize = input.number(0, 300);
    const int32_t bufferSize = chosenSize < 300 ? chosenSize : DOV0_LINE_CONVERSION_SIZE + 100;
    File file;
    file.piece = static_cast<size_t>(input.number(1, 256));
    const int32_t failure = input.number(0, 255);
    file.failsAt = failure < 200 ? SIZE_MAX : static_cast<size_t>(input.number(0, 255));
    file.canSeek = failure % 8 != 7;
    file.bytes = input.rest();
    if (kind < 5) {
        readLines(file, encoding, bufferSize, convertToUTF8, 20);
    } else if (kind == 5) {
        readRecords(file, bufferSize, 20);
    } else if (kind == 6) {
        detect(file);
    } else {
        nameTypes(encoding.name != nullptr && convertToUTF8 ? encoding.name : file.bytes.c_str());
    }
}
