#ifndef VELMO_KVO_LOGCAT_LOGRECORD_H
#define VELMO_KVO_LOGCAT_LOGRECORD_H

#include <cstdint>
#include <string>

namespace velmo {
namespace kvo {
namespace logcat {

enum class RecordKind
{
    Text,
    Binary,
    StringEvent
};

// One record as the log writer sends it: the 11-byte header, then the payload
// of a text record (priority, tag, message) or of an event (event tag, then
// a type byte and bytes, or the string of a string event).
struct LogRecord
{
    // The sending process and its user, from the socket's credentials, not
    // from the record; 0 where none came with it.
    int32_t pid = 0;
    uint32_t uid = 0;

    uint8_t logId = 0;
    uint16_t threadId = 0;
    uint32_t seconds = 0;
    uint32_t nanoseconds = 0;

    RecordKind kind = RecordKind::Text;
    uint8_t priority = 0;
    std::string tag;
    // The text message, or the string of a string event.
    std::string message;

    int32_t eventTag = 0;
    bool hasEventType = false;
    uint8_t eventType = 0;
    // The bytes of a binary event after its type byte.
    std::string eventBytes;
};

} // namespace logcat
} // namespace kvo
} // namespace velmo

#endif
