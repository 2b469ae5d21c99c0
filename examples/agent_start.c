/*
 * agent_start - how an agent process starts with this library: it puts its product specification into effect, asks
 * for values and changes one. Before that it shows what happens with a file that is refused.
 *
 * Usage: agent_start FILE REFUSED_FILE [INSTANCE]
 *
 * Both files are made with "dovpsf compile". Build this program with
 *
 *     cc agent_start.c -o agent_start $(pkg-config --cflags --libs dov0610)
 */
#include <dov0610.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

/* The part of a trace line behind the function's name; null when it is another function's. */
static const char *messageOf(const char *line, const char *function)
{
    const char *name = strstr(line, function);
    return name != NULL ? name + strlen(function) + 1 : NULL;
}

/* Prints what initialisation added to the trace: every line, or only what is wrong. */
static void printTrace(FILE *trace, int onlyErrors)
{
    char line[1024];
    clearerr(trace); /* the end of the last time is not the end any more */
    while (fgets(line, sizeof line, trace) != NULL) {
        const char *message = messageOf(line, "DOV0_InitializeProductSpec");
        if (message != NULL && (!onlyErrors || message[0] == '*')) {
            printf("    %s", message);
        }
    }
}

/* An operator names the file for the process; this program does it itself, before there are other threads. */
static void nameFile(const char *path)
{
    const char *slash = strrchr(path, '/');
    if (slash == NULL) {
        setenv("DOV_PRODSPEC_PATH", "./", 1);
        setenv("DOV_PRODSPEC_NAME", path, 1);
        return;
    }
    char folder[DOV0_PATH_NAME_SIZE];
    snprintf(folder, sizeof folder, "%.*s", (int)(slash + 1 - path),
             path); /* its separator at the end belongs to it */
    setenv("DOV_PRODSPEC_PATH", folder, 1);
    setenv("DOV_PRODSPEC_NAME", slash + 1, 1);
}

static void printValue(const char *name, int32_t index)
{
    const char *value = DOV0_QueryProductSpec(index); /* the library's own, not to be freed */
    printf("    %s = %s\n", name, value != NULL ? value : "(unset)");
}

static int start(const char *file, const char *refusedFile, const char *instance, FILE *trace)
{
    printf("A packaged solution that lacks required keywords:\n");
    nameFile(refusedFile);
    if (DOV0_InitializeProductSpec(instance, 0)) {
        fprintf(stderr, "agent_start: %s is not refused\n", refusedFile);
        return EXIT_FAILURE;
    }
    printTrace(trace, 1);

    /* A failed call may be repeated. */
    printf("The agent, instance %s:\n", instance);
    nameFile(file);
    const int32_t initialized = DOV0_InitializeProductSpec(instance, 0);
    printTrace(trace, 0);
    if (!initialized) {
        return EXIT_FAILURE;
    }

    printf("Query:\n");
    printValue("DOV0_PSF_PRODUCT_NAME", DOV0_PSF_PRODUCT_NAME);
    printValue("DOV0_PSF_DCH_PORT_NUMBER", DOV0_PSF_DCH_PORT_NUMBER);
    printValue("DOV0_PSF_INITCNFG_FILE_NAME", DOV0_PSF_INITCNFG_FILE_NAME);
    printValue("DOV0_PSF_PACKAGED_SOLUTION", DOV0_PSF_PACKAGED_SOLUTION);

    printf("Update:\n");
    if (!DOV0_UpdateProductSpec(DOV0_PSF_DCH_PORT_NUMBER, "2020") ||
        !DOV0_UpdateProductSpec(DOV0_PSF_ENABLE_DPLOG, "N")) {
        return EXIT_FAILURE;
    }
    printValue("DOV0_PSF_DCH_PORT_NUMBER", DOV0_PSF_DCH_PORT_NUMBER);
    printValue("DOV0_PSF_ENABLE_DPLOG", DOV0_PSF_ENABLE_DPLOG); /* off reads as unset */
    return EXIT_SUCCESS;
}

int main(int argc, char **argv)
{
    if (argc != 3 && argc != 4) {
        fprintf(stderr, "usage: agent_start FILE REFUSED_FILE [INSTANCE]\n");
        return 2;
    }

    /* The trace tells the reason of every failure. An operator switches it with DOV_TRACE and DOV_TRACE_FILE. */
    char traceName[] = "/tmp/agent_start.XXXXXX";
    const int descriptor = mkstemp(traceName);
    FILE *trace = descriptor >= 0 ? fdopen(descriptor, "r") : NULL;
    if (trace == NULL || TRC1_Configure("DOV0_InitializeProductSpec=config", traceName) != 0) {
        perror("agent_start: no file for the trace");
        return EXIT_FAILURE;
    }

    const int status = start(argv[1], argv[2], argc == 4 ? argv[3] : "inst1", trace);

    TRC1_Configure(NULL, NULL); /* nothing is traced from here on */
    fclose(trace);
    unlink(traceName);
    return status;
}
