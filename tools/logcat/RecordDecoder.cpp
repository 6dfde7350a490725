#include "RecordDecoder.h"

#include <cstring>

namespace velmo {
namespace kvo {
namespace logcat {

namespace {

uint32_t loadLittleEndian32(const uint8_t* in)
{
    return static_cast<uint32_t>(in[0]) | static_cast<uint32_t>(in[1]) << 8 |
           static_cast<uint32_t>(in[2]) << 16 | static_cast<uint32_t>(in[3]) << 24;
}

bool decodeText(const uint8_t* payload, size_t size, LogRecord& record, std::string& error)
{
    if (size == 0) {
        error = "text record without a priority byte";
        return false;
    }
    record.kind = RecordKind::Text;
    record.priority = payload[0];
    const char* tag = reinterpret_cast<const char*>(payload + 1);
    const size_t tagLength = strnlen(tag, size - 1);
    if (tagLength == size - 1) {
        error = "text record without a NUL after the tag";
        return false;
    }
    record.tag.assign(tag, tagLength);
    const char* message = tag + tagLength + 1;
    record.message.assign(message, strnlen(message, size - 2 - tagLength));
    return true;
}

bool decodeEvent(const uint8_t* payload, size_t size, LogRecord& record, std::string& error)
{
    if (size < 4) {
        error = "event record of " + std::to_string(size) + " payload bytes, too short for its event tag";
        return false;
    }
    record.eventTag = static_cast<int32_t>(loadLittleEndian32(payload));
    record.kind = RecordKind::Binary;
    if (size == 4) {
        return true;
    }
    record.hasEventType = true;
    record.eventType = payload[4];
    const char* rest = reinterpret_cast<const char*>(payload + 5);
    if (record.eventType != stringEventType) {
        record.eventBytes.assign(rest, size - 5);
        return true;
    }
    if (size < 9) {
        error = "string event too short for its length field";
        return false;
    }
    const uint32_t length = loadLittleEndian32(payload + 5);
    if (length != size - 9) {
        error = "string event declares " + std::to_string(length) + " bytes but carries " +
                std::to_string(size - 9);
        return false;
    }
    record.kind = RecordKind::StringEvent;
    record.message.assign(rest + 4, length);
    return true;
}

} // namespace

bool decodeRecord(const uint8_t* data, size_t size, LogRecord& record, std::string& error)
{
    if (size < recordHeaderSize) {
        error = "datagram of " + std::to_string(size) + " bytes, shorter than the 11-byte record header";
        return false;
    }
    record = LogRecord();
    record.logId = data[0];
    record.threadId = static_cast<uint16_t>(data[1] | data[2] << 8);
    record.seconds = loadLittleEndian32(data + 3);
    record.nanoseconds = loadLittleEndian32(data + 7);
    const uint8_t* payload = data + recordHeaderSize;
    const size_t payloadSize = size - recordHeaderSize;
    if (record.logId == eventsLogId) {
        return decodeEvent(payload, payloadSize, record, error);
    }
    return decodeText(payload, payloadSize, record, error);
}

} // namespace logcat
} // namespace kvo
} // namespace velmo
