// A buffer that ends right before a page that may not be touched, so that one byte too far ends the test.
#ifndef DOV0610_TESTS_GUARDED_BUFFER_H
#define DOV0610_TESTS_GUARDED_BUFFER_H

#include <cstddef>
#include <cstring>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

class GuardedBuffer {
public:
    // A buffer of this many bytes, each set to fill.
    explicit GuardedBuffer(size_t size, unsigned char fill = 0xA5) : length(size)
    {
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        mapped = (size + page - 1) / page * page + page;
        void *area = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (area == MAP_FAILED) {
            __builtin_trap();
        }
        base = static_cast<unsigned char *>(area);
        mprotect(base + mapped - page, page, PROT_NONE);
        start = base + mapped - page - size;
        std::memset(start, fill, size);
    }

    // A buffer that holds a text and its terminator, and nothing more.
    explicit GuardedBuffer(const std::string &text) : GuardedBuffer(text.size() + 1)
    {
        std::memcpy(start, text.c_str(), text.size() + 1);
    }

    ~GuardedBuffer() { munmap(base, mapped); }
    GuardedBuffer(const GuardedBuffer &) = delete;
    GuardedBuffer &operator=(const GuardedBuffer &) = delete;

    unsigned char *bytes() { return start; }
    char *text() { return reinterpret_cast<char *>(start); }
    size_t size() const { return length; }

private:
    size_t length;
    size_t mapped = 0;
    unsigned char *base = nullptr;
    unsigned char *start = nullptr;
};

#endif
