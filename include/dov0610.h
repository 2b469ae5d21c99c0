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

/** @} */

/**
 * @defgroup timestamps Timestamps
 * @{
 */

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
 * @{
 */

/** @} */

/**
 * @defgroup datafields Typed data fields
 * @{
 */

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
 * @{
 */

/** @} */

/**
 * @defgroup messages Message catalogue and console
 * @{
 */

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
