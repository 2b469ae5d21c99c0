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

/** @} */

/**
 * @defgroup threads Threads, descriptors and the tokenizer
 * @{
 */

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
