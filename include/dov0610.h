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
 *
 * Writers and readers work on a cursor: the address of the caller's buffer pointer, which they move past what they
 * write or read. None of them knows where the buffer ends. A writer's buffer must have room for the field, and a
 * reader's caller compares lengths with what was received before a value is used; examples/ber_dump.cpp shows how.
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
DOV0_EXPORT int32_t DOV0_FormatBERintegerType(unsigned char **cursor, unsigned char tag, int32_t value) DOV0_NOEXCEPT;

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
DOV0_EXPORT int32_t DOV0_FormatBERoctetstringType(unsigned char **cursor, unsigned char tag, const unsigned char *data,
                                                  int32_t length) DOV0_NOEXCEPT;

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
 * @return 1; 0 (with an error message) when the pointer is null, the tag is not #DOV0_ASN_INTEGER or the integer has
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
DOV0_EXPORT int32_t DOV0_FormatOIDfromString(const char *text, unsigned char **berOut, int32_t *sizeOut) DOV0_NOEXCEPT;

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
    DOV0_ATTRIBUTE_SHORT = 'S',           /**< an integer of 2 bytes */
    DOV0_ATTRIBUTE_COUNTER = 'C',         /**< this and the others: an integer of 2 or 4 bytes, as its size says */
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
DOV0_EXPORT int32_t DOV0_FormatDataField(void *totalLength, void *field, int32_t type, const void *value, int32_t size,
                                         const char *attrType) DOV0_NOEXCEPT;

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
 * @return a new text in a block of #DOV0_SERVICE_TEXT_SIZE bytes, owned by the caller and freed with DOV0_FreeStorage();
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
