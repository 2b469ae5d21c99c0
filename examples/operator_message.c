/*
 * Shows an operator message from the message catalogue, in the language of the locale, on standard output.
 *
 *     DOVP_RB_PATH=build/messages LC_ALL=de_DE.UTF-8 operator_message S 403 192.0.2.1 genErr 2
 */
#include "dov0610.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const char classLetters[] = "AGLSV";
static const int32_t classes[] = {DOV0_MESSAGE_CLASS_A, DOV0_MESSAGE_CLASS_G, DOV0_MESSAGE_CLASS_L,
                                  DOV0_MESSAGE_CLASS_S, DOV0_MESSAGE_CLASS_V};

int main(int argc, char **argv)
{
    const char *letter = argc > 2 && strlen(argv[1]) == 1 ? strchr(classLetters, argv[1][0]) : NULL;
    char *end = NULL;
    const long number = argc > 2 ? strtol(argv[2], &end, 10) : 0;
    if (letter == NULL || argc > 8 || end == argv[2] || *end != '\0' || number < 0 || number > 9999999) {
        fprintf(stderr, "usage: operator_message A|G|L|S|V NUMBER [PARAMETER...] (up to five)\n");
        return 2;
    }
    const char *parameter[5] = {NULL, NULL, NULL, NULL, NULL}; /* null is shown as "?" */
    for (int i = 3; i < argc; ++i) {
        parameter[i - 3] = argv[i];
    }
    char message[4096];
    DOV0_LNG2_Message(classes[letter - classLetters], message, sizeof message, (int32_t)number, parameter[0],
                      parameter[1], parameter[2], parameter[3], parameter[4]);
    if (message[0] == '\0') {
        fprintf(stderr, "operator_message: there is no such message; DOV_TRACE=error tells why\n");
        return 1;
    }
    puts(message);
    return 0;
}
