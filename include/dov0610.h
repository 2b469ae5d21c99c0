/*
 * dov0610.h - the functions and constants of libdov0610.so, the shared utility library of the
 * monitoring agent. This header is the manual.
 *
 * Conventions:
 * - Every function has C linkage, default visibility and the symbol version version_1.0. None throws.
 * - A failure is told by the result (null, 0 or -1) and by one message in the trace; dov0610_platform.h
 *   says how an operator switches the trace.
 * - "Working storage" is what DOV0_GetStorage() gives out: zero-filled, and given back with
 *   DOV0_FreeStorage(). A result that is said to be owned by the caller is freed that way.
 * - A text is a zero-terminated sequence of bytes. Arguments must not be null unless it is said that they may
 * be.
 * - Lengths and sizes are in bytes unless another unit is named.
 */
#ifndef DOV0610_H
#define DOV0610_H

#include <netdb.h>
#include <netinet/in.h>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <sys/socket.h>
#include <time.h>
#include <uchar.h>

#include "dov0610_platform.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Bits of a trace level: what a function writes to the trace. */
typedef enum DOV0_TraceLevel {
    DOV0_TRACE_DETAIL = 0x01,  /**< inputs, outputs and decisions */
    DOV0_TRACE_STORAGE = 0x02, /**< buffers allocated and freed */
    DOV0_TRACE_DUMP = 0x0C,    /**< hex dumps of data; either bit of the pair is enough */
    DOV0_TRACE_STATE = 0x10, /**< intermediate results; also switches on the accounting of working storage */
    DOV0_TRACE_FLOW = 0x40,  /**< entry and exit events */
    DOV0_TRACE_ERROR = 0x80, /**< failures */
    DOV0_TRACE_CONFIGURATION = 0x100 /**< the report on the product specification */
} DOV0_TraceLevel;

/**
 * @defgroup storage Working storage
 * @{
 */

/**
 * Gives out zero-filled working storage.
 *
 * While the state bit of the trace level is on, each block is also recorded and the running total reported.
 *
 * @param size bytes wanted, at least 1
 * @return a new block of exactly that size, owned by the caller and freed with DOV0_FreeStorage(); null
 *         (with an error message) when size is below 1 or the heap is exhausted
 *
 * Any thread.
 */
DOV0_EXPORT void *DOV0_GetStorage(int32_t size) DOV0_NOEXCEPT;

/**
 * Frees a block of working storage and sets the caller's pointer to null.
 *
 * @param pointerAddress address of the variable, of any object pointer type, that points at the block;
 *                       a variable that holds null is left alone
 *
 * Any thread, as long as no other one uses the block or the variable.
 *
 *     char *name = DOV0_GetStorage(64);
 *     DOV0_FreeStorage(&name);
 */
DOV0_EXPORT void DOV0_FreeStorage(void *pointerAddress) DOV0_NOEXCEPT;

/**
 * Tells whether a block pointer may be used. Only null is refused: nothing is known of the block behind it.
 *
 * @param pointer any address, or null
 * @return 1 when pointer is not null, else 0
 *
 * Any thread. Reports no entry and exit events.
 */
DOV0_EXPORT int32_t DOV0_IsValidBlockPointer(const void *pointer) DOV0_NOEXCEPT;

/**
 * Tells whether a pointer may be used. Only null is refused.
 *
 * @param pointer any address, or null
 * @return 1 when pointer is not null, else 0
 *
 * Any thread. Reports no entry and exit events.
 */
DOV0_EXPORT int32_t DOV0_IsValidPointer(const void *pointer) DOV0_NOEXCEPT;

/** @} */

/**
 * @defgroup environment Environment overlay
 * @{
 */

/** Bounds of DOV0_PutEnv(). */
enum {
    DOV0_ENV_MAX_LENGTH = 255 /**< longest name and longest value, in bytes without the terminator */
};

/**
 * Looks a variable up: in the process environment, and where that does not define it among the variables
 * that were set with DOV0_PutEnv(). An empty value counts as unset; an empty one of the process environment
 * still hides a variable set with DOV0_PutEnv().
 *
 * Variables set with DOV0_PutEnv() have upper-case names and the name is compared as it is, so only an
 * upper-case name finds one. Nothing is cached: each call sees the process environment of its moment.
 *
 * @param name         the variable; may be null, which gives null whatever the default
 * @param defaultValue the result when the variable is unset or empty; may be null; stays the caller's
 * @return the value, defaultValue, or null. Not to be changed or freed. A value set with DOV0_PutEnv() stays
 *         valid for the life of the process and shows later updates
 *
 * Traces nothing on failure but, as a detail, that the variable is not set.
 *
 * Any thread, as long as none changes the process environment. A value that another thread updates with
 * DOV0_PutEnv() at the same moment can be read half-written.
 *
 *     const char *path = DOV0_GetEnv("DOV_WORK_PATH", "/tmp");
 */
DOV0_EXPORT const char *DOV0_GetEnv(const char *name, const char *defaultValue) DOV0_NOEXCEPT;

/**
 * Sets a variable for DOV0_GetEnv() in this process. The process environment is not changed, and wins where
 * it defines the same name. A variable can be updated, also to the empty text, but not removed.
 *
 * @param envString "name=value"; the text before the first "=" is the name, converted to upper case, and all
 *                  after it the value, each of at most #DOV0_ENV_MAX_LENGTH bytes and possibly empty; copied.
 *                  Null is reported like a text without "="
 *
 * A text without "=" and a name or value that is too long are reported as errors and nothing is stored;
 * when there is no storage the error is that of DOV0_GetStorage(). An empty name is reported as an error by
 * DOV0_ConvertStringToUpper() and stored all the same.
 *
 * Any thread.
 *
 *     DOV0_PutEnv("DOV_WORK_PATH=/var/tmp");
 */
DOV0_EXPORT void DOV0_PutEnv(const char *envString) DOV0_NOEXCEPT;

/** @} */

/**
 * @defgroup threads Threads, descriptors and the tokenizer
 * @{
 */

/** How DOV0_CreateThread() leaves the thread. */
typedef enum DOV0_DetachState {
    DOV0_THREAD_JOINABLE = 0, /**< to be joined with pthread_join() */
    DOV0_THREAD_DETACHED = 1  /**< its resources are given back when it ends */
} DOV0_DetachState;

/** Bounds of DOV0_strtok(). */
enum {
    DOV0_STRTOK_SLOTS = 256 /**< threads that can be in the middle of a text at the same time */
};

/**
 * Initialises a mutex with default attributes.
 *
 * @param mutex the mutex, owned by the caller and not in use; null is reported as a failure (EINVAL)
 *
 * Each of the three steps that fails is reported as an error with its code; the others are still made.
 *
 * Any thread, one for each mutex.
 */
DOV0_EXPORT void DOV0_InitializeMutex(pthread_mutex_t *mutex) DOV0_NOEXCEPT;

/**
 * Initialises a condition variable with default attributes. Failures are not reported.
 *
 * @param condVar the condition variable, owned by the caller and not in use; nothing is done for null
 *
 * Any thread, one for each condition variable.
 */
DOV0_EXPORT void DOV0_InitializeCondVar(pthread_cond_t *condVar) DOV0_NOEXCEPT;

/**
 * Waits until a condition variable is signalled or a time has passed. Like any such wait it can also end
 * for no reason, so the caller tests its condition again.
 *
 * @param condVar the condition variable; null gives EINVAL
 * @param mutex   held by the caller, released during the wait and held again afterwards; null gives EINVAL
 * @param seconds longest time to wait, by the wall clock; 0 or below only releases and takes the mutex
 * @return 0 when signalled, ETIMEDOUT when the time has passed, else another error number
 *
 * Traces no failure: the result is for the caller to judge.
 *
 * Any thread that holds the mutex.
 *
 *     while (!ready && DOV0_ConditionTimedWait(&changed, &lock, 30) == 0) {
 *     }
 */
DOV0_EXPORT int32_t DOV0_ConditionTimedWait(pthread_cond_t *condVar, pthread_mutex_t *mutex,
                                            int32_t seconds) DOV0_NOEXCEPT;

/**
 * Creates a thread with default attributes.
 *
 * @param start       what the thread runs; null is reported as a thread that was not started (EINVAL)
 * @param argument    passed to start; may be null
 * @param detachState #DOV0_THREAD_JOINABLE or #DOV0_THREAD_DETACHED. Any other value is reported as an error,
 *                    and the thread is created and detached all the same
 * @param thread      where the thread's identity is stored; it must stay valid until this function returns.
 *                    May be null when the identity is not wanted
 * @return 0, or -1 when the thread was not started or detachState was neither of the two
 *
 * A thread that was not started is reported as an error with the system's error number, which is also in
 * errno.
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_CreateThread(void *(*start)(void *), void *argument, int32_t detachState,
                                      pthread_t *thread) DOV0_NOEXCEPT;

/**
 * Marks a file descriptor close-on-exec, so that programs started by this process do not inherit it.
 *
 * @param fileDescriptor an open descriptor
 * @return the result of setting the flags, 0 or -1 with errno set. Also 0 when the present flags could not be
 *         read (the descriptor is not open, for example), which is reported as an error
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_SetCloExecFlag(int32_t fileDescriptor) DOV0_NOEXCEPT;

/**
 * Splits a text into tokens, one per call, like strtok(), but with a position for each thread.
 *
 * A thread holds one of #DOV0_STRTOK_SLOTS slots from its first call for a text until the call that returns
 * no token. A thread that begins another text before that uses its slot again; one that never reaches the
 * end keeps it for good.
 *
 * @param text       the text to split, on the first call; it is changed in place, and stays the caller's.
 *                   Null on the calls that continue it. Null without a text to continue gives null
 * @param delimiters the bytes that separate tokens; they may differ from call to call. Null stands for none,
 *                   so that the rest of the text is one token
 * @return the next token, inside the text, or null when there is none left or when all slots are held by
 *         other threads, which is reported as an error
 *
 * Any thread.
 *
 *     for (char *item = DOV0_strtok(list, ","); item != NULL; item = DOV0_strtok(NULL, ",")) {
 *         use(item);
 *     }
 */
DOV0_EXPORT char *DOV0_strtok(char *text, const char *delimiters) DOV0_NOEXCEPT;

/** @} */

/**
 * @defgroup prodspec Product specification
 * @{
 */

/**
 * The values of the product specification by index. The names are those of the keywords in the file; the default is
 * what an agent has when its file does not set the keyword. A packaged solution has no defaults but those for which
 * it is said, and must set PRODUCT_CODE, NODE_TYPE, PRODUCT_NAME, AGENT_AFF_NAME, SUBNODE_AFF_NAME, DP_TO_START,
 * DCH_PORT_NUMBER, DP_PORT_OFFSET, INITCNFG_FILE_NAME and DOVATBLS_FILE_NAME.
 *
 * The file: a first line that begins with "//PSF", then one record "KEYWORD=value" a line, each enciphered by
 * DOV0_EncipherRecord() with its line end, the seed being its length in bytes times its number, from 1 for the line
 * behind the first. Lines of more than 511 bytes count as several records. Keywords may be in lower case and must
 * directly precede the "="; blanks before keyword and value are skipped. A value whose first word is "NO" or "N" in
 * any case means no. An empty value says nothing. Of several records for a keyword the last one counts. Records
 * that are none are reported in the trace and ignored. dovpsf compiles, prints and checks such files.
 */
typedef enum DOV0_ProductSpecIndex {
    DOV0_PSF_PACKAGED_SOLUTION = 0, /**< "Y" for a product other than the agent; no keyword of the file */
    DOV0_PSF_PRODUCT_CODE = 1, /**< required; "OV" is the agent itself, any other code a packaged solution */
    DOV0_PSF_NODE_TYPE = 2,    /**< default "OA" */
    DOV0_PSF_PRODUCT_NAME = 3, /**< default "Omnia Agent" */
    DOV0_PSF_AGENT_AFF_NAME = 4, /**< affinity name of the agent; default the agent's own */
    DOV0_PSF_AGENT_AFF_STRING =
        5, /**< what #DOV0_PSF_AGENT_AFF_NAME stands for, 43 characters; no keyword of the file */
    DOV0_PSF_SUBNODE_AFF_NAME =
        6, /**< affinity name of the subnodes that data providers make; default the agent's own */
    DOV0_PSF_SUBNODE_AFF_STRING =
        7, /**< what #DOV0_PSF_SUBNODE_AFF_NAME stands for, 43 characters; no keyword of the file */
    DOV0_PSF_SUBNODE_AFF_FEAT =
        8, /**< 11 characters; default the agent's own, for a packaged solution eleven zeros */
    DOV0_PSF_REGISTER_OAGENT = 9,               /**< switch, default yes */
    DOV0_PSF_ENABLE_SNMP_TRAP = 10,             /**< switch, default yes; unset when off */
    DOV0_PSF_ENABLE_SNMP_DISCOVERY = 11,        /**< switch, default yes */
    DOV0_PSF_ENABLE_SNMP_MIBSTATUS = 12,        /**< switch, default yes; unset when off */
    DOV0_PSF_ENABLE_DISCOVERY_DATA_UPDATE = 13, /**< switch, default yes */
    DOV0_PSF_ENABLE_DPLOG = 14,                 /**< switch, default yes; unset when off */
    DOV0_PSF_ENABLE_METAFILE_COMMANDS = 15,     /**< switch, default yes; unset when off */
    DOV0_PSF_MANAGED_NETWORK_MS = 16,           /**< switch, default yes */
    DOV0_PSF_DP_TO_START =
        17, /**< in the file a list of codes ("SNMP,FILE"), afterwards of type numbers ("7,2") */
    DOV0_PSF_METAFILES_TO_LOAD = 18,      /**< no default */
    DOV0_PSF_SNMP_HOTLIST_TO_LOAD = 19,   /**< no default */
    DOV0_PSF_SNMP_HOTLIST_TABLENAME = 20, /**< no default */
    DOV0_PSF_DCH_PORT_NUMBER = 21,        /**< default "1919" */
    DOV0_PSF_DP_PORT_OFFSET = 22,         /**< default "0" */
    DOV0_PSF_INITCNFG_FILE_NAME =
        23, /**< default "DOVPCNFG", or with an instance name "DOVPCNFG_" and that */
    DOV0_PSF_TRAPCNFG_FILE_NAME =
        24, /**< default "TRAPCNFG", or with an instance name "TRAPCNFG_" and that */
    DOV0_PSF_SNMPCOMM_FILE_NAME =
        25, /**< default "DOVSCOMM", or with an instance name "DOVSCOMM_" and that */
    DOV0_PSF_SNMPLIST_FILE_NAME =
        26, /**< default "DOVSLIST", or with an instance name "DOVSLIST_" and that */
    DOV0_PSF_SNMPNAME_FILE_NAME =
        27, /**< default "DOVSNAME", or with an instance name "DOVSNAME_" and that */
    DOV0_PSF_SNMPNETS_FILE_NAME =
        28, /**< default "DOVSNETS", or with an instance name "DOVSNETS_" and that */
    DOV0_PSF_SNMPROUT_FILE_NAME =
        29, /**< default "DOVSROUT", or with an instance name "DOVSROUT_" and that */
    DOV0_PSF_SNMPMIBI_FILE_NAME =
        30, /**< default "DOVSMIBI", or with an instance name "DOVSMIBI_" and that */
    DOV0_PSF_DOVATBLS_FILE_NAME =
        31, /**< default "DOVATBLS", or with an instance name "DOVATBLS_" and that */
    DOV0_PSF_DOVPURLS_FILE_NAME =
        32, /**< default "DOVPURLS", or with an instance name "DOVPURLS_" and that */
    DOV0_PSF_INSTANCE_NAME =
        33, /**< default the name passed to DOV0_InitializeProductSpec(), which also overrides the file */
    DOV0_PSF_ENABLE_CONSOLE_COMMANDS = 34,  /**< switch, default yes */
    DOV0_PSF_SUBNODE_APPEND_APIS = 35,      /**< no default */
    DOV0_PSF_SUBNODE_APPEND_ASFS = 36,      /**< no default */
    DOV0_PSF_SUBNODE_APPEND_FILE = 37,      /**< no default */
    DOV0_PSF_SUBNODE_APPEND_HTTP = 38,      /**< no default */
    DOV0_PSF_SUBNODE_APPEND_ODBC = 39,      /**< no default */
    DOV0_PSF_SUBNODE_APPEND_POST = 40,      /**< no default */
    DOV0_PSF_SUBNODE_APPEND_SCRP = 41,      /**< no default */
    DOV0_PSF_SUBNODE_APPEND_SNMP = 42,      /**< no default */
    DOV0_PSF_SUBNODE_APPEND_SOCK = 43,      /**< no default */
    DOV0_PSF_ADD_SNMP_OBJECTINSTANCE = 44,  /**< switch; unset when off */
    DOV0_PSF_ENABLE_GLOBALIZATION = 45,     /**< switch, default yes; unset when off */
    DOV0_PSF_AGENT_VERSION = 46,            /**< exactly six digits */
    DOV0_PSF_AGENT_LOCALE = 47,             /**< default the locale of the process */
    DOV0_PSF_ENABLE_AUTOMATION_SERVER = 48, /**< switch, default yes; unset when off */
    DOV0_PSF_RESERVED = 49                  /**< valid, always unset */
} DOV0_ProductSpecIndex;

/**
 * Reads the product specification of the process and puts it into effect. The file is the one that
 * DOV0_ConstructFullyQualifiedName() makes of the environment variables DOV_PRODSPEC_PATH (a directory with its "/"
 * at the end; unset: the work directory) and DOV_PRODSPEC_NAME (unset: "DOVPSF"). A packaged solution may not be
 * named "DOVPSF" by that variable.
 *
 * After a success further calls do nothing. A failed call may be repeated. With the configuration bit of the trace
 * level on, the values in effect are reported; only then three switches of a packaged solution
 * (#DOV0_PSF_ENABLE_CONSOLE_COMMANDS, #DOV0_PSF_ENABLE_GLOBALIZATION, #DOV0_PSF_ENABLE_AUTOMATION_SERVER) default to
 * yes, and the switches marked "unset when off" that the file sets to no are unset.
 *
 * @param instanceName       name of this instance of the agent, null or empty for none; it is copied, and ignored for
 *                           a packaged solution
 * @param commonDataProvider 0 to read the file; any other value to read none and be the agent with its defaults
 * @return 1 when a product specification is in effect; else 0, with the reason in the trace under the configuration
 *         bit: the file cannot be opened or does not begin with "//PSF", there is no product code, a packaged
 *         solution lacks required keywords or uses the agent's file name, the features are not 11 characters, an
 *         affinity name is unknown. Exhausted storage (an error message) also leads to 0
 *
 * One thread, at start-up, before others use the library.
 *
 *     if (!DOV0_InitializeProductSpec("inst1", 0)) {
 *         return EXIT_FAILURE;
 *     }
 */
DOV0_EXPORT int32_t DOV0_InitializeProductSpec(const char *instanceName,
                                               int32_t commonDataProvider) DOV0_NOEXCEPT;

/**
 * Gives a value of the product specification in effect.
 *
 * @param index one of #DOV0_ProductSpecIndex
 * @return the value, owned by the library and neither freed nor changed by the caller; it is good until that value is
 *         updated. Null when it is unset, and (with an error message) when the index is none or no product
 *         specification is in effect. For #DOV0_PSF_INSTANCE_NAME the latter is a detail message, as it is asked
 *         for early
 *
 * Any thread, while none updates the value.
 *
 *     const char *port = DOV0_QueryProductSpec(DOV0_PSF_DCH_PORT_NUMBER);
 */
DOV0_EXPORT const char *DOV0_QueryProductSpec(int32_t index) DOV0_NOEXCEPT;

/**
 * Changes a value of the product specification in effect.
 *
 * A text that begins with "N" turns off a switch marked "unset when off", which then reads as null. A keyword that
 * still holds a default of yes, or no, takes over the first character of the text only. Any other keyword gets a copy
 * of the text. The text that was replaced is freed.
 *
 * @param index    one of #DOV0_ProductSpecIndex; #DOV0_PSF_RESERVED is accepted without an error, and nothing changes
 * @param newValue the new value; null changes nothing. It may be the value that is replaced
 * @return 1 when the value was changed, else 0 (with an error message when the index is none, no product
 *         specification is in effect or there is no storage: a text that was replaced is gone then, and the keyword
 *         reads as null)
 *
 * One thread, at start-up. With the detail bit on, standard output is flushed.
 */
DOV0_EXPORT int32_t DOV0_UpdateProductSpec(int32_t index, const char *newValue) DOV0_NOEXCEPT;

/**
 * Records how data providers are started, for console messages.
 *
 * @param mode 0 (as at start) when the agent framework shows messages; any other value when data providers run on
 *             their own
 *
 * Any thread.
 */
DOV0_EXPORT void DOV0_SetDPstartMode(int32_t mode) DOV0_NOEXCEPT;

/** @} */

/**
 * @defgroup timestamps Timestamps
 *
 * Local time is that of localtime(), called under a lock of the library's own. A host that wants it in another thread at the
 * same time uses localtime_r() there.
 * @{
 */

/** Sizes of timestamps and of the texts made of them, in bytes. */
typedef enum DOV0_TimestampSize {
    DOV0_TIMESTAMP_LENGTH = 16,     /**< characters of a timestamp */
    DOV0_TIMESTAMP_SIZE = 17,       /**< a timestamp and its terminator */
    DOV0_TIMESTAMP_BLOCK_SIZE = 20, /**< a new block that holds a timestamp */
    DOV0_TIMESTAMP_TEXT_SIZE = 24,  /**< what DOV0_CorvelTimeToString() writes, with its terminator */
    DOV0_WEEKDAY_MAX_LENGTH = 9     /**< the longest result of DOV0_CorvelTimeToWeekDay(), "Wednesday" */
} DOV0_TimestampSize;

/**
 * Makes the timestamp of the present moment.
 *
 * A timestamp is sixteen decimal digits of local time without separators: years since 1900 (three digits),
 * month, day, hour, minute and second (two digits each) and a sequence (three digits). Timestamps of the
 * years 1900 to 2899 compare in time order byte by byte.
 *
 * @param buffer receives #DOV0_TIMESTAMP_SIZE bytes; null for a new block
 * @return what DOV0_ConvertTimeToCorvelTime() returns for the present time and buffer
 *
 * Any thread, as long as none changes the environment: TZ is read at each call. Reports no entry and exit
 * events.
 */
DOV0_EXPORT char *DOV0_GetCorvelTime(char *buffer) DOV0_NOEXCEPT;

/**
 * Makes the timestamp of a calendar time.
 *
 * The sequence is 000 for the first timestamp of a second. Further timestamps of the same second, without one
 * for another second between them, rise by 10 to 100, by 5 to 400, by 3 to 802 and by 1 to 999, where they
 * stay: it tells them apart and is no part of the clock's reading. A leap second is shown as second 00. A
 * year that does not have three digits pushes the fields behind it to the right; the minute is cut off at its
 * eleventh character.
 *
 * @param when   address of the time in seconds since the epoch; null is refused
 * @param buffer receives #DOV0_TIMESTAMP_SIZE bytes; null for a new block
 * @return buffer, or a new block of #DOV0_TIMESTAMP_BLOCK_SIZE bytes, owned by the caller and freed with
 *         DOV0_FreeStorage(). Null, with nothing written, for a null time and for one whose year does not fit
 *         into an int (each with an error message), and when the heap is exhausted
 *
 * Any thread, as long as none changes the environment: TZ is read at each call. Two threads may be given the
 * same sequence while the second changes.
 */
DOV0_EXPORT char *DOV0_ConvertTimeToCorvelTime(const time_t *when, char *buffer) DOV0_NOEXCEPT;

/**
 * Reads the clock in milliseconds, for the difference between two readings.
 *
 * @return the milliseconds since the epoch in 32 bits: the value wraps about every 50 days, and may be
 *         negative
 *
 * Any thread.
 *
 *     uint32_t elapsed = (uint32_t)DOV0_GetTimeOfDay() - (uint32_t)start;
 */
DOV0_EXPORT int32_t DOV0_GetTimeOfDay(void) DOV0_NOEXCEPT;

/**
 * Shows a calendar time in local time as "YYY/MM/DD-hh:mm:ss", where YYY is the years since 1900 in at least
 * two digits: "126/11/16-05:58:43".
 *
 * @param when address of the time in seconds since the epoch; null for the present time
 * @return a static text, not to be freed, that the next call overwrites. It is empty (with an error message)
 *         for a time whose year does not fit into an int
 *
 * One thread at a time, and as long as none changes the environment: TZ is read at each call.
 */
DOV0_EXPORT char *DOV0_GetCurrentDayTime(const time_t *when) DOV0_NOEXCEPT;

/**
 * Renders a timestamp as "2026/11/16 05:58:43 010".
 *
 * The characters behind the year are copied unchecked; what a shorter timestamp lacks comes out as NUL
 * characters, which the result counts like any other.
 *
 * @param timestamp the timestamp; of a longer text the first sixteen characters; null is refused
 * @param out       receives #DOV0_TIMESTAMP_TEXT_SIZE bytes; null is refused
 * @return the number of characters before the terminator, always 23; 0 (with an error message) for a null
 *         argument
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_CorvelTimeToString(const char *timestamp, char *out) DOV0_NOEXCEPT;

/**
 * Names the day of the week of a timestamp's date in English, for the years 1991 to 2003.
 *
 * The day is taken from 01 to 31 in every month: the 31st of February is three days after the 28th.
 *
 * @param timestamp the timestamp; the fields that a shorter text lacks are 0; null is refused
 * @param out       receives the name WITHOUT a terminator, at most #DOV0_WEEKDAY_MAX_LENGTH bytes; null is
 *                  refused
 * @return the number of characters of the name; 0, with nothing written, for any other year, month or day,
 *         and (with an error message) for a null argument
 *
 * Any thread.
 *
 *     char name[DOV0_WEEKDAY_MAX_LENGTH + 1];
 *     name[DOV0_CorvelTimeToWeekDay("1030615120000000", name)] = '\0'; // "Sunday"
 */
DOV0_EXPORT int32_t DOV0_CorvelTimeToWeekDay(const char *timestamp, char *out) DOV0_NOEXCEPT;

/**
 * Makes a timestamp of a date and time in one of many loose forms: "01/15/2024 10:20:30", "15/JAN/2024",
 * "1.2.24", "MONDAY JANUARY 5", "JAN 15 2024 10:20:30". Upper and lower case are the same.
 *
 * - A clock time needs two colons and an hour of two digits; of more colons the last two count.
 * - Without slashes (or backslashes) words are read: month names, also in part or abbreviated to at least
 *   three letters, with the day behind them. Any other word is dropped. A number above 90 at the beginning of
 *   the rest is the year. A month and a day with nothing left get the current year.
 * - A date of three fields between slashes, backslashes or dots is read as month, day and year; day first
 *   when the first field exceeds 12; year first when it exceeds 90; and a field that is a month name is the
 *   month. With dots, month names must not be used and a year must not come first.
 *
 * Years above 1900 are calendar years, others years since 1900. Nothing is checked for its range; a field
 * that is not found is 0. Numbers too large for 32 bits are taken as the largest one.
 *
 * @param text any text; may be null, or empty, which gives sixteen zeros
 * @return a new block of #DOV0_TIMESTAMP_BLOCK_SIZE bytes, owned by the caller and freed with
 *         DOV0_FreeStorage(), with a timestamp whose sequence is 000. A timestamp with fields of more digits
 *         than usual is longer, and cut off where the block ends. Null for a null text, or when the heap is
 *         exhausted
 *
 * Any thread, as long as none changes the environment or the locale: TZ is read for the current year, and the
 * locale defines upper case. Takes time in proportion to the length of the text.
 */
DOV0_EXPORT char *DOV0_StringToCorvelTime(const char *text) DOV0_NOEXCEPT;

/** @} */

/**
 * @defgroup strings Strings
 * @{
 */

/** What DOV0_RemoveCRandLF() removes. */
typedef enum DOV0_LineEndMode {
    DOV0_REMOVE_CR = 'R',  /**< the carriage return only */
    DOV0_REMOVE_LF = 'F',  /**< the line feed only */
    DOV0_REMOVE_BOTH = 'B' /**< both */
} DOV0_LineEndMode;

/** Size in bytes of the area that DOV0_terminateString() fills, the terminator included. */
#define DOV0_TERMINATED_STRING_SIZE 1024

/**
 * Turns the letters of a text into upper case, by the rules of the current locale for single bytes.
 *
 * @param text the text; changed in place when copy is 0, else only read
 * @param copy 0 to change the text itself, any other value to leave it alone and make a copy
 * @return text, or with copy set a new block owned by the caller and freed with DOV0_FreeStorage(); null
 *         (with an error message) when text is null or empty or there is no storage for the copy
 *
 * Any thread, as long as no other one uses the text or changes the locale.
 *
 *     char *keyword = DOV0_ConvertStringToUpper(word, 1);
 */
DOV0_EXPORT char *DOV0_ConvertStringToUpper(char *text, int32_t copy) DOV0_NOEXCEPT;

/**
 * Removes the line end of a text in place. Only the first carriage return and the first line feed are
 * looked at. One within the last two characters of the text cuts the text off there; one further inside
 * becomes a blank, so that the rest is kept.
 *
 * @param text the text, changed in place; null gives an error message only
 * @param mode one of #DOV0_LineEndMode; any other character removes nothing
 *
 * Any thread, as long as no other one uses the text.
 *
 *     DOV0_RemoveCRandLF(line, DOV0_REMOVE_BOTH);
 */
DOV0_EXPORT void DOV0_RemoveCRandLF(char *text, char mode) DOV0_NOEXCEPT;

/**
 * Keeps the rightmost maxLength characters of a text that is longer, in place.
 *
 * @param text          the text; null gives an error message only
 * @param currentLength its length in bytes, which is not measured; nothing changes when it is not above
 *                      maxLength
 * @param maxLength     bytes to keep, at least 1; below, an error message is traced and nothing changes
 *
 * Any thread, as long as no other one uses the text.
 */
DOV0_EXPORT void DOV0_TruncateFromLeft(char *text, int32_t currentLength, int32_t maxLength) DOV0_NOEXCEPT;

/**
 * Makes a text of a fixed-width field: the bytes before a terminator character, or the whole field when
 * it does not occur.
 *
 * @param text       the field, which needs no zero byte at its end; null counts as an empty field
 * @param terminator the character that ends the text within the field
 * @param length     width of the field in bytes. Of what it holds, #DOV0_TERMINATED_STRING_SIZE - 1 bytes at
 *                   most are taken; 0 or less gives an empty text
 * @return a static area, not to be freed, that the next call overwrites
 *
 * One thread at a time: the area is shared by all.
 */
DOV0_EXPORT char *DOV0_terminateString(const char *text, char terminator, int32_t length) DOV0_NOEXCEPT;

/**
 * Replaces each byte of a name by '_' that is neither a letter nor a digit of the current locale nor one
 * of '_', '*' and '-'.
 *
 * @param name the name, changed in place; null gives an error message only
 *
 * Any thread, as long as no other one uses the name or changes the locale.
 */
DOV0_EXPORT void DOV0_SubValidNameCharacter(char *name) DOV0_NOEXCEPT;

/** @} */

/**
 * @defgroup base64 Base64
 * @{
 */

/** A group of Base64: three bytes to encode, or four mapped characters to decode. */
typedef struct DOV0_Base64Group {
    unsigned char data[4]; /**< the bytes, of which three count, or the values of the characters */
    int32_t count;         /**< how many of them are in use: 1 to 3, or 1 to 4 */
} DOV0_Base64Group;

/** Bytes that a text of this length needs as Base64, with the terminator. */
#define DOV0_BASE64_ENCODED_SIZE(length) (((length) + 2) / 3 * 4 + 1)

/** Bytes that Base64 text of this length needs when decoded, with the terminator. */
#define DOV0_BASE64_DECODED_SIZE(length) (((length) + 3) / 4 * 3 + 1)

/**
 * Encodes a text into Base64: the alphabet and padding of RFC 4648, without line breaks.
 *
 * @param input  the text; null or empty is refused
 * @param output address of a pointer to the caller's buffer of #DOV0_BASE64_ENCODED_SIZE(strlen(input))
 *               bytes, which receives the result and its terminator. A pointer that is null is set to a new
 *               block of that size, owned by the caller and freed with DOV0_FreeStorage(). The address itself
 *               must not be null
 * @return 1; or 0, with nothing written, for an empty input or a null argument (each with an error message),
 *         or when the heap is exhausted
 *
 * Any thread.
 *
 *     char *encoded = NULL;
 *     if (DOV0_EncodeBase64("Man", &encoded)) { // "TWFu"
 *         DOV0_FreeStorage(&encoded);
 *     }
 */
DOV0_EXPORT int32_t DOV0_EncodeBase64(const char *input, char **output) DOV0_NOEXCEPT;

/**
 * Encodes one group: writes four characters, of which a count of 1 pads the last two and a count of 2 the
 * last.
 *
 * @param group  the bytes, those beyond the count 0; null is refused
 * @param target receives four characters, no terminator; null is refused
 *
 * A null argument leaves an error message and nothing else. Any thread.
 */
DOV0_EXPORT void DOV0_EncodeToBuffer(const DOV0_Base64Group *group, char *target) DOV0_NOEXCEPT;

/**
 * Splits three bytes into four values of six bits, the highest bits first.
 *
 * @param sextets receives four bytes; null is refused
 * @param bytes   three bytes; null is refused
 *
 * A null argument leaves an error message and nothing else. Any thread.
 */
DOV0_EXPORT void DOV0_EncodeRaw(unsigned char *sextets, const unsigned char *bytes) DOV0_NOEXCEPT;

/**
 * Decodes a Base64 text into a text.
 *
 * Whole groups of four characters of the alphabet are decoded as RFC 4648 has it. Everything else is not
 * refused but decoded in a way of its own: '=' counts as the value 0xFF and a character outside the alphabet
 * as 0xFE, neither of them cut to six bits ("QQ==" gives the bytes 0x41, 0x0F, 0xFF); the one to three
 * characters of an incomplete last group are replaced by the first bytes of the result so far, mapped like
 * characters. A character with its high bit set counts like the same one without it. A NUL among the decoded
 * bytes ends the result.
 *
 * @param input  the text; null or empty is refused
 * @param output address of a pointer to the caller's buffer of #DOV0_BASE64_DECODED_SIZE(strlen(input))
 *               bytes, which receives the result and its terminator. A pointer that is null is set to a new
 *               block of that size, owned by the caller and freed with DOV0_FreeStorage(). The address itself
 *               must not be null
 * @return 1; or 0, with nothing written, for an empty input or a null argument (each with an error message),
 *         or when the heap is exhausted
 *
 * Any thread. At detail level the result so far is traced after each group, which takes its time for a long
 * text.
 */
DOV0_EXPORT int32_t DOV0_DecodeBase64(const char *input, char **output) DOV0_NOEXCEPT;

/**
 * Decodes one group of mapped characters: writes three bytes, whatever the count.
 *
 * @param group  four values; null is refused
 * @param target receives three bytes, no terminator; null is refused
 *
 * A null argument leaves an error message and nothing else. Any thread.
 */
DOV0_EXPORT void DOV0_DecodeToBuffer(const DOV0_Base64Group *group, char *target) DOV0_NOEXCEPT;

/**
 * Puts four values together to three bytes, in eight bits each: of the first two values all bits enter that
 * fit, also those above the sixth.
 *
 * @param bytes   receives three bytes; null is refused
 * @param sextets four values; null is refused
 *
 * A null argument leaves an error message and nothing else. Any thread.
 */
DOV0_EXPORT void DOV0_DecodeRaw(unsigned char *bytes, const unsigned char *sextets) DOV0_NOEXCEPT;

/** @} */

/**
 * @defgroup records Records, dumps and paths
 * @{
 */

/** Size in bytes of a fully qualified file name, the terminator included. */
#define DOV0_PATH_NAME_SIZE 512

/**
 * Scrambles a text record in place so that it is unreadable at sight. Printable ASCII characters are
 * replaced by others, by a shift that differs from position to position; all other bytes stay. This
 * keeps a casual reader out and is no encryption.
 *
 * @param record the record, changed in place, its length kept; null is returned as it is
 * @param seed   any number; the same one restores the record
 * @return record
 *
 * Any thread, as long as no other one uses the record.
 */
DOV0_EXPORT char *DOV0_EncipherRecord(char *record, int32_t seed) DOV0_NOEXCEPT;

/**
 * Restores in place a text record that DOV0_EncipherRecord() scrambled.
 *
 * @param record the record, changed in place, its length kept; null is returned as it is
 * @param seed   the number that it was scrambled with
 * @return record
 *
 * Any thread, as long as no other one uses the record. Reports no entry and exit events.
 */
DOV0_EXPORT char *DOV0_DecipherMetaRecord(char *record, int32_t seed) DOV0_NOEXCEPT;

/**
 * Computes a 16-bit checksum in the manner of the Internet checksum, with a term of its own: for every
 * four bytes the word made of the first and the third is added once more.
 *
 * @param data           the bytes; only read. Null gives an error message and 0
 * @param size           how many; the last size modulo 4 are ignored
 * @param inNetworkOrder 0 for local characters, which are summed in their network form
 *                       (DOV0_ConvertDataToNetwork()); any other value for bytes to be summed as they are
 * @return the checksum, 0 to 65535; 0 (with an error message) also when size is below 4 or there is no
 *         storage
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_ComputeCheckSum(const void *data, int32_t size,
                                         int32_t inNetworkOrder) DOV0_NOEXCEPT;

/**
 * Writes memory to the trace as a hexadecimal dump with its characters beside it, sixteen bytes a line,
 * whatever the trace level. Each line begins with the position from the start of the dump in hexadecimal.
 * When the dump begins before base, the line that holds base is written in two parts, split there.
 *
 * @param base the address that the limits count from; null gives an error message only
 * @param from bytes from base to the first byte of the dump; may be negative
 * @param to   bytes from base to the end of the dump, not included; nothing is written when it is not above
 *             from
 *
 * Any thread. No other thread may change the memory meanwhile.
 */
DOV0_EXPORT void DOV0_PrintDump(const void *base, int32_t from, int32_t to) DOV0_NOEXCEPT;

/**
 * Makes a directory name end in a separator, in a copy. It is appended also when there is one already.
 *
 * @param pathSpec the directory; null gives null without a message
 * @return a new block with the name and "/", owned by the caller and freed with DOV0_FreeStorage(); null
 *         (with an error message) when there is no storage
 *
 * Any thread.
 */
DOV0_EXPORT char *DOV0_CheckPathSpec(const char *pathSpec) DOV0_NOEXCEPT;

/**
 * Makes a full path name of a file name. Nothing is put between the two parts, so a directory has to end
 * in "/".
 *
 * Without a directory the work directory is taken: the value of the environment variable DOV_WORK_PATH with
 * "/" appended, or "./work/" when that is unset or empty. It is settled by the first call of the process that
 * succeeds; a later change of the variable has no effect.
 *
 * @param pathSpec the directory; null for the work directory
 * @param nameSpec the file's name; null gives an error message and null
 * @return a new block of #DOV0_PATH_NAME_SIZE bytes with the path name, owned by the caller and freed with
 *         DOV0_FreeStorage(). What no longer fits is left out, with a warning in the trace. Null (with an
 *         error message) when there is no storage
 *
 * Any thread, as long as none changes the environment.
 *
 *     char *name = DOV0_ConstructFullyQualifiedName("/var/agent/", "agent.log");
 */
DOV0_EXPORT char *DOV0_ConstructFullyQualifiedName(const char *pathSpec, const char *nameSpec) DOV0_NOEXCEPT;

/**
 * Closes a stream and sets the caller's pointer to null, also when closing it fails.
 *
 * @param stream address of the caller's stream pointer; null, or the address of a null pointer, gives an
 *               error message only
 *
 * Any thread, as long as no other one uses the stream or the pointer.
 */
DOV0_EXPORT void DOV0_CloseFile(FILE **stream) DOV0_NOEXCEPT;

/** @} */

/**
 * @defgroup ber SNMP BER
 *
 * Writers and readers work on a cursor: the address of the caller's buffer pointer, which they move past what they
 * write or read. None of them knows where the buffer ends. A writer's buffer must have room for the field, and a
 * reader's caller compares lengths with what was received before a value is used; examples/ber_flaw.h shows how.
 *
 *     unsigned char *end = buffer;                       // zero-filled, as working storage is
 *     DOV0_FormatBERintegerType(&end, DOV0_ASN_INTEGER, 42);
 *     DOV0_FormatBERoctetstringType(&end, DOV0_ASN_OCTETSTRING, name, nameLength);
 * @{
 */

/** BER tags: the whole identifier octet. Multi-byte tag numbers are not supported. */
typedef enum DOV0_ASN1tag {
    DOV0_ASN_INTEGER = 0x02,
    DOV0_ASN_OCTETSTRING = 0x04,
    DOV0_ASN_NULL = 0x05,
    DOV0_ASN_OBJECTIDENTIFIER = 0x06,
    DOV0_ASN_SEQUENCE = 0x30
} DOV0_ASN1tag;

/** Bounds of the object identifier functions. */
enum {
    DOV0_OID_LARGEST_CONTENT = 96, /**< bytes of content that DOV0_DecodeOIDfromBER() takes */
    DOV0_OID_LARGEST_COUNT = 97,   /**< entries of the array that it returns */
    DOV0_OID_TEXT_SIZE = 1024      /**< bytes of the text that DOV0_ConvertOIDtoString() returns */
};

/**
 * Writes a BER length field: one byte for lengths up to 127, else 0x82, 0x83 or 0x84 and that many bytes (0x81 is never
 * written, so that 128 becomes 0x82 0x00 0x80).
 *
 * @param cursor address of the pointer to where the field goes; moved past it
 * @param length the length to write, at least 1
 * @return 1; or 0 with nothing written when length is 0, or (with an error message) when the pointer is null
 *
 * Any thread, as long as no other one uses the buffer.
 */
DOV0_EXPORT int32_t DOV0_FormatBERlengthField(unsigned char **cursor, uint32_t length) DOV0_NOEXCEPT;

/**
 * Writes a field with a signed integer in as many bytes as its magnitude needs. A negative value may take one byte more
 * than it must, and INT32_MIN is written as one byte 0.
 *
 * @param cursor address of the pointer to where the field goes; moved past it
 * @param tag    the field's tag, combined by OR with the byte that is there: a buffer that was not used before holds 0
 * @param value  the integer
 * @return bytes written, 3 to 6; 0 (with an error message) when the pointer is null
 *
 * Any thread, as long as no other one uses the buffer.
 */
DOV0_EXPORT int32_t DOV0_FormatBERintegerType(unsigned char **cursor, unsigned char tag,
                                              int32_t value) DOV0_NOEXCEPT;

/**
 * Writes a field that holds nothing: 0x05 0x00.
 *
 * @param cursor address of the pointer to where the field goes; moved past it
 * @return bytes written, 2; 0 (with an error message) when the pointer is null
 *
 * Any thread, as long as no other one uses the buffer.
 */
DOV0_EXPORT int32_t DOV0_FormatBERnullType(unsigned char **cursor) DOV0_NOEXCEPT;

/**
 * Writes a field with bytes. An empty value cannot be written.
 *
 * @param cursor address of the pointer to where the field goes; moved past it
 * @param tag    the field's tag
 * @param data   the bytes; they stay the caller's
 * @param length how many, 1 to INT32_MAX - 6
 * @return bytes written; 0 (with an error message, and nothing written) when a pointer is null or the length is not in
 *         its range
 *
 * Any thread, as long as no other one uses the buffer.
 */
DOV0_EXPORT int32_t DOV0_FormatBERoctetstringType(unsigned char **cursor, unsigned char tag,
                                                  const unsigned char *data, int32_t length) DOV0_NOEXCEPT;

/**
 * Reads the tag and the length of a field and tells where its value is. Of the buffer only the tag and the length field
 * are read; with the detail bit of the trace level on, the value is as well when it has up to 2^24 bytes.
 *
 * @param cursor    address of the pointer to the field; moved past the value, as far as the address space goes
 * @param lengthOut receives the bytes of the value; may be null
 * @param valueOut  receives where the value begins, null when its length is 0; may be null
 * @return the tag; 0 (with an error message, and nothing stored) when the pointer is null
 *
 * A length field with more than 4 length bytes is skipped with an error message: the tag is returned, the length is 0.
 * So is the length of the indefinite form (0x80), without a message. Any thread.
 *
 *     unsigned char *next = message, *value;
 *     uint32_t length;
 *     uint32_t tag = DOV0_ExtractBERfield(&next, &length, &value);
 *     if (length > (size_t)(end - message) || next > end) { ... }   // cut off, or worse
 */
DOV0_EXPORT uint32_t DOV0_ExtractBERfield(unsigned char **cursor, uint32_t *lengthOut,
                                          unsigned char **valueOut) DOV0_NOEXCEPT;

/**
 * Reads a field with an integer of up to 4 bytes. Fewer than 4 are taken without their sign (0x02 0x01 0xFF is 255);
 * none are 0.
 *
 * @param cursor   address of the pointer to the field; moved past it, or left alone when it has another tag
 * @param valueOut receives the integer; left alone on failure; may be null
 * @return 1; 0 (with an error message) when the pointer is null, the tag is not DOV0_ASN_INTEGER or the integer has
 *         more than 4 bytes
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_ExtractBERinteger(unsigned char **cursor, int32_t *valueOut) DOV0_NOEXCEPT;

/**
 * Names a tag: "ASN_INTEGER" and so on.
 *
 * @param tag the tag in the lowest byte; the others do not count
 * @return the name, a constant; "UNKNOWN" for a tag that is not one of #DOV0_ASN1tag
 *
 * Any thread.
 */
DOV0_EXPORT const char *DOV0_GetASN1typeString(int32_t tag) DOV0_NOEXCEPT;

/**
 * Encodes an object identifier as a BER field.
 *
 * Elements are decimal numbers as strtoll() reads them, in the current locale's notion of white space; what is no number
 * counts as 0, and several dots are as good as one. The first must be below 3 and the second below 40. Elements up to
 * 2^35 - 1 are encoded whole, larger ones by their lower 35 bits, negative ones by their lowest byte. A text of a single
 * element gives a field without a length, which no reader takes.
 *
 * @param text    for example "1.3.6.1.2.1.1.1.0"; null counts as empty
 * @param berOut  receives a new block with tag, length and content, owned by the caller and freed with
 *                DOV0_FreeStorage(); null on failure
 * @param sizeOut receives its size in bytes; 0 on failure
 * @return 1; 0 (with an error message) for an empty text, one without elements, a first or second element out of range,
 *         a null argument or no storage
 *
 * Uses the calling thread's DOV0_strtok() and ends what the thread had begun with it. Any thread.
 *
 *     unsigned char *field;
 *     int32_t size;
 *     if (DOV0_FormatOIDfromString("1.3.6.1.2.1.1.1.0", &field, &size)) { ... DOV0_FreeStorage(&field); }
 */
DOV0_EXPORT int32_t DOV0_FormatOIDfromString(const char *text, unsigned char **berOut,
                                             int32_t *sizeOut) DOV0_NOEXCEPT;

/**
 * Decodes the content of an object identifier field, as DOV0_ExtractBERfield() finds it.
 *
 * @param content  the bytes after tag and length; the first holds the first two elements
 * @param length   how many, 1 to #DOV0_OID_LARGEST_CONTENT
 * @param countOut receives the number of elements; 0 on every failure
 * @return a new array of #DOV0_OID_LARGEST_COUNT entries, owned by the caller and freed with DOV0_FreeStorage(). An
 *         empty one (with a message and a dump of the content whatever the trace level) when the content is too long.
 *         Null (with an error message) when an element has more than five bytes or is cut off, a pointer is null, length
 *         is below 1 or there is no storage.
 *
 * Elements of five bytes that do not fit into 32 bits lose their upper bits. Any thread.
 */
DOV0_EXPORT uint32_t *DOV0_DecodeOIDfromBER(const unsigned char *content, int32_t length,
                                            int32_t *countOut) DOV0_NOEXCEPT;

/**
 * Renders sub-identifiers as dotted text. They are printed as signed numbers.
 *
 * @param array the sub-identifiers; may be null when count is below 1
 * @param count how many; below 1 gives an empty text
 * @return a new text in a block of #DOV0_OID_TEXT_SIZE bytes, owned by the caller and freed with DOV0_FreeStorage(), cut
 *         off where the block ends; null (with an error message) when array is null or there is no storage
 *
 * Any thread.
 */
DOV0_EXPORT char *DOV0_ConvertOIDtoString(const uint32_t *array, int32_t count) DOV0_NOEXCEPT;

/** @} */

/**
 * @defgroup datafields Typed data fields
 *
 * Records for the data collection host: a total length of 4 bytes that counts itself, and fields. A field is its length
 * in 4 bytes, its type in 2, and data; its length counts those 6 bytes too. Integers are big-endian.
 * @{
 */

/**
 * Data type codes, by encoding and number. SHORT is an integer of 2 bytes, INT and LONG are of 4 (int16_t and int32_t in
 * memory, signed or not), BYTE is one byte, RAW is bytes, TEXT is a text that travels without its terminator.
 */
typedef enum DOV0_DataType {
    DOV0_DATA_NONE = 0, /**< accepted by the reader only */
    DOV0_DATA_SHORT_16 = 16,
    DOV0_DATA_SHORT_83 = 83,
    DOV0_DATA_SHORT_112 = 112,
    DOV0_DATA_SHORT_256 = 256,
    DOV0_DATA_SHORT_257 = 257,
    DOV0_DATA_INT_17 = 17,
    DOV0_DATA_INT_64 = 64,
    DOV0_DATA_INT_128 = 128,
    DOV0_DATA_INT_288 = 288,
    DOV0_DATA_INT_352 = 352,
    DOV0_DATA_LONG_368 = 368,
    DOV0_DATA_BYTE_48 = 48,
    DOV0_DATA_RAW_18 = 18,
    DOV0_DATA_RAW_82 = 82,
    DOV0_DATA_TEXT_32 = 32,
    DOV0_DATA_TEXT_33 = 33,
    DOV0_DATA_TEXT_34 = 34,
    DOV0_DATA_TEXT_35 = 35,
    DOV0_DATA_TEXT_36 = 36,
    DOV0_DATA_TEXT_40 = 40,
    DOV0_DATA_TEXT_41 = 41,
    DOV0_DATA_TEXT_80 = 80,
    DOV0_DATA_TEXT_96 = 96,
    DOV0_DATA_TEXT_144 = 144,
    DOV0_DATA_TEXT_272 = 272,
    DOV0_DATA_TEXT_304 = 304,
    DOV0_DATA_TEXT_320 = 320,
    DOV0_DATA_TEXT_336 = 336,
    DOV0_DATA_TEXT_384 = 384,
    DOV0_DATA_TEXT_400 = 400,
    DOV0_DATA_ATTRIBUTE_81 = 81 /**< encoded as the attribute type says */
} DOV0_DataType;

/** Attribute types that make #DOV0_DATA_ATTRIBUTE_81 an integer; with any other it is bytes. */
typedef enum DOV0_AttributeType {
    DOV0_ATTRIBUTE_SHORT = 'S',   /**< an integer of 2 bytes */
    DOV0_ATTRIBUTE_COUNTER = 'C', /**< this and the others: an integer of 2 or 4 bytes, as its size says */
    DOV0_ATTRIBUTE_GAUGE = 'G',
    DOV0_ATTRIBUTE_NUMBER_A = 'A',
    DOV0_ATTRIBUTE_NUMBER_QUESTION = '?',
    DOV0_ATTRIBUTE_NUMBER_HASH = '#',
    DOV0_ATTRIBUTE_NUMBER_PERCENT = '%'
} DOV0_AttributeType;

/** Bits of a sysServices value that DOV0_DetermineNodeServiceType() has a word for. */
typedef enum DOV0_NodeService {
    DOV0_SERVICE_REPEATERS = 1,
    DOV0_SERVICE_BRIDGES = 2,
    DOV0_SERVICE_GATEWAYS = 4,
    DOV0_SERVICE_HOSTS = 8,
    DOV0_SERVICE_APPLICATIONS = 64
} DOV0_NodeService;

/** Bytes of the text that DOV0_DetermineNodeServiceType() returns. */
enum { DOV0_SERVICE_TEXT_SIZE = 64 };

/**
 * Writes a field behind the others of a record and adds its length to the total.
 *
 * @param totalLength the record's total length, 4 bytes at any alignment; set to 4 first when the field comes right
 *                    behind it, which is how a record begins
 * @param field       where the field goes, with room for it: 6 bytes and the data
 * @param type        one of #DOV0_DataType but #DOV0_DATA_NONE. Any other value is a logic error: after an error message
 *                    and a line on standard output, which is flushed, the process ends with abort().
 * @param value       the value, in host order and at any alignment; a null text is written as an empty one
 * @param size        bytes of the value for RAW types, counters and gauges; else not used. A counter of a size other than
 *                    2 and 4 must still have 16 bytes, which are dumped to the trace.
 * @param attrType    the attribute type, one of #DOV0_AttributeType or any other character; only for
 *                    #DOV0_DATA_ATTRIBUTE_81, where null is no attribute type in particular
 * @return bytes of the field: 6 (with an error message) when a counter has a size other than 2 and 4, the value is null
 *         or its size below 0 or above INT32_MAX - 6; 0 (with an error message, and nothing written) when totalLength or
 *         field is null
 *
 * Any thread, as long as no other one uses the record.
 *
 *     int32_t value = 5;
 *     unsigned char record[64], *next = record + 4;
 *     next += DOV0_FormatDataField(record, next, DOV0_DATA_INT_17, &value, sizeof value, NULL);
 */
DOV0_EXPORT int32_t DOV0_FormatDataField(void *totalLength, void *field, int32_t type, const void *value,
                                         int32_t size, const char *attrType) DOV0_NOEXCEPT;

/**
 * Reads a field: tells where its data is and turns integers into host order, in place. An integer whose data has not the
 * size of its type stays as it is. The end of the record is not known here.
 *
 * @param cursor    address of the pointer to the field; moved past it
 * @param dataOut   receives where the data begins, at any alignment; may be null
 * @param lengthOut receives the bytes of data; 0 for a field length below 6 or above INT32_MAX; may be null
 * @param attrType  as for DOV0_FormatDataField()
 * @return the type, whether known or not (an unknown one under a detail message); 0 (with an error message, and nothing
 *         stored) when the pointer is null
 *
 * Reading a field twice would convert it twice. Any thread, as long as no other one uses the record.
 */
DOV0_EXPORT int32_t DOV0_ExtractDataField(unsigned char **cursor, unsigned char **dataOut, int32_t *lengthOut,
                                          const char *attrType) DOV0_NOEXCEPT;

/**
 * Reserved: does nothing with any arguments.
 *
 * @return 0
 *
 * Any thread.
 */
#if defined(__cplusplus) || (defined(__STDC_VERSION__) && __STDC_VERSION__ >= 202311L)
DOV0_EXPORT int32_t DOV0_ExtractXMLfield(...) DOV0_NOEXCEPT;
#else
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wstrict-prototypes"
DOV0_EXPORT int32_t DOV0_ExtractXMLfield();
#pragma GCC diagnostic pop
#endif

/**
 * Names the service layers of an SNMP sysServices value, joined by commas: 72 is "Applications,Hosts". A bit of
 * #DOV0_NodeService is found by subtracting from the largest down, so that the values 16 and 32, which have no word,
 * show as the smaller ones.
 *
 * @param services the value; below 1 is "Unspecified"
 * @return a new text in a block of DOV0_SERVICE_TEXT_SIZE bytes, owned by the caller and freed with DOV0_FreeStorage();
 *         null (with an error message) when there is no storage
 *
 * Any thread.
 */
DOV0_EXPORT char *DOV0_DetermineNodeServiceType(int32_t services) DOV0_NOEXCEPT;

/** @} */

/**
 * @defgroup byteorder EBCDIC, ASCII and byte order
 * @{
 */

/** Types of data for DOV0_CheckCodeConversion(). */
typedef enum DOV0_SourceType {
    DOV0_SOURCE_ASCII = 'A', /**< text in an ASCII code page */
    DOV0_SOURCE_EBCDIC = 'E' /**< text in EBCDIC */
} DOV0_SourceType;

/**
 * Brings characters from the network character set (EBCDIC code page 1047) into the local one (ASCII), in
 * place. What 7-bit ASCII does not have becomes a question mark. A few control characters do not come
 * back from a way to the network and back: 0x1C to 0x1F and 0x7F.
 *
 * @param buffer the bytes, changed in place; null gives an error message when length is above 0
 * @param length how many; 0 or less converts nothing
 *
 * Any thread, as long as no other one uses the buffer.
 */
DOV0_EXPORT void DOV0_ConvertDataToLocal(void *buffer, int32_t length) DOV0_NOEXCEPT;

/**
 * Brings characters from the local character set (ASCII) into the network one (EBCDIC code page 1047), in
 * place. A byte above 0x7F becomes an EBCDIC question mark and is named in a detail message.
 *
 * @param buffer the bytes, changed in place; null gives an error message when length is above 0
 * @param length how many; 0 or less converts nothing
 *
 * Any thread, as long as no other one uses the buffer.
 */
DOV0_EXPORT void DOV0_ConvertDataToNetwork(void *buffer, int32_t length) DOV0_NOEXCEPT;

/**
 * Turns EBCDIC code page 1047 into 7-bit ASCII in place, whatever the local character set, otherwise like
 * DOV0_ConvertDataToLocal().
 *
 * @param buffer the bytes, changed in place; null gives an error message when length is above 0
 * @param length how many; 0 or less converts nothing
 *
 * Any thread, as long as no other one uses the buffer.
 */
DOV0_EXPORT void DOV0_ConvertEBCDICtoASCII(void *buffer, int32_t length) DOV0_NOEXCEPT;

/**
 * Tells whether data is pure 7-bit ASCII.
 *
 * @param buffer the bytes, or null for none
 * @param length how many; 0 or less for none
 * @return 0 when a byte has its high bit set, else 1
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_IsSourceASCII(const void *buffer, int32_t length) DOV0_NOEXCEPT;

/**
 * Decides whether data that arrives has to be converted for this process. On an ASCII host only ASCII
 * data in the default converter's code page, under an English default locale ("en_" in its name), is taken
 * as it stands. The defaults are ICU's, ucnv_getDefaultName() and uloc_getDefault().
 *
 * @param type     one of #DOV0_SourceType; any other character means data in neither
 * @param codepage name of the data's code page, compared exactly; null for the default one
 * @return 1 when the data has to be converted, else 0
 *
 * Any thread, as long as none changes ICU's defaults.
 */
DOV0_EXPORT int32_t DOV0_CheckCodeConversion(char type, const char *codepage) DOV0_NOEXCEPT;

/**
 * Reverses the bytes of a 16-bit integer, whatever the host's byte order.
 *
 * @param integer its two bytes, changed in place, at any alignment; null gives an error message only
 *
 * Any thread, as long as no other one uses the integer.
 */
DOV0_EXPORT void DOV0_ConvertShortEndian(void *integer) DOV0_NOEXCEPT;

/**
 * Reverses the bytes of a 32-bit integer, whatever the host's byte order.
 *
 * @param integer its four bytes, changed in place, at any alignment; null gives an error message only
 *
 * Any thread, as long as no other one uses the integer.
 */
DOV0_EXPORT void DOV0_ConvertLongEndian(void *integer) DOV0_NOEXCEPT;

/**
 * Brings an integer from network order into the host's, or back: a little-endian host reverses its bytes,
 * a big-endian one changes nothing.
 *
 * @param integer its bytes, changed in place, at any alignment; null is left alone
 * @param size    2 or 4; an integer of any other size is left alone
 *
 * Any thread, as long as no other one uses the integer.
 */
DOV0_EXPORT void DOV0_CheckIntegerEndian(void *integer, int32_t size) DOV0_NOEXCEPT;

/** @} */

/**
 * @defgroup unicode Unicode text and line reading
 *
 * The agent's internal text is UTF-8. UTF-16 text is in units of the host's byte order.
 *
 * A text file of unknown encoding is read by this sequence of calls; `examples/read_lines` is a whole program:
 *
 *     encoding = DOV0_LNG2_GetFileEncoding(path, &markLength, mark);   // null: no byte order mark
 *     type = DOV0_LNG2_GetFileEncodingType(encoding);
 *     stream = fopen(path, "rb");
 *     fseek(stream, markLength, SEEK_SET);
 *     while (DOV0_Fgets(buffer, sizeof buffer, stream, &count, encoding, type, 1) != NULL) {
 *         ...
 *     }
 * @{
 */

/** Bits of a UTF encoding type. None: single bytes or UTF-8. */
typedef enum DOV0_UTFEncodingBit {
    DOV0_UTF_16BIT = 0x02,         /**< units of 16 bits */
    DOV0_UTF_32BIT = 0x04,         /**< units of 32 bits */
    DOV0_UTF_LITTLE_ENDIAN = 0x08, /**< low-order byte first */
    DOV0_UTF_BIG_ENDIAN = 0x10     /**< high-order byte first */
} DOV0_UTFEncodingBit;

/** UTF encoding types. */
typedef enum DOV0_UTFEncodingType {
    DOV0_UTF_BYTES = 0,                                     /**< single bytes, UTF-8 and whatever else */
    DOV0_UTF16 = DOV0_UTF_16BIT,                            /**< "UTF-16", read as big-endian */
    DOV0_UTF16BE = DOV0_UTF_16BIT | DOV0_UTF_BIG_ENDIAN,    /**< "UTF-16BE" */
    DOV0_UTF16LE = DOV0_UTF_16BIT | DOV0_UTF_LITTLE_ENDIAN, /**< "UTF-16LE" */
    DOV0_UTF32 = DOV0_UTF_32BIT,                            /**< "UTF-32", read as big-endian */
    DOV0_UTF32BE = DOV0_UTF_32BIT | DOV0_UTF_BIG_ENDIAN,    /**< "UTF-32BE" */
    DOV0_UTF32LE = DOV0_UTF_32BIT | DOV0_UTF_LITTLE_ENDIAN  /**< "UTF-32LE" */
} DOV0_UTFEncodingType;

/** Sizes in line reading. */
enum {
    DOV0_BYTE_ORDER_MARK_SIZE = 4,   /**< bytes of a mark that DOV0_LNG2_GetFileEncoding() stores */
    DOV0_LINE_CONVERSION_SIZE = 8192 /**< longest converted line of DOV0_Fgets(), in bytes */
};

/**
 * Opens the UTF-8 converter that all threads share. The operations that need it run this once, by themselves; a
 * direct call replaces the converter.
 *
 * @param ignored not used; may be null
 *
 * A converter that cannot be opened is reported as an error. The operations that need it then give 0.
 *
 * Any thread.
 */
DOV0_EXPORT void DOV0_UTF8ConverterInitialization(void *ignored) DOV0_NOEXCEPT;

/**
 * Converts data in a named code set to UTF-16. Sequences that are malformed in the code set become U+FFFD.
 *
 * @param codeset   any converter name that ICU knows
 * @param data      the data
 * @param length    bytes of data, at least 1
 * @param outBuffer set to a new buffer of length units, owned by the caller and freed with DOV0_FreeStorage(); the
 *                  text in it is not terminated. Left alone on failure
 * @param outCount  set to the number of units in the buffer. Left alone on failure
 * @return the number of units; 0, with an error message, when an argument is null or length is below 1, for an
 *         unknown code set, without storage, and when the text has more units than the data has bytes. Data that
 *         stands for no text at all (a mark alone) also gives 0, and the buffer
 *
 * Any thread.
 *
 *     char16_t *text;
 *     int32_t units;
 *     if (DOV0_ConvertDataToUnicode("ISO-8859-1", data, length, &text, &units) != 0) {
 *         ...
 *         DOV0_FreeStorage(&text);
 *     }
 */
DOV0_EXPORT int32_t DOV0_ConvertDataToUnicode(const char *codeset, const char *data, int32_t length,
                                              char16_t **outBuffer, int32_t *outCount) DOV0_NOEXCEPT;

/**
 * Converts UTF-16 to UTF-8. Unpaired surrogates become U+FFFD.
 *
 * @param text   the text; null gives 0 with output untouched
 * @param units  units of text; 0 or less gives 0 with output untouched
 * @param output where the result is stored, always terminated
 * @param size   bytes of output; 0 or less gives 0 with output untouched
 * @return bytes of the result up to its terminator (a zero unit in text ends it early); 0, with an error message,
 *         when the conversion fails and when the result and its terminator need more than size bytes. What fits is
 *         in output then
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_ConvertUnicodeToUTF8(const char16_t *text, int32_t units, char *output,
                                              int32_t size) DOV0_NOEXCEPT;

/**
 * Counts the UTF-16 units of a UTF-8 text. A character outside the Basic Multilingual Plane counts twice, and each
 * malformed sequence once, as U+FFFD.
 *
 * @param text      the text; null gives 0
 * @param length    bytes of text; 0 or less gives 0
 * @param outBuffer set to a new buffer with the text in UTF-16, not terminated, owned by the caller and freed with
 *                  DOV0_FreeStorage(); also after a failed conversion, but left alone when there is no text. May
 *                  be null when only the count is wanted
 * @return the number of units; 0, with an error message, when the conversion fails or there is no storage
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_GetUTF8CharacterCount(const char *text, int32_t length,
                                               char16_t **outBuffer) DOV0_NOEXCEPT;

/**
 * Converts UTF-8 to the process's native code page: that of the current locale object, else that of ICU's default
 * converter. What the code page cannot express is replaced by its substitution character.
 *
 * @param text   the text; null gives 0
 * @param length bytes of text; 0 or less gives 0
 * @param output where the result is stored; the supplied language support terminates it where there is room
 * @param size   bytes of output
 * @return bytes of the result; 0, with an error message, when there is no locale object and when the result does
 *         not fit or cannot be made
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_ConvertUTF8ToNative(const char *text, int32_t length, char *output,
                                             int32_t size) DOV0_NOEXCEPT;

/**
 * Steps a pointer over UTF-8 characters.
 *
 * The terminator is a character like any other here: a count larger than the text steps over it into
 * whatever follows. The text must hold as many characters as are asked for.
 *
 * @param text  the text; null and empty ones are reported as an error
 * @param count characters to step over; 0 or less steps over none
 * @return the address behind the characters, inside text. At a malformed sequence, which is reported as an error,
 *         the address of that sequence. Null for a null or empty text
 *
 * Any thread.
 */
DOV0_EXPORT const char *DOV0_MoveStringPointerByChar(const char *text, int32_t count) DOV0_NOEXCEPT;

/**
 * Finds a character in a buffer of single bytes, of UTF-16 or of UTF-32. A match counts only where a unit begins.
 *
 * The search looks for the first non-zero byte of the character that is not its last (else for the last) and skips
 * a unit at the first such byte in it that is out of place. So the character of zeros is not found, and backward
 * neither is one that has the byte a second time further behind, like U+0A0A.
 *
 * @param buffer    the text; null gives null
 * @param length    bytes of buffer; what is left over of the last unit is not searched
 * @param character the character in the bytes of the encoding: one, two or four of them by type; null gives null
 * @param type      one of #DOV0_UTFEncodingType; any other is searched like single bytes
 * @param forward   other than 0: the first occurrence, 0: the last
 * @return the address of the character in buffer, or null
 *
 * Any thread.
 *
 *     char *lineEnd = DOV0_FindChar(text, length, "\0\n", DOV0_UTF16BE, 1);
 */
DOV0_EXPORT char *DOV0_FindChar(const char *buffer, int32_t length, const char *character, uint16_t type,
                                int32_t forward) DOV0_NOEXCEPT;

/**
 * Finds a text file's encoding by its byte order mark.
 *
 * @param path       the file; a file that cannot be opened, and null, give null
 * @param markLength set to the bytes of the mark, 0 without one; may be null
 * @param mark       #DOV0_BYTE_ORDER_MARK_SIZE bytes, set to the first bytes of the mark with zeros behind them;
 *                   may be null
 * @return the encoding's name as ICU has it ("UTF-8", "UTF-16LE", ...), not to be freed; null for a file without a
 *         mark, without content, or that cannot be read
 *
 * Of a file without content the stream stays open, so each such call costs a file descriptor.
 *
 * Traces nothing on failure. Any thread.
 */
DOV0_EXPORT const char *DOV0_LNG2_GetFileEncoding(const char *path, int32_t *markLength,
                                                  unsigned char *mark) DOV0_NOEXCEPT;

/**
 * Tells the UTF encoding type that an encoding's name stands for.
 *
 * @param encoding the name, compared exactly: "UTF-16" is known, "utf-16" is not; may be null
 * @return one of #DOV0_UTFEncodingType, #DOV0_UTF_BYTES for null and for any other name, "UTF-8" included
 *
 * Any thread.
 */
DOV0_EXPORT uint16_t DOV0_LNG2_GetFileEncodingType(const char *encoding) DOV0_NOEXCEPT;

/**
 * Reads a line, with its newline, from a file in any encoding, and converts it to UTF-8 if wanted.
 *
 * #DOV0_UTF_BYTES is read with fgets(). Any other type is read in chunks of 64 bytes (fewer in a smaller buffer, always
 * a multiple of 4) until one holds the newline unit, and the stream is set back behind the line. That is exact for a
 * line that ends in its first chunk. Behind a longer one the stream stands too far: a caller who may meet long lines
 * sets it himself, to its position before the call plus byteCount. A line that is longer than the buffer comes in
 * pieces.
 *
 * A line in UTF-16 or UTF-32 that is not converted is not terminated. A converted line is, unless it fills the buffer.
 *
 * @param buffer         where the line is stored; null gives null
 * @param readBufferSize bytes of buffer. Of a larger one a conversion uses #DOV0_LINE_CONVERSION_SIZE bytes
 * @param stream         the file, open for reading and seekable, behind its byte order mark; null gives null
 * @param byteCount      set to the bytes that the line has in the file (up to a zero byte, for #DOV0_UTF_BYTES), also
 *                       when it was converted; 0 at the end of the file; may be null
 * @param encoding       the encoding's name, any that ICU knows; null is read like #DOV0_UTF_BYTES and not converted
 * @param type           its UTF encoding type. A type that no encoding has is read up to a byte 0A
 * @param convertToUTF8  other than 0: convert the line, unless encoding is exactly "UTF-8"
 * @return buffer; null at the end of the file and, with an error message, when the line cannot be converted. A
 *         conversion that does not fit is an error message too, and the line is cut
 *
 * A read error ends the line like the end of the file.
 *
 * Any thread, one at a time for a stream.
 */
DOV0_EXPORT char *DOV0_Fgets(char *buffer, int32_t readBufferSize, FILE *stream, int32_t *byteCount,
                             const char *encoding, uint16_t type, int32_t convertToUTF8) DOV0_NOEXCEPT;

/**
 * Reads a line, with its newline, from a file that has to be UTF-8, and removes a UTF-8 mark before it.
 *
 * @param buffer where the line is stored, terminated; null gives null
 * @param size   bytes of buffer, all of which are looked at for a mark
 * @param stream the file, open for reading; null gives null
 * @return buffer; null at the end of the file, after a read error, and, with an error message, for a line that
 *         begins with the mark of another Unicode encoding
 *
 * Any thread, one at a time for a stream.
 */
DOV0_EXPORT char *DOV0_fgets(char *buffer, int32_t size, FILE *stream) DOV0_NOEXCEPT;

/** @} */

/**
 * @defgroup messages Message catalogue and console
 * @{
 */

/** Message classes; each has its keys in the catalogue: "DOVP", a letter, and the message number. */
typedef enum DOV0_MessageClass {
    DOV0_MESSAGE_CLASS_A = 1,      /**< keys "DOVPA..." */
    DOV0_MESSAGE_CLASS_G = 2,      /**< keys "DOVPG..." */
    DOV0_MESSAGE_CLASS_L = 3,      /**< keys "DOVPL..." */
    DOV0_MESSAGE_CLASS_S = 4,      /**< keys "DOVPS..." */
    DOV0_MESSAGE_CLASS_S_ALSO = 5, /**< keys "DOVPS..." too */
    DOV0_MESSAGE_CLASS_V = 6       /**< keys "DOVPV..." */
} DOV0_MessageClass;

/** Bounds of a message. */
enum {
    DOV0_MESSAGE_PARAMETER_UNITS = 512, /**< a longer parameter is cut, in UTF-16 units */
    DOV0_MESSAGE_UNITS = 2048           /**< a longer message is cut, in UTF-16 units */
};

/**
 * Makes an operator message in the language of the current locale.
 *
 * The catalogue is the resource bundle "dovpmsg" in the directory that DOVP_RB_PATH names, else LNG1_LOCALEDIR, else in
 * "./rb"; the directory is settled by the first call in the process. The locale is the product specification's
 * (#DOV0_PSF_AGENT_LOCALE), else ICU's default one. A pattern is one of ICU's message patterns with the parameters
 * {0} to {4}, which are texts.
 *
 * @param messageClass  one of #DOV0_MessageClass; any other is reported as an error
 * @param output        where the message is stored in the native code page (ICU's default converter), always
 *                      terminated; a longer message is cut. Empty after any failure. Null is reported as an error
 * @param outputSize    bytes of output; below 1 is reported as an error and output is left alone
 * @param messageNumber the message, of at most seven characters; a longer number is reported as an error
 * @param parameter1    {0}, in the native code page; null and empty stand for "?"
 * @param parameter2    {1}
 * @param parameter3    {2}
 * @param parameter4    {3}
 * @param parameter5    {4}
 *
 * Failures are reported as errors: no locale object, no bundle, no such message, a pattern that is malformed or asks
 * for anything but the five texts, no converter. The first two also write to standard output.
 *
 * Any thread.
 *
 *     char text[256];
 *     DOV0_LNG2_Message(DOV0_MESSAGE_CLASS_V, text, sizeof text, 599, "/opt/agent/messages", NULL, NULL, NULL, NULL);
 */
DOV0_EXPORT void DOV0_LNG2_Message(int32_t messageClass, char *output, int32_t outputSize,
                                   int32_t messageNumber, const char *parameter1, const char *parameter2,
                                   const char *parameter3, const char *parameter4,
                                   const char *parameter5) DOV0_NOEXCEPT;

/**
 * Converts a text from the native code page (ICU's default converter) to UTF-16, as a parameter of a message.
 *
 * @param locale   not used; may be null
 * @param target   where the result is stored, terminated where there is room; a longer one is cut
 * @param capacity units of target
 * @param text     the text; null is reported as an error
 *
 * A converter that cannot be opened and a conversion that fails are reported as errors, and target is not to be used.
 *
 * Any thread.
 */
DOV0_EXPORT void DOV0_LNG2_MsgSubparmToUTF_Util(LNG2_Locale *locale, char16_t *target, int32_t capacity,
                                                const char *text) DOV0_NOEXCEPT;

/**
 * Shows a message on the operators' console.
 *
 * With the agent framework (DOV0_SetDPstartMode() 0, as at start) the message goes to AGF_CreateMessage(). A data
 * provider that runs on its own starts the console's command-line tool and waits for its end:
 *
 *     AGFMESG -s STEXT -c CTEXT "MESSAGE"
 *
 * The environment variable DOV_OMC switches the console off when its first letter is N in either case; it is read once,
 * by the first call in the process.
 *
 * @warning The command is a text for the shell, which acts on what it finds in it: a message, a -c or a -s text with
 * double quotes, dollar signs, backquotes or backslashes can start other programs. With the environment variable
 * DOV_OMC_ESCAPE set to Y, each of these in the message has a backslash put before it, and any message arrives as
 * it is. It is not set by default, and the -c and -s texts are never changed: take them from your own program only.
 *
 * @param cText   the text behind -c, of which only what stands before its first blank is used; null and empty
 *                leave the option out
 * @param sText   the text behind -s; null and empty leave the option out
 * @param message the message; null is reported as an error and gives #DOV0_CONSOLE_NOT_SENT
 * @return 0 when the framework has it; the tool's status as system() gives it; #DOV0_CONSOLE_NOT_SENT when the console
 *         is switched off or, reported as an error, there is no message or no storage
 *
 * Any thread. The calling thread waits for the tool.
 *
 *     DOV0_ZTconsoleMessage("ALERT", NULL, "Node 192.0.2.1 does not answer");
 */
DOV0_EXPORT int32_t DOV0_ZTconsoleMessage(const char *cText, const char *sText,
                                          const char *message) DOV0_NOEXCEPT;

/** Status of DOV0_ZTconsoleMessage() beside 0 and those of system(). */
enum { DOV0_CONSOLE_NOT_SENT = -1 /**< nothing was sent */ };

/**
 * Tells in which code page the system's shell expects commands where text is in a Windows code page:
 *
 * | Windows | 1250 | 1251 | 1252 | 1253 | 1254 | 1255 | 1256 | 1257 |
 * |---------|------|------|------|------|------|------|------|------|
 * | DOS     | 852  | 866  | 850  | 851  | 853  | 856  | 864  | 865  |
 *
 * For #LNG2_LANGUAGE_GREEK and #LNG2_LANGUAGE_TURKISH 737 takes the place of 850.
 *
 * @param codepage the code page of text; one that is not in the table is kept
 * @param language the language identifier, as LNG2_GetThreadLocale() gives it
 * @return the code page for commands
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_CheckSystemCommandCodepage(int32_t codepage, int32_t language) DOV0_NOEXCEPT;

/**
 * Converts a command from UTF-8 to the code page of the shell, which goes with the calling thread's locale (see
 * DOV0_CheckSystemCommandCodepage()), and ends it with a blank. A command of ASCII characters alone is copied and always
 * has a blank appended, another one only where it does not end in one.
 *
 * @param command the command, in UTF-8, not changed; need not be terminated
 * @param length  bytes of command, from 1 to 2147483645
 * @param output  where the result is stored. It must have room for length + 2 bytes, even where size says less: an
 *                ASCII command is followed by the blank and a terminator in any case. Any other result is
 *                terminated where there is room
 * @param size    bytes of output, at least length
 * @return bytes of the result without a terminator; 0 when it was not converted, which is a detail message for null
 *         and for a length or size out of range, and an error otherwise: no locale, no storage, no such code page
 *         (853, for the Turkish 1254, is unknown to ICU), a result that does not fit
 *
 * Any thread.
 *
 *     char line[512];
 *     int32_t length = DOV0_ConvertUTF8CommandToDOS(command, (int32_t)strlen(command), line, sizeof line);
 */
DOV0_EXPORT int32_t DOV0_ConvertUTF8CommandToDOS(const char *command, int32_t length, char *output,
                                                 int32_t size) DOV0_NOEXCEPT;

/** @} */

/**
 * @defgroup hosts Host names and addresses
 * @{
 */

/** Sizes of texts about hosts, in bytes with the terminator. */
enum {
    DOV0_HOST_NAME_SIZE = 256, /**< area of a resolved name, of the local host name and of the local domain */
    DOV0_COMPUTER_NAME_SIZE = 66, /**< area for DOV0_GetLocalComputerName() */
    DOV0_HOST_INFO_SIZE = 17      /**< area for DOV0_GetLocalHostInfo() */
};

/** How DOV0_ConvertAddrToName() gives a name. */
typedef enum DOV0_NameForm {
    DOV0_FULL_NAME = 0, /**< as the resolver has it */
    DOV0_SHORT_NAME = 1 /**< cut at its first "." */
} DOV0_NameForm;

/** What DOV0_IsThisAddressString() answers for a text in the shape of a dotted IPv4 address. */
enum {
    DOV0_ADDRESS_DOTS = 3 /**< the dots of such an address */
};

/**
 * Looks a host name up with gethostbyname(). Look-ups are made one at a time.
 *
 * @param name the host name; null is reported like a name that cannot be resolved
 * @return a copy of the resolver's record, owned by the caller and freed with DOV0_FreeStorage(); null when the
 *         name cannot be resolved, which is reported as an error, or when there is no storage. Only the record
 *         itself is copied: its name and its lists are the resolver's own, and the next look-up of any thread
 *         overwrites them. Read them at once
 *
 * Any thread; see the result.
 *
 *     struct hostent *host = DOV0_GetHostByName("localhost");
 */
DOV0_EXPORT struct hostent *DOV0_GetHostByName(const char *name) DOV0_NOEXCEPT;

/**
 * Looks the name of an IPv4 address up with gethostbyaddr(), unless that has failed before: an address without a
 * name is remembered for the life of the process and not asked for again. A look-up among the remembered ones
 * takes about the same short time however many there are.
 *
 * The environment variable DOV_HOSTENT_DATA_SIZE gives the bytes reserved behind each record, 8192 when it is not
 * set. A value below 0 counts as 0; any other than 0 is read once and kept.
 *
 * @param address 4 bytes in network byte order; null is reported as an error and gives null
 * @return a copy of the resolver's record, owned by the caller and freed with DOV0_FreeStorage(); null when the
 *         address has no name, or when there is no storage (such an address is not remembered). As with
 *         DOV0_GetHostByName(), the name and the lists of the record are the resolver's own. Read them at once
 *
 * An address without a name is no error; it is reported under the state bit and, when remembered, as a detail.
 *
 * Any thread; see the result.
 */
DOV0_EXPORT struct hostent *DOV0_GetHostByAddr(const void *address) DOV0_NOEXCEPT;

/**
 * Fills a socket address from a host name or a dotted address, and a port.
 *
 * A text for which DOV0_IsThisAddressString() answers #DOV0_ADDRESS_DOTS is not looked up but read with inet_addr(),
 * whose rules apply: a leading 0 makes a number octal, and a text that is no address after all (256.1.1.1) is
 * the address 255.255.255.255.
 *
 * @param name        the host name or dotted address; null is a name that cannot be resolved
 * @param port        the port in host byte order, of which the low 16 bits are used
 * @param sockaddrOut what is filled: family AF_INET, the port and the address, which is 0 when the name cannot be
 *                    resolved. Null is reported as an error and gives 0
 * @return 1, or 0 when the name cannot be resolved, which is reported as an error
 *
 * Any thread, with the reserve that a look-up of another thread at the same moment can exchange the addresses.
 *
 *     struct sockaddr_in target;
 *     DOV0_ConvertNameToAddr("192.0.2.1", 161, &target);
 */
DOV0_EXPORT int32_t DOV0_ConvertNameToAddr(const char *name, int32_t port,
                                           struct sockaddr_in *sockaddrOut) DOV0_NOEXCEPT;

/**
 * Gives the host name of a socket address. An address without a name is asked for only once; see
 * DOV0_GetHostByAddr().
 *
 * @param sockaddr  the socket address, of which only the IPv4 address is used
 * @param nameOut   where the name is stored, owned by the caller and freed with DOV0_FreeStorage(); untouched when
 *                  there is none
 * @param shortName #DOV0_FULL_NAME, or #DOV0_SHORT_NAME or any other value to cut the name at its first "."
 * @return 1, or 0 when there is no name or no storage. Null for sockaddr or nameOut is reported as an error and
 *         gives 0
 *
 * Any thread, with the reserve that a look-up of another thread at the same moment can exchange the names.
 */
DOV0_EXPORT int32_t DOV0_ConvertAddrToName(const struct sockaddr_in *sockaddr, char **nameOut,
                                           int32_t shortName) DOV0_NOEXCEPT;

/**
 * Gives the host name of a dotted address. An address without a name is asked for only once; see
 * DOV0_GetHostByAddr().
 *
 * @param dottedAddress the address, read with inet_addr(): a text that is no address is 255.255.255.255. Null is
 *                      reported as an error and gives null
 * @return the name in a new area of #DOV0_HOST_NAME_SIZE bytes, cut to fit, owned by the caller and freed with
 *         DOV0_FreeStorage(); null when there is no name or no storage
 *
 * Any thread, with the reserve that a look-up of another thread at the same moment can exchange the names.
 *
 *     char *name = DOV0_ResolveAddressToName("192.0.2.1");
 */
DOV0_EXPORT char *DOV0_ResolveAddressToName(const char *dottedAddress) DOV0_NOEXCEPT;

/**
 * Gives the name under which the agent presents the local host. It is worked out on the first call and then fixed
 * for the life of the process:
 *
 * - RPCB0_HOSTNAME where that environment variable is set;
 * - else DOV_DCH_HOSTNAME or DOV_DP_HOSTNAME where only one of them is set, or both are equal;
 * - else what gethostname() gives, or the empty text when it gives nothing;
 * - followed by "." and the local domain, where there is one (see DOV0_GetLocalDomainName()) and the name has no ".".
 *
 * It is cut to #DOV0_HOST_NAME_SIZE - 1 bytes.
 *
 * @return the name, always at the same address, never to be freed or changed; null when there is no scratch storage
 *         on the first call, which is reported as an error and tried again by the next call
 *
 * Any thread. The first call can take as long as a look-up of the local host's name.
 */
DOV0_EXPORT char *DOV0_LocalHostNameString(void) DOV0_NOEXCEPT;

/**
 * Gives the dotted IPv4 address of the local host, by its name from DOV0_LocalHostNameString(). Once it is known it
 * is fixed for the life of the process.
 *
 * @return the address, never to be freed or changed; null when the name cannot be resolved or there is no storage,
 *         which the next call tries again
 *
 * Any thread.
 */
DOV0_EXPORT char *DOV0_LocalHostAddrString(void) DOV0_NOEXCEPT;

/**
 * Gives the domain of the local host. Once there is one it is fixed for the life of the process:
 *
 * - none while the environment variable DOV_USE_DOMAIN_NAME begins with "N" or "n";
 * - else DOV_TCPIP_DOMAIN_NAME where that is set, as it is, cut to #DOV0_HOST_NAME_SIZE - 1 bytes;
 * - else what follows the first "." of the host's official name, if that name has two dots or more.
 *
 * @return the domain, never to be freed or changed; null when there is none, which the next call works out again. A
 *         host name that cannot be had or resolved is reported as an error
 *
 * Any thread.
 */
DOV0_EXPORT char *DOV0_GetLocalDomainName(void) DOV0_NOEXCEPT;

/**
 * Copies the node name of the system (uname()). No terminator is written.
 *
 * @param out an area of #DOV0_COMPUTER_NAME_SIZE bytes that the caller has zeroed; null is reported as an error
 * @return 1, also when there is nothing to copy, which is reported as an error
 *
 * Any thread.
 *
 *     char name[DOV0_COMPUTER_NAME_SIZE] = "";
 *     DOV0_GetLocalComputerName(name);
 */
DOV0_EXPORT int32_t DOV0_GetLocalComputerName(char *out) DOV0_NOEXCEPT;

/**
 * Copies the name of the operating system (uname()). No terminator is written.
 *
 * @param out an area of #DOV0_HOST_INFO_SIZE bytes that the caller has zeroed; null is reported as an error
 * @return 1, also when there is nothing to copy, which is reported as an error
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_GetLocalHostInfo(char *out) DOV0_NOEXCEPT;

/**
 * Tells whether a name is that of the local host (DOV0_LocalHostNameString()). The case of letters does not count,
 * and a name without a domain is the same host as one with a domain.
 *
 * @param name the name; null and the empty text are nobody's
 * @return 1 when it is, else 0, also when the local host has no name or there is no storage
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_IsOwnHostName(const char *name) DOV0_NOEXCEPT;

/**
 * Tells by its shape whether a text is a dotted IPv4 address. The numbers are not checked, nor is anything behind
 * the first digit after the third dot.
 *
 * @param text the text; null has no shape
 * @return the dots that are followed by a digit, up to #DOV0_ADDRESS_DOTS for the shape of an address; 0 when the
 *         text does not begin with a digit or one of these dots is not followed by one
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_IsThisAddressString(const char *text) DOV0_NOEXCEPT;

/**
 * Tells whether a text is a path rather than a plain name.
 *
 * @param text the text; null is no path
 * @return 1 when it contains "/", else 0
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_IsThisFullyQualifiedName(const char *text) DOV0_NOEXCEPT;

/** @} */

/**
 * @defgroup sockets Local sockets
 * @{
 */

/** Socket types of DOV0_OpenLocalSocket(). */
typedef enum DOV0_SocketType {
    DOV0_SOCKET_STREAM = SOCK_STREAM, /**< TCP */
    DOV0_SOCKET_DATAGRAM = SOCK_DGRAM /**< UDP */
} DOV0_SocketType;

/** Whether DOV0_OpenLocalSocket() lets an address be used again. */
typedef enum DOV0_SocketReuse {
    DOV0_SOCKET_REUSE = 0,   /**< SO_REUSEADDR on and, for TCP, no send delay */
    DOV0_SOCKET_NO_REUSE = 1 /**< SO_REUSEADDR off and, for TCP, the send delay left on */
} DOV0_SocketReuse;

/** What DOV0_OpenLocalSocket() binds to. */
typedef enum DOV0_SocketBinding {
    DOV0_BIND_OWN_ADDRESS = 0, /**< the local host's own address */
    DOV0_BIND_ANY_ADDRESS = 1  /**< any address of the local host */
} DOV0_SocketBinding;

/**
 * Opens an IPv4 socket, binds it and puts it in non-blocking mode.
 *
 * The local host's own address is that of DOV0_LocalHostNameString() on the first open of the process, or 0 (any
 * address) when that name did not resolve, and never changes. Descriptor 0 is not handed out: a socket that gets it
 * stays open, and another one is opened.
 *
 * @param Type        #DOV0_SOCKET_STREAM or #DOV0_SOCKET_DATAGRAM; the system judges any other value
 * @param Port        the port in network byte order, of which the low 16 bits are used; 0 lets the system choose
 * @param LocalAddr   where the address and the port asked for are stored; see DOV0_RetrieveSockPort() for the port
 *                    that the system chose
 * @param SockNoReuse #DOV0_SOCKET_NO_REUSE, or any other value for #DOV0_SOCKET_REUSE
 * @param errOut      where the error number of the last step that failed is stored, or 0. It can be other than 0
 *                    although the socket is returned: only a failure to open or to bind fails the call
 * @param InAddrAny   #DOV0_BIND_OWN_ADDRESS, or any other value for #DOV0_BIND_ANY_ADDRESS
 * @return the descriptor, to be closed with DOV0_CloseTheSocket(); -1 on failure, also (with EINVAL) when LocalAddr
 *         or errOut is null. Each step that fails is reported as an error
 *
 * Any thread. The first call can take as long as a look-up of the local host's name.
 *
 *     int32_t error = 0;
 *     struct sockaddr_in own;
 *     int32_t poller = DOV0_OpenLocalSocket(DOV0_SOCKET_DATAGRAM, 0, &own, DOV0_SOCKET_REUSE, &error,
 *                                           DOV0_BIND_ANY_ADDRESS);
 */
DOV0_EXPORT int32_t DOV0_OpenLocalSocket(int32_t Type, int32_t Port, struct sockaddr_in *LocalAddr,
                                         int32_t SockNoReuse, int32_t *errOut,
                                         int32_t InAddrAny) DOV0_NOEXCEPT;

/**
 * Gives the port that a socket is bound to.
 *
 * @param socket an IPv4 socket
 * @return the port in host byte order, 0 when it is not bound; 0 also on failure, which is reported as an error
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_RetrieveSockPort(int32_t socket) DOV0_NOEXCEPT;

/**
 * Applies an I/O control request to a socket (ioctl()).
 *
 * @param socket   the socket
 * @param request  the request, for example FIONBIO
 * @param argument what the request asks for, often the address of an int; may be null where the request allows it
 * @return the result of ioctl(): -1 with errno set on failure, which is reported as an error
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_SetSocketIoctl(int32_t socket, unsigned long request, void *argument) DOV0_NOEXCEPT;

/**
 * Closes a socket.
 *
 * @param socket the descriptor
 * @return the result of close(): 0, or -1 on failure. Callers need not look at it
 *
 * A failure is reported as an error, except that a descriptor that is no socket is a detail and that nothing is said
 * of descriptor 0.
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_CloseTheSocket(int32_t socket) DOV0_NOEXCEPT;

/**
 * Starts the socket library. There is nothing to start on this system.
 *
 * @return 1
 *
 * Any thread.
 */
DOV0_EXPORT int32_t DOV0_WinSockInitialization(void) DOV0_NOEXCEPT;

/** @} */

#ifdef __cplusplus
}
#endif

#endif
