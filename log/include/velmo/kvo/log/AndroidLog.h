#ifndef VELMO_KVO_LOG_ANDROIDLOG_H
#define VELMO_KVO_LOG_ANDROIDLOG_H

/* The write side of the Android log API, as this library exports it. Kept
 * under our own path so that it never hides the platform's header. */

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

/* The library is built with hidden visibility; this API is part of what it
 * exports. */
#define AKVO_LOG_EXPORT __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

enum akvo_log_priority
{
    AKVO_LOG_UNKNOWN = 0,
    AKVO_LOG_DEFAULT = 1,
    AKVO_LOG_VERBOSE = 2,
    AKVO_LOG_DEBUG = 3,
    AKVO_LOG_INFO = 4,
    AKVO_LOG_WARN = 5,
    AKVO_LOG_ERROR = 6,
    AKVO_LOG_FATAL = 7,
    AKVO_LOG_SILENT = 8
};

enum akvo_log_id
{
    AKVO_LOG_ID_MAIN = 0,
    AKVO_LOG_ID_RADIO = 1,
    AKVO_LOG_ID_EVENTS = 2
};

/* Makes a heavily logging process pause: after `threshold` records the
 * writer sleeps `sleep_us` microseconds. Read once from the environment
 * variable LIBLOG_THROUGHPUT_LIMIT ("records/milliseconds") at load time. */
struct akvo_throughput_limit
{
    uint32_t count;
    uint32_t threshold;
    uint32_t sleep_us;
};

extern AKVO_LOG_EXPORT struct akvo_throughput_limit throughput_limit;

AKVO_LOG_EXPORT int __android_log_dev_available(void);
AKVO_LOG_EXPORT int __android_log_write(int prio, const char* tag, const char* text);
AKVO_LOG_EXPORT int __android_log_buf_write(int bufID, int prio, const char* tag, const char* text);
AKVO_LOG_EXPORT int __android_log_print(int prio, const char* tag, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));
AKVO_LOG_EXPORT int __android_log_vprint(int prio, const char* tag, const char* fmt, va_list ap);
AKVO_LOG_EXPORT int __android_log_buf_print(int bufID, int prio, const char* tag, const char* fmt, ...)
    __attribute__((format(printf, 4, 5)));
AKVO_LOG_EXPORT void __android_log_assert(const char* cond, const char* tag, const char* fmt, ...)
    __attribute__((noreturn));
AKVO_LOG_EXPORT int __android_log_bwrite(int32_t tag, const void* payload, size_t len);
AKVO_LOG_EXPORT int __android_log_btwrite(int32_t tag, char type, const void* payload, size_t len);
AKVO_LOG_EXPORT int __android_log_bswrite(int32_t tag, const char* payload);

#ifdef __cplusplus
}
#endif

#endif
