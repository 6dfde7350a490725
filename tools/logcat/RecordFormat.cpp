#include "RecordFormat.h"

#include "TextEscape.h"

#include <cstdio>
#include <ctime>

namespace velmo {
namespace kvo {
namespace logcat {

namespace {

char priorityLetter(uint8_t priority)
{
    static const char letters[] = "VDIWEF";
    return priority >= 2 && priority <= 7 ? letters[priority - 2] : '?';
}

std::string timeAndThread(const LogRecord& record)
{
    const time_t seconds = static_cast<time_t>(record.seconds);
    tm local;
    localtime_r(&seconds, &local);
    char text[64];
    std::snprintf(text, sizeof(text), "%02d-%02d %02d:%02d:%02d.%03u %u", local.tm_mon + 1, local.tm_mday,
                  local.tm_hour, local.tm_min, local.tm_sec, record.nanoseconds / 1000000u,
                  static_cast<unsigned>(record.threadId));
    return text;
}

} // namespace

std::string formatTextLine(const LogRecord& record)
{
    std::string line = timeAndThread(record) + ' ';
    switch (record.kind) {
    case RecordKind::Text:
        line += priorityLetter(record.priority);
        line += '/' + escapeControlCharacters(record.tag) + ": " + escapeControlCharacters(record.message);
        break;
    case RecordKind::Binary:
        line += "event " + std::to_string(record.eventTag);
        if (record.hasEventType) {
            line += " (type " + std::to_string(record.eventType) + "): " + hexBytes(record.eventBytes);
        } else {
            line += ':';
        }
        break;
    case RecordKind::StringEvent:
        line += "event " + std::to_string(record.eventTag) +
                " (string): " + escapeControlCharacters(record.message);
        break;
    }
    return line;
}

std::string formatJsonLine(const LogRecord& record)
{
    std::string line =
        "{\"id\":" + std::to_string(record.logId) + ",\"tid\":" + std::to_string(record.threadId) +
        ",\"sec\":" + std::to_string(record.seconds) + ",\"nsec\":" + std::to_string(record.nanoseconds);
    switch (record.kind) {
    case RecordKind::Text:
        line += ",\"kind\":\"text\",\"priority\":" + std::to_string(record.priority) +
                ",\"tag\":" + jsonString(record.tag) + ",\"message\":" + jsonString(record.message);
        break;
    case RecordKind::Binary:
        line += ",\"kind\":\"binary\",\"event\":" + std::to_string(record.eventTag);
        if (record.hasEventType) {
            line += ",\"type\":" + std::to_string(record.eventType) + ",\"payload\":\"" +
                    hexBytes(record.eventBytes) + '"';
        }
        break;
    case RecordKind::StringEvent:
        line += ",\"kind\":\"string\",\"event\":" + std::to_string(record.eventTag) +
                ",\"type\":2,\"message\":" + jsonString(record.message);
        break;
    }
    return line + '}';
}

} // namespace logcat
} // namespace kvo
} // namespace velmo
