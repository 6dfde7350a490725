#include "velmo/kvo/log/AndroidLog.h"

#include "AbortMessage.h"
#include "FormatBuffer.h"
#include "RadioTag.h"
#include "RecordWriter.h"

#include <cstdio>
#include <cstring>

namespace velmo {
namespace kvo {
namespace logwriter {

namespace {

iovec textBuffer(const char* text)
{
    return iovec{const_cast<char*>(text), std::strlen(text) + 1};
}

int writeText(int logId, int priority, const char* tag, const char* message)
{
    unsigned char priorityByte = static_cast<unsigned char>(priority);
    iovec payload[] = {{&priorityByte, 1}, textBuffer(tag), textBuffer(message)};
    return writeRecord(logId, payload);
}

} // namespace

} // namespace logwriter
} // namespace kvo
} // namespace velmo

using velmo::kvo::logwriter::formatBufferSize;
using velmo::kvo::logwriter::radioTagSize;

extern "C" {

int __android_log_write(int prio, const char* tag, const char* text)
{
    char radioTag[radioTagSize];
    if (tag == nullptr) {
        tag = "";
    }
    const int logId = velmo::kvo::logwriter::routeRadioTag(AKVO_LOG_ID_MAIN, tag, radioTag);
    if (prio == AKVO_LOG_FATAL) {
        velmo::kvo::logwriter::recordAbortMessage(text);
    }
    return velmo::kvo::logwriter::writeText(logId, prio, tag, text);
}

// The radio log keeps its own tags; the radio tags of other logs are moved
// there as by __android_log_write.
int __android_log_buf_write(int bufID, int prio, const char* tag, const char* text)
{
    char radioTag[radioTagSize];
    if (tag == nullptr) {
        tag = "";
    }
    if (bufID != AKVO_LOG_ID_RADIO) {
        bufID = velmo::kvo::logwriter::routeRadioTag(bufID, tag, radioTag);
    }
    return velmo::kvo::logwriter::writeText(bufID, prio, tag, text);
}

int __android_log_vprint(int prio, const char* tag, const char* fmt, va_list ap)
{
    char message[formatBufferSize];
    // "%s" with a text that fits is what every line of the library's own log
    // looks like; the formatter would only copy it.
    if (std::strcmp(fmt, "%s") == 0) {
        va_list copy;
        va_copy(copy, ap);
        const char* text = va_arg(copy, const char*);
        va_end(copy);
        if (text != nullptr && strnlen(text, sizeof(message)) < sizeof(message)) {
            return __android_log_write(prio, tag, text);
        }
    }
    std::vsnprintf(message, sizeof(message), fmt, ap);
    return __android_log_write(prio, tag, message);
}

int __android_log_print(int prio, const char* tag, const char* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    const int result = __android_log_vprint(prio, tag, fmt, args);
    va_end(args);
    return result;
}

int __android_log_buf_print(int bufID, int prio, const char* tag, const char* fmt, ...)
{
    char message[formatBufferSize];
    va_list args;
    va_start(args, fmt);
    std::vsnprintf(message, sizeof(message), fmt, args);
    va_end(args);
    return __android_log_buf_write(bufID, prio, tag, message);
}

} // extern "C"
