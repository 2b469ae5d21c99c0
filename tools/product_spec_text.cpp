#include "product_spec_text.h"

#include "dov0610.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace {

[[noreturn]] void fail(const std::string &name, int error)
{
    throw std::runtime_error(name + ": " + std::strerror(error));
}

// A file being written beside its final place; it is gone again unless it is put there.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string &target)
        : name(target + ".XXXXXX"), descriptor(mkostemp(name.data(), O_CLOEXEC))
    {
        if (descriptor < 0) {
            fail(target, errno);
        }
    }

    ~TemporaryFile()
    {
        if (descriptor >= 0) {
            close(descriptor);
        }
        if (!name.empty()) {
            unlink(name.c_str());
        }
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    void write(std::string_view bytes) const
    {
        while (!bytes.empty()) {
            const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
            if (written < 0 && errno != EINTR) {
                fail(name, errno);
            }
            bytes.remove_prefix(written > 0 ? static_cast<size_t>(written) : 0);
        }
    }

    void moveTo(const std::string &target, mode_t mode)
    {
        if (fchmod(descriptor, mode) != 0 || fsync(descriptor) != 0) {
            fail(name, errno);
        }
        const int closing = descriptor;
        descriptor = -1;
        if (close(closing) != 0 || rename(name.c_str(), target.c_str()) != 0) {
            fail(target, errno);
        }
        name.clear();
    }

private:
    std::string name;
    int descriptor;
};

mode_t modeOfNewFiles()
{
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

int32_t seedOf(const std::string &record, uint32_t number)
{
    return static_cast<int32_t>(static_cast<uint32_t>(record.size()) * number);
}

} // namespace

std::vector<Piece> piecesOf(const std::string &contents)
{
    std::vector<Piece> pieces;
    size_t line = 1;
    bool continues = false;
    for (size_t start = 0; start < contents.size();) {
        const size_t end = contents.find('\n', start);
        const size_t length =
            std::min(end == std::string::npos ? contents.size() - start : end + 1 - start, RecordLength);
        pieces.push_back({contents.substr(start, length), line, continues});
        continues = pieces.back().bytes.back() != '\n';
        line += continues ? 0 : 1;
        start += length;
    }
    return pieces;
}

std::string enciphered(std::string record, uint32_t number)
{
    DOV0_EncipherRecord(record.data(), seedOf(record, number));
    return record;
}

std::string deciphered(std::string record, uint32_t number)
{
    DOV0_DecipherMetaRecord(record.data(), seedOf(record, number));
    return record.substr(0, record.find('\0')); // what follows a zero byte is not read either
}

std::string readFile(const std::string &name)
{
    const int descriptor = open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        fail(name, errno);
    }
    std::string contents;
    char block[65536];
    ssize_t count = 0;
    while ((count = read(descriptor, block, sizeof block)) > 0 || (count < 0 && errno == EINTR)) {
        contents.append(block, count > 0 ? static_cast<size_t>(count) : 0);
    }
    const int error = errno;
    close(descriptor);
    if (count < 0) {
        fail(name, error);
    }
    return contents;
}

void replaceFile(const std::string &name, const std::string &contents)
{
    std::string target = name;
    mode_t mode = modeOfNewFiles();
    struct stat found = {};
    if (stat(name.c_str(), &found) == 0) {
        if (!S_ISREG(found.st_mode)) {
            throw std::runtime_error(name + ": is no regular file");
        }
        target = std::filesystem::canonical(name); // a link stays one
        mode = found.st_mode & 07777;
    }
    TemporaryFile file(target);
    file.write(contents);
    file.moveTo(target, mode);
}
