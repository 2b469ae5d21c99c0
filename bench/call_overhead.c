/* One kind of call, over and over, for counting its instructions. Usage: call_overhead e|f|p|c|s COUNT */
#include <dov0610.h>

#include <stdlib.h>

/* What the predicate would be without a frame and without a shared library around it. */
__attribute__((noinline)) static int32_t plainPredicate(const void *pointer)
{
    __asm__ volatile("" ::: "memory");
    return pointer != NULL;
}

int main(int argc, char **argv)
{
    if (argc != 3) {
        return 2;
    }
    const long count = strtol(argv[2], NULL, 10);
    long sum = 0;
    switch (argv[1][0]) {
    case 'e': /* an empty loop */
        for (long i = 0; i < count; ++i) {
            __asm__ volatile("" : "+r"(sum));
            sum += 1;
        }
        break;
    case 'f': /* a plain function */
        for (long i = 0; i < count; ++i) {
            sum += plainPredicate(&sum);
        }
        break;
    case 'p': /* a pointer predicate */
        for (long i = 0; i < count; ++i) {
            sum += DOV0_IsValidPointer(&sum);
        }
        break;
    case 'c': /* calloc */
        for (long i = 0; i < count; ++i) {
            void *block = calloc(1, 64);
            __asm__ volatile("" : "+r"(block) : : "memory");
            free(block);
            sum += 1;
        }
        break;
    case 's': /* working storage */
        for (long i = 0; i < count; ++i) {
            void *block = DOV0_GetStorage(64);
            DOV0_FreeStorage(&block);
            sum += 1;
        }
        break;
    default:
        return 2;
    }
    return sum == count ? 0 : 1;
}
