/*
 * dov0610_platform.h - the contract of the platform operations of libdov0610.so.
 *
 * The library calls the operations below through the dynamic symbol table. It comes with an
 * implementation of each; a host process or a preloaded library that defines one of them under the
 * same name replaces the one supplied here. Everything in this header has C linkage, default
 * visibility and the symbol version platform_1.0.
 */
#ifndef DOV0610_PLATFORM_H
#define DOV0610_PLATFORM_H

#include <pthread.h>
#include <stdint.h>
#include <time.h>
#include <uchar.h>

/* Marks a symbol that the shared library exports. */
#define DOV0_EXPORT __attribute__((visibility("default")))

/* No DOV0_ function throws. The operations of this header are declared without it, so that a host may define them
 * as it likes; an exception that leaves a replacement ends the process. */
#ifdef __cplusplus
#define DOV0_NOEXCEPT noexcept
#else
#define DOV0_NOEXCEPT
#endif

/* Lets the compiler check a message against its format. */
#define DOV0_PRINTF_FORMAT(formatIndex, firstArgument)                                                       \
    __attribute__((format(printf, formatIndex, firstArgument)))

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup tracecontrol Trace control data
 *
 * One unit block per source file and one entry block per function, in static writable storage. The
 * library fills them; the trace facility reads them and keeps its answers in the entry block.
 * @{
 */

/** A tagged pointer of a unit block; see #TRC1_UnitTag. */
typedef struct TRC1_Tag {
    uint32_t tag;      /**< what value points at */
    const void *value; /**< a constant of the library, never null before the end tag */
} TRC1_Tag;

/** What the entries of a unit block point at, in the order in which they stand. */
typedef enum TRC1_UnitTag {
    TRC1_TAG_FILE_NAME = 10,    /**< text: name of the source file, for example "dov0gsto" */
    TRC1_TAG_COMPILE_DATE = 11, /**< text: "Mmm dd yyyy" */
    TRC1_TAG_COMPILE_TIME = 8,  /**< text: "hh:mm:ss" */
    TRC1_TAG_COMPONENT = 6,     /**< text: component level tag, "DOV610" */
    TRC1_TAG_CLASS = 1,         /**< text: class mark, "*" */
    TRC1_TAG_END = 0            /**< ends the list; its value is the build information record */
} TRC1_UnitTag;

/** Trace control data of one source file. */
typedef struct TRC1_UnitBlock {
    int32_t format;      /**< layout of the block, 400 */
    uint32_t flags;      /**< 0x83000000 */
    TRC1_Tag entries[6]; /**< tags 10, 11, 8, 6, 1 and 0 */
} TRC1_UnitBlock;

/**
 * Trace control data of one function.
 *
 * The library reads generationWord, level and generation with atomic operations and compares
 * generation with the word that generationWord addresses; when they differ it calls TRC1_Sync().
 */
typedef struct TRC1_EntryBlock {
    const TRC1_UnitBlock *unit;    /**< the source file's block */
    const char *name;              /**< exported name of the function */
    int32_t reserved;              /**< 0 */
    int32_t nameLength;            /**< characters of name */
    int32_t line;                  /**< source line where the function begins */
    const int32_t *generationWord; /**< at first the file's own word; the facility may re-point it */
    int32_t facilityFlags;         /**< private to the facility, 512 at start */
    uint32_t level;                /**< cached trace level, 0 at start */
    int32_t generation;            /**< cached generation, 0 at start: the first call synchronises */
    int32_t facility[2];           /**< private to the facility, 0 */
} TRC1_EntryBlock;

/** @} */

/**
 * @defgroup trace Trace facility
 *
 * The supplied facility is configured by the environment, read once, or by TRC1_Configure():
 *
 * - DOV_TRACE: a comma-separated list of "selector=levels". The selector is a source file
 *   ("dov0gsto"), a function ("DOV0_GetStorage"), or is missing together with its "=" to mean
 *   everything. A function's entry wins over its file's, a file's over one for everything; of two
 *   entries for the same the later wins. Levels are names joined by "+" (detail, storage, dump, state,
 *   flow, error, config, all, none) or one number, decimal or with 0x. Unset or empty: nothing is traced.
 *   A malformed piece is named once on the trace output; the rest of the list is used.
 * - DOV_TRACE_FILE: the file to append to, opened close-on-exec; unset or empty: standard error. While DOV_TRACE is unset
 *   it is opened for the first message only, so that a process that traces nothing leaves no file.
 * - DOV_TRACE_LIMIT: bound of that file in megabytes (2^20 bytes), a whole number above 0. The message that
 * would pass it is preceded by renaming the file with ".1" behind it and beginning it again. Unset: no bound.
 *
 * In a process that runs with raised privileges the three variables are ignored.
 *
 * A line is: UTC time to the microsecond, process id ":" thread id, source file ":" line, function,
 * text. Each message is one write, so that messages of several processes on one file stay whole. Control
 * characters inside a text are written as \\n, \\r or \\xNN, so that one message stays one line.
 * No operation of the facility changes errno.
 * @{
 */

/** Kinds of flow event for TRC1_Event(). */
typedef enum TRC1_EventKind {
    TRC1_EVENT_ENTRY = 0,      /**< a function was entered */
    TRC1_EVENT_EXIT_VALUE = 1, /**< it returns a value: one intptr_t follows */
    TRC1_EVENT_EXIT = 2        /**< it returns without a value */
} TRC1_EventKind;

/**
 * Computes the level that applies now to the function of a block, stores it and then the current
 * generation in the block, and returns the level. Any thread, also several at once for one block.
 *
 * @param block the function's entry block; not null
 * @return the level bits (DOV0_TRACE_DETAIL and so on)
 */
DOV0_EXPORT uint32_t TRC1_Sync(TRC1_EntryBlock *block);

/**
 * Records a flow event: "entry", "exit" or "exit VALUE". A value within 32 bits is written in
 * decimal, any other (a pointer) in hexadecimal. Any thread.
 *
 * @param block the function's entry block; not null
 * @param line  source line of the event
 * @param kind  one of #TRC1_EventKind; kind 1 is followed by one intptr_t
 */
DOV0_EXPORT void TRC1_Event(TRC1_EntryBlock *block, int32_t line, int32_t kind, ...);

/**
 * Writes one message. A line end at the end of the text is not doubled; a missing one is added. Any thread.
 *
 * @param block  the function's entry block; not null
 * @param line   source line of the message
 * @param format a printf format, followed by its arguments
 */
DOV0_EXPORT void TRC1_Printf(TRC1_EntryBlock *block, int32_t line, const char *format, ...)
    DOV0_PRINTF_FORMAT(3, 4);

/**
 * Writes memory as a dump of sixteen bytes a line, all lines together. Any thread.
 *
 * @param block      the function's entry block; not null
 * @param line       source line of the dump
 * @param address    the first byte; null writes no byte
 * @param length     bytes to dump; 0 or less writes one line that says so
 * @param itemFormat a printf format for one byte, given as unsigned int, for example "%02.2X"
 */
DOV0_EXPORT void TRC1_Dump(TRC1_EntryBlock *block, int32_t line, const void *address, int32_t length,
                           const char *itemFormat);

/**
 * Changes the levels and the output while the process runs and advances the generation, so that
 * every function takes up its new level at its next call. Any thread.
 *
 * @param levels a list as in DOV_TRACE; null or empty: nothing is traced
 * @param file   a file as in DOV_TRACE_FILE; null or empty: standard error
 * @return 0, or -1 with nothing changed when the list is malformed (the piece is named on the trace
 *         output in effect) or the file cannot be opened
 */
DOV0_EXPORT int32_t TRC1_Configure(const char *levels, const char *file);

/** @} */

/**
 * @defgroup services Basic services
 * @{
 */

/**
 * A plain, non-recursive lock. Zero-initialised static storage is an uninitialised lock.
 * The fields belong to the platform layer.
 */
typedef struct PLT1_Lock {
    pthread_mutex_t mutex; /**< what the lock is made of */
    int32_t initialized;   /**< 1 once the lock has been initialised */
} PLT1_Lock;

/**
 * Looks a variable up in the process environment. Any thread, as long as none changes the environment.
 *
 * @param name     the variable; not null
 * @param reserved 0
 * @return its value, not to be freed or changed, or null when it is not set
 */
DOV0_EXPORT const char *PLT1_GetEnv(const char *name, int32_t reserved);

/**
 * Initialises a lock. Any thread.
 *
 * @param lock zeroed static storage, or a lock that is initialised already and stays as it is; not null
 */
DOV0_EXPORT void PLT1_InitializeLock(PLT1_Lock *lock);

/**
 * Acquires a lock, waiting until it is free. Any thread that does not hold it.
 *
 * @param lock an initialised lock; not null
 */
DOV0_EXPORT void PLT1_GetLock(PLT1_Lock *lock);

/**
 * Releases a lock. The thread that holds it.
 *
 * @param lock a lock that the calling thread holds; not null
 */
DOV0_EXPORT void PLT1_ReleaseLock(PLT1_Lock *lock);

/**
 * Runs a function exactly once in the process, however many threads call; every caller returns after it has
 * run. The function must not come back with the same control word. Any thread.
 *
 * @param control    the control word, static, 0 at start; below 0 when the function has run
 * @param function   what to run; not null
 * @param argument   passed to it
 * @param sourceFile the caller's source file, for the trace
 * @param line       the caller's line
 */
DOV0_EXPORT void PLT1_InitializeOnce(int32_t *control, void (*function)(void *), void *argument,
                                     const char *sourceFile, int32_t line);

/**
 * Identifies the calling thread. Any thread.
 *
 * @return a number that is stable for the thread's life, distinct between live threads, and never 0
 */
DOV0_EXPORT int32_t PLT1_ThreadID(void);

/**
 * Reads the wall clock. Any thread.
 *
 * @param timeOut where seconds since the epoch and nanoseconds are stored; not null
 */
DOV0_EXPORT void PLT1_GetTime(struct timespec *timeOut);

/** @} */

/**
 * @defgroup language Language support
 *
 * Locales, code pages, translation between code pages, and resource bundles. The supplied layer stands on ICU.
 *
 * A status is an ICU status (UErrorCode): 0 is success, below 0 a warning that goes with a result, above 0 a
 * failure. Every operation sets it, whatever it held before; u_errorName() gives its name.
 *
 * Code pages are numbers: the Unicode ones of #LNG2_CodepageId, otherwise those that ICU's converter table has as
 * "windows-N", "ibm-N" or "cpN", in this order where they differ. ICU has no converter for 853.
 *
 * Converters and bundles that were opened are kept and used again, so that repeated calls open no file.
 * @{
 */

/** Code pages of Unicode text. Names without a byte order ("UTF-16") mean the big-endian one. */
typedef enum LNG2_CodepageId {
    LNG2_CODEPAGE_UTF16BE = 1200, /**< UTF-16, big-endian */
    LNG2_CODEPAGE_UTF16LE = 1202, /**< UTF-16, little-endian */
    LNG2_CODEPAGE_UTF8 = 1208,    /**< UTF-8 */
    LNG2_CODEPAGE_UTF32BE = 1232, /**< UTF-32, big-endian */
    LNG2_CODEPAGE_UTF32LE = 1234  /**< UTF-32, little-endian */
} LNG2_CodepageId;

/** Language identifiers that do not follow the Windows numbering. */
typedef enum LNG2_LanguageId {
    LNG2_LANGUAGE_GREEK = 0x012C0019,  /**< Greek */
    LNG2_LANGUAGE_TURKISH = 0x03180027 /**< Turkish */
} LNG2_LanguageId;

/** Bounds and statuses of the language support. */
enum {
    LNG2_LOCALE_NAME_SIZE = 128,     /**< bytes of a locale object's name, with the terminator */
    LNG2_CODEPAGE_NAME_SIZE = 256,   /**< bytes that hold any code page's name, with the terminator */
    LNG2_STATUS_BUFFER_OVERFLOW = 15 /**< the result did not fit and was cut */
};

/** A locale as one caller sees it: each call that gives one out makes a new one. */
typedef struct LNG2_Locale {
    int32_t languageId; /**< Windows language identifier, or one of #LNG2_LanguageId; 0 if unknown */
    int32_t codepage;   /**< 0 until set; the caller may set it */
    char name[LNG2_LOCALE_NAME_SIZE]; /**< ICU locale name; the caller may replace it */
} LNG2_Locale;

/** An open resource bundle; its fields belong to the language support. */
typedef struct LNG2_ResourceBundle LNG2_ResourceBundle;

/**
 * Gives a locale object for the process's default locale (ICU's), with its code page not yet set.
 *
 * @param selector1 reserved, null
 * @param selector2 reserved, null
 * @param selector3 reserved, null
 * @param status    set to the status; may be null
 * @return a locale object, given back with LNG2_ReleaseLocale(); null when there is no storage
 *
 * Any thread.
 */
DOV0_EXPORT LNG2_Locale *LNG2_GetLocale(const void *selector1, const void *selector2, const void *selector3,
                                        int32_t *status);

/**
 * Gives a locale object for the calling thread: the locale that the thread chose with uselocale(), else the
 * process's default locale. Its code page is the Windows code page of its language; for a language without one
 * (Hindi, for example) it is #LNG2_CODEPAGE_UTF8.
 *
 * @param status set to the status; may be null
 * @return a locale object, given back with LNG2_ReleaseLocale(); null when there is no storage
 *
 * Any thread.
 */
DOV0_EXPORT LNG2_Locale *LNG2_GetThreadLocale(int32_t *status);

/**
 * Gives a locale object back. Any thread.
 *
 * @param locale the object; nothing is done for null
 */
DOV0_EXPORT void LNG2_ReleaseLocale(LNG2_Locale *locale);

/**
 * Looks up the code page that a converter name stands for.
 *
 * @param converterName any name or alias that ICU knows, in any case, for example "ISO-8859-1"; null fails
 * @param status        set to the status; may be null. An unknown name is U_FILE_ACCESS_ERROR (4), a converter
 *                      without a number U_UNSUPPORTED_ERROR (16)
 * @return the code page, or 0
 *
 * Any thread.
 */
DOV0_EXPORT int32_t LNG2_GetCodepageId(const char *converterName, int32_t *status);

/**
 * Looks up a converter name of a code page: the preferred name for use in mail or that of the registry, where one
 * leads back to the code page, else "windows-N", "ibm-N" or "cpN".
 *
 * @param codepage the code page
 * @param name     where the name is stored; untouched on failure
 * @param nameSize bytes of name; #LNG2_CODEPAGE_NAME_SIZE is always enough
 * @return 0, or -1 when the code page is unknown or the name does not fit
 *
 * Any thread.
 */
DOV0_EXPORT int32_t LNG2_GetCodepageName(int32_t codepage, char *name, int32_t nameSize);

/**
 * Translates text from one code page to another. What is malformed, and what the target cannot express, is
 * replaced by the target's substitution character and is no failure.
 *
 * @param targetCodepage code page of the result
 * @param output         where the result is stored; a terminating zero byte follows where there is room
 * @param outputCapacity bytes of output, at least 1
 * @param sourceCodepage code page of the input
 * @param input          the text; may be null when inputLength is 0
 * @param inputLength    bytes of the text
 * @param inputConsumed  set to the bytes of input that were read, which after an overflow may be more than the
 *                       output shows; may be null
 * @param reserved       0
 * @param status         set to 0 when the whole result is stored, also when it fills output exactly;
 *                       #LNG2_STATUS_BUFFER_OVERFLOW when it was cut at outputCapacity bytes, even inside a
 *                       character; else the failure, U_FILE_ACCESS_ERROR (4) for an unknown code page. May be null
 * @return bytes stored in output, 0 on a failure other than overflow
 *
 * Any thread.
 */
DOV0_EXPORT int32_t LNG2_TranslateString(int32_t targetCodepage, char *output, int32_t outputCapacity,
                                         int32_t sourceCodepage, const char *input, int32_t inputLength,
                                         int32_t *inputConsumed, int32_t reserved, int32_t *status);

/**
 * Opens a resource bundle for a locale, with ICU's fall-back: to the parent locales, then to the process's
 * default locale, then to the root bundle.
 *
 * A bundle is read from its files once; later calls get the one that is in memory.
 *
 * @param bundlePath the bundle's directory and name, for example "/usr/share/agent/messages/dovpmsg" for
 *                   "/usr/share/agent/messages/dovpmsg/de.res"; null or empty fails
 * @param locale     the locale, of which the name is used; null fails
 * @param status     set to the status; may be null
 * @return the bundle, given back with LNG2_ResourceClose(), or null
 *
 * Any thread. A bundle may be used by several threads at once.
 */
DOV0_EXPORT LNG2_ResourceBundle *LNG2_ResourceOpen(const char *bundlePath, LNG2_Locale *locale,
                                                   int32_t *status);

/**
 * Fetches a text from a bundle, or from the bundles it falls back to.
 *
 * @param bundle an open bundle; null fails
 * @param key    the text's key; null fails
 * @param length set to the text's length in units; may be null
 * @param status set to the status; may be null. A key that no bundle has is U_MISSING_RESOURCE_ERROR (2)
 * @return the text in UTF-16, terminated, valid until the bundle is given back, or null
 *
 * Any thread.
 */
DOV0_EXPORT const char16_t *LNG2_GetStringByKey(LNG2_ResourceBundle *bundle, const char *key, int32_t *length,
                                                int32_t *status);

/**
 * Gives a bundle back. Any thread.
 *
 * @param bundle the bundle; nothing is done for null
 */
DOV0_EXPORT void LNG2_ResourceClose(LNG2_ResourceBundle *bundle);

/**
 * Shows an operator message. The operation supplied here does nothing: the agent framework replaces it where
 * there is one. Any thread.
 *
 * @param sText    the message's -s text; may be null
 * @param cText    the message's -c text; may be null
 * @param message  the message
 * @param reserved 0
 */
DOV0_EXPORT void AGF_CreateMessage(const char *sText, const char *cText, const char *message,
                                   int32_t reserved);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
