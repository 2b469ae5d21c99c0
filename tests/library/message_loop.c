/* Makes the same operator message again and again, and says on standard error when the first one is made. */
#include "dov0610.h"

#include <stdio.h>
#include <string.h>

enum { Calls = 100000 };

int main(void)
{
    char first[256];
    DOV0_LNG2_Message(DOV0_MESSAGE_CLASS_A, first, sizeof first, 100, "a", "b", NULL, NULL, NULL);
    if (first[0] == '\0') {
        return 1;
    }
    fputs("first message made\n", stderr);
    for (int i = 1; i < Calls; ++i) {
        char message[256];
        DOV0_LNG2_Message(DOV0_MESSAGE_CLASS_A, message, sizeof message, 100, "a", "b", NULL, NULL, NULL);
        if (strcmp(message, first) != 0) {
            return 1;
        }
    }
    printf("%d messages: %s\n", Calls, first);
    return 0;
}
