// A program in C++ that uses the installed library.
#include <dov0610.h>

#include <cstdio>

int main()
{
    auto *block = static_cast<char *>(DOV0_GetStorage(16));
    if (block == nullptr || DOV0_IsValidPointer(block) != 1 || block[15] != 0) {
        return 1;
    }
    DOV0_FreeStorage(&block);
    std::puts(block == nullptr ? "C++ consumer works" : "C++ consumer fails");
    return block == nullptr ? 0 : 1;
}
