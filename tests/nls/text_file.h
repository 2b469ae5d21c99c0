// A file of given bytes for the length of a test.
#ifndef DOV0610_TESTS_TEXT_FILE_H
#define DOV0610_TESTS_TEXT_FILE_H

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

class TextFile {
public:
    explicit TextFile(const std::string &bytes)
    {
        char name[] = "/tmp/dov0_text_XXXXXX";
        const int descriptor = mkstemp(name);
        filePath = name;
        std::FILE *file = fdopen(descriptor, "wb");
        std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
    }
    ~TextFile() { std::remove(filePath.c_str()); }
    TextFile(const TextFile &) = delete;
    TextFile &operator=(const TextFile &) = delete;

    const char *path() const { return filePath.c_str(); }

private:
    std::string filePath;
};

// A stream on such a file.
class TextStream {
public:
    explicit TextStream(const std::string &bytes) : file(bytes), opened(std::fopen(file.path(), "rb")) {}
    ~TextStream() { std::fclose(opened); }
    TextStream(const TextStream &) = delete;
    TextStream &operator=(const TextStream &) = delete;

    operator std::FILE *() const { return opened; }
    const char *path() const { return file.path(); }

private:
    TextFile file;
    std::FILE *opened;
};

// ASCII text in one of the six encodings of text files, without a mark.
inline std::string encoded(const std::string &ascii, const std::string &encoding)
{
    const bool wide = encoding.find("32") != std::string::npos;
    const bool little = encoding.find("LE") != std::string::npos;
    if (encoding.find("16") == std::string::npos && !wide) {
        return ascii;
    }
    std::string bytes;
    for (const char c : ascii) {
        const std::string zeros(wide ? 3 : 1, '\0');
        bytes += little ? c + zeros : zeros + c;
    }
    return bytes;
}

#endif
