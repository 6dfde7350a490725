#ifndef VELMO_KVO_LOG_ANDROIDLOG_H
#define VELMO_KVO_LOG_ANDROIDLOG_H

/**
 * @file
 * The write side of the Android log API, as this library exports it. Kept
 * under our own path so that it never hides the platform's header.
 *
 * The library carries its own writer and links no platform log library: each
 * record goes as one datagram to the log daemon's socket (/dev/socket/logdw
 * unless the library was configured otherwise). The socket is non-blocking
 * and close-on-exec, opened on the first record; a stalled daemon never
 * blocks the caller, whose record is then dropped with -EAGAIN.
 *
 * The environment variable AKVO_LOG_SOCKET, read once when the library is
 * loaded, names another socket path for the process, e.g. that of a running
 * `akvo-logcat --socket PATH` on a host; __android_log_dev_available() then
 * asks about that path too. Unset or empty, the built-in path holds. A value
 * longer than 107 bytes, which no Unix socket address can hold, reaches no
 * daemon at all: every record returns -ENAMETOOLONG (-36) and
 * __android_log_dev_available() returns 0.
 *
 * Every function may be called from any thread. A record's payload (what
 * follows its 11-byte header) is cut at 4076 bytes. Unless said otherwise a
 * function returns the number of payload bytes sent, or a negative errno
 * value: the socket's connect error while the daemon cannot be reached (the
 * next record tries again), -1 for every record once the process could not
 * create a socket at all, and -9 (-EBADF) for every record once the daemon
 * went away and the one reconnect that followed failed. Records of the log
 * daemon's own user (uid 1036) are dropped and return 0.
 */

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

/** Marks what the shared library exports of this API; the rest of the
 * library is built with hidden visibility. */
#define AKVO_LOG_EXPORT __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/** The priority of a text record, as the Android log API numbers it. */
enum akvo_log_priority
{
    AKVO_LOG_UNKNOWN = 0, /**< Unknown. */
    AKVO_LOG_DEFAULT = 1, /**< The default priority. */
    AKVO_LOG_VERBOSE = 2, /**< Verbose. */
    AKVO_LOG_DEBUG = 3,   /**< Debug. */
    AKVO_LOG_INFO = 4,    /**< Information; the Service's call lines. */
    AKVO_LOG_WARN = 5,    /**< Warning. */
    AKVO_LOG_ERROR = 6,   /**< Error. */
    AKVO_LOG_FATAL = 7,   /**< Fatal; the library's failed assertions. */
    AKVO_LOG_SILENT = 8   /**< Silent. */
};

/** The log a record goes to: the first byte of every record. */
enum akvo_log_id
{
    AKVO_LOG_ID_MAIN = 0,  /**< The main log. */
    AKVO_LOG_ID_RADIO = 1, /**< The radio log. */
    AKVO_LOG_ID_EVENTS = 2 /**< The binary events log. */
};

/**
 * Makes a heavily logging process pause: after `threshold` records the
 * writer sleeps `sleep_us` microseconds. Read once from the environment
 * variable LIBLOG_THROUGHPUT_LIMIT ("records/milliseconds", e.g. "100/10") at
 * load time; any other text, or none, switches the limit off.
 */
struct akvo_throughput_limit
{
    /** Records sent since the last pause. Updated without a lock: threads
     * that log at once may lose counts, which only delays a pause. */
    uint32_t count;
    /** The number of records after which the writer pauses. */
    uint32_t threshold;
    /** The length of the pause in microseconds; 0 switches the limit off. */
    uint32_t sleep_us;
};

/** The process's throughput limit; all zero until the library is loaded. */
extern AKVO_LOG_EXPORT struct akvo_throughput_limit throughput_limit;

/**
 * Whether the log daemon's socket is writable by the process: 1 if so, else
 * 0. Decided on the first call; later calls give the same answer.
 */
AKVO_LOG_EXPORT int __android_log_dev_available(void);

/**
 * Writes a text record to the main log. A radio tag ("HTC_RIL", "AT", "GSM",
 * "STK", "CDMA", "PHONE", "SMS", or one that begins with "RIL" or "IMS") sends
 * it to the radio log with the tag "use-Rlog/RLOG-<tag>", cut at 31
 * characters.
 *
 * @param prio an akvo_log_priority; AKVO_LOG_FATAL also hands @p text to the
 *        C library as the abort message, where it has one (Android's).
 * @param tag the tag; null is taken as "".
 * @param text the message; must not be null.
 * @return the payload bytes sent (priority, tag and message, each text with
 *         its zero byte), or a negative errno value.
 */
AKVO_LOG_EXPORT int __android_log_write(int prio, const char* tag, const char* text);

/**
 * Writes a text record to the log @p bufID. Radio tags go to the radio log as
 * with __android_log_write(); in the radio log itself they stay as they are.
 * No abort message is recorded.
 *
 * @param bufID an akvo_log_id.
 * @param prio an akvo_log_priority.
 * @param tag the tag; null is taken as "".
 * @param text the message; must not be null.
 * @return as __android_log_write().
 */
AKVO_LOG_EXPORT int __android_log_buf_write(int bufID, int prio, const char* tag, const char* text);

/**
 * Formats the message as printf() does, cut at 1023 characters, and writes it
 * as __android_log_write() does.
 *
 * @param prio an akvo_log_priority.
 * @param tag the tag; null is taken as "".
 * @param fmt the printf() format; must not be null.
 * @return as __android_log_write().
 */
AKVO_LOG_EXPORT int __android_log_print(int prio, const char* tag, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

/**
 * As __android_log_print(), with the arguments in @p ap.
 *
 * @param prio an akvo_log_priority.
 * @param tag the tag; null is taken as "".
 * @param fmt the printf() format; must not be null.
 * @param ap the format's arguments.
 * @return as __android_log_write().
 */
AKVO_LOG_EXPORT int __android_log_vprint(int prio, const char* tag, const char* fmt, va_list ap);

/**
 * Formats the message as printf() does, cut at 1023 characters, and writes it
 * as __android_log_buf_write() does.
 *
 * @param bufID an akvo_log_id.
 * @param prio an akvo_log_priority.
 * @param tag the tag; null is taken as "".
 * @param fmt the printf() format; must not be null.
 * @return as __android_log_write().
 */
AKVO_LOG_EXPORT int __android_log_buf_print(int bufID, int prio, const char* tag, const char* fmt, ...)
    __attribute__((format(printf, 4, 5)));

/**
 * Writes a fatal record and stops the process at once with a trap
 * instruction (SIGILL on x86), without calling abort() or any handler of the
 * caller's. The message is the formatted @p fmt if given, else "Assertion
 * failed: <cond>" if @p cond is given, else "Unspecified assertion failed".
 *
 * @param cond the condition's text, never used as a format; may be null.
 * @param tag the tag; null is taken as "".
 * @param fmt a printf() format, cut at 1023 characters; may be null.
 */
AKVO_LOG_EXPORT void __android_log_assert(const char* cond, const char* tag, const char* fmt, ...)
    __attribute__((noreturn));

/**
 * Writes a binary record to the events log: @p tag in 4 bytes, little-endian,
 * then the @p len bytes at @p payload.
 *
 * @param tag the event tag.
 * @param payload the bytes.
 * @param len their number.
 * @return the payload bytes sent, the 4 tag bytes included, or a negative
 *         errno value.
 */
AKVO_LOG_EXPORT int __android_log_bwrite(int32_t tag, const void* payload, size_t len);

/**
 * As __android_log_bwrite(), with the byte @p type between the tag and the
 * payload.
 *
 * @param tag the event tag.
 * @param type the payload's type, as the events log defines it.
 * @param payload the bytes.
 * @param len their number.
 * @return the payload bytes sent, the 5 header bytes included, or a negative
 *         errno value.
 */
AKVO_LOG_EXPORT int __android_log_btwrite(int32_t tag, char type, const void* payload, size_t len);

/**
 * Writes a string event to the events log: @p tag in 4 bytes, the type byte
 * 2, the string's length in 4 bytes, then its characters without the zero
 * byte.
 *
 * @param tag the event tag.
 * @param payload the string; must not be null.
 * @return the payload bytes sent, the 9 header bytes included, or a negative
 *         errno value.
 */
AKVO_LOG_EXPORT int __android_log_bswrite(int32_t tag, const char* payload);

#ifdef __cplusplus
}
#endif

#endif
