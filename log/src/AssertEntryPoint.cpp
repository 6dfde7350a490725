#include "velmo/kvo/log/AndroidLog.h"

#include "FormatBuffer.h"

#include <cstdio>

extern "C" void __android_log_assert(const char* cond, const char* tag, const char* fmt, ...)
{
    char message[velmo::kvo::logwriter::formatBufferSize];
    if (fmt != nullptr) {
        va_list args;
        va_start(args, fmt);
        std::vsnprintf(message, sizeof(message), fmt, args);
        va_end(args);
    } else if (cond != nullptr) {
        // The condition is source text, never a format.
        std::snprintf(message, sizeof(message), "Assertion failed: %s", cond);
    } else {
        std::snprintf(message, sizeof(message), "Unspecified assertion failed");
    }
    __android_log_write(AKVO_LOG_FATAL, tag, message);
    // A trap rather than abort(): the process stops right here, with nothing
    // of the caller's left to run.
    __builtin_trap();
}
