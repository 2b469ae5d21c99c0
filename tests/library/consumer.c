/* A program in C that uses the installed library. */
#include <dov0610.h>

#include <stdio.h>

int main(void)
{
    char *block = DOV0_GetStorage(16);
    if (block == NULL || DOV0_IsValidPointer(block) != 1 || block[15] != 0) {
        return 1;
    }
    DOV0_FreeStorage(&block);
    puts(block == NULL ? "C consumer works" : "C consumer fails");
    return block == NULL ? 0 : 1;
}
