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
    DOV0_UTF_BYTES = 0,                                       /**< single bytes, UTF-8 and whatever else */
    DOV0_UTF16 = DOV0_UTF_16BIT,                              /**< "UTF-16", read as big-endian */
    DOV0_UTF16BE = DOV0_UTF_16BIT | DOV0_UTF_BIG_ENDIAN,      /**< "UTF-16BE" */
    DOV0_UTF16LE = DOV0_UTF_16BIT | DOV0_UTF_LITTLE_ENDIAN,   /**< "UTF-16LE" */
    DOV0_UTF32 = DOV0_UTF_32BIT,                              /**< "UTF-32", read as big-endian */
    DOV0_UTF32BE = DOV0_UTF_32BIT | DOV0_UTF_BIG_ENDIAN,      /**< "UTF-32BE" */
    DOV0_UTF32LE = DOV0_UTF_32BIT | DOV0_UTF_LITTLE_ENDIAN    /**< "UTF-32LE" */
} DOV0_UTFEncodingType;

/** Sizes in line reading. */
enum {
    DOV0_BYTE_ORDER_MARK_SIZE = 4,    /**< bytes of a mark that DOV0_LNG2_GetFileEncoding() stores */
    DOV0_LINE_CONVERSION_SIZE = 8192  /**< longest converted line of DOV0_Fgets(), in bytes */
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

/** @} */

/**
 * @defgroup hosts Host names and addresses
 * @{
 */

/** @} */

/**
 * @defgroup sockets Local sockets
 * @{
 */

/** @} */

#ifdef __cplusplus
}
#endif

#endif
