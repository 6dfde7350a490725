// Any datagram through akvo-logcat's decoder and both its line formats. A
// decoded record must encode back to the datagram it came from, and each line
// must stay one line, free of control characters.
#include "Require.h"

#include "LogRecord.h"
#include "RecordDecoder.h"
#include "RecordFormat.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using akvo::fuzz::require;
using velmo::kvo::logcat::LogRecord;
using velmo::kvo::logcat::RecordKind;

// The datagram the log writer sends for this record; a text record without
// the NUL that may follow its message.
std::string encode(const LogRecord& record)
{
    std::string out;
    const auto appendLittleEndian = [&out](uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) {
            out += static_cast<char>(value >> (8 * i) & 0xff);
        }
    };
    appendLittleEndian(record.logId, 1);
    appendLittleEndian(record.threadId, 2);
    appendLittleEndian(record.seconds, 4);
    appendLittleEndian(record.nanoseconds, 4);
    if (record.kind == RecordKind::Text) {
        return out + static_cast<char>(record.priority) + record.tag + '\0' + record.message;
    }
    appendLittleEndian(static_cast<uint32_t>(record.eventTag), 4);
    if (record.kind == RecordKind::StringEvent) {
        out += '\2';
        appendLittleEndian(static_cast<uint32_t>(record.message.size()), 4);
        return out + record.message;
    }
    return record.hasEventType ? out + static_cast<char>(record.eventType) + record.eventBytes : out;
}

bool isOneCleanLine(const std::string& line)
{
    return std::none_of(line.begin(), line.end(),
                        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    LogRecord record;
    std::string error;
    if (!velmo::kvo::logcat::decodeRecord(data, size, record, error)) {
        require(!error.empty() && error.find('\n') == std::string::npos, "a refusal gives a one-line reason",
                error);
        return 0;
    }
    const std::string datagram(reinterpret_cast<const char*>(data), size);
    const std::string encoded = encode(record);
    require(record.kind == RecordKind::Text ? record.logId != 2 : record.logId == 2,
            "events come from the events log and text from the others");
    require(record.kind == RecordKind::Text
                ? datagram.compare(0, encoded.size(), encoded) == 0 &&
                      (datagram.size() == encoded.size() || datagram[encoded.size()] == '\0')
                : datagram == encoded,
            "a record encodes back to the datagram, a text record up to its message's NUL");

    const std::string text = velmo::kvo::logcat::formatTextLine(record);
    require(isOneCleanLine(text), "the text line has no control character", text);
    const std::string json = velmo::kvo::logcat::formatJsonLine(record);
    require(json.rfind("{\"id\":", 0) == 0 && json.back() == '}' && isOneCleanLine(json),
            "the JSON line is one object without control characters", json);
    return 0;
}
