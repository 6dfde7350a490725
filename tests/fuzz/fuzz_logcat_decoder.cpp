// Any datagram through akvo-logcat's decoder and both its line formats. A
// decoded record must encode back to the datagram it came from, and each line
// must stay one line: the text line free of control characters, the JSON line
// free of them too and valid UTF-8.
#include "Require.h"

#include "LogRecord.h"
#include "RecordDecoder.h"
#include "RecordFormat.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using akvo::fuzz::endsWith;
using akvo::fuzz::require;
using akvo::fuzz::startsWith;
using velmo::kvo::logcat::LogRecord;
using velmo::kvo::logcat::RecordKind;

void appendLittleEndian(std::string& out, uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i) {
        out += static_cast<char>(value >> (8 * i) & 0xff);
    }
}

// The datagram the log writer sends for this record; a text record without
// the NUL that may follow its message.
std::string encode(const LogRecord& record)
{
    std::string out;
    appendLittleEndian(out, record.logId, 1);
    appendLittleEndian(out, record.threadId, 2);
    appendLittleEndian(out, record.seconds, 4);
    appendLittleEndian(out, record.nanoseconds, 4);
    if (record.kind == RecordKind::Text) {
        out += static_cast<char>(record.priority);
        out += record.tag;
        out += '\0';
        out += record.message;
        return out;
    }
    appendLittleEndian(out, static_cast<uint32_t>(record.eventTag), 4);
    if (record.kind == RecordKind::StringEvent) {
        out += '\2';
        appendLittleEndian(out, static_cast<uint32_t>(record.message.size()), 4);
        out += record.message;
    } else if (record.hasEventType) {
        out += static_cast<char>(record.eventType);
        out += record.eventBytes;
    }
    return out;
}

bool hasControlCharacter(const std::string& line)
{
    for (const char c : line) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f) {
            return true;
        }
    }
    return false;
}

bool isValidUtf8(const std::string& text)
{
    for (size_t at = 0; at < text.size();) {
        const unsigned char lead = static_cast<unsigned char>(text[at]);
        const size_t length = lead < 0x80         ? 1
                              : lead >> 5 == 0x6  ? 2
                              : lead >> 4 == 0xe  ? 3
                              : lead >> 3 == 0x1e ? 4
                                                  : 0;
        if (length == 0 || at + length > text.size()) {
            return false;
        }
        uint32_t codePoint = length == 1 ? lead : lead & (0x7f >> length);
        for (size_t i = 1; i < length; ++i) {
            const unsigned char next = static_cast<unsigned char>(text[at + i]);
            if (next >> 6 != 0x2) {
                return false;
            }
            codePoint = codePoint << 6 | (next & 0x3f);
        }
        const uint32_t shortest[] = {0, 0, 0x80, 0x800, 0x10000};
        if (codePoint < shortest[length] || codePoint > 0x10ffff ||
            (codePoint >= 0xd800 && codePoint <= 0xdfff)) {
            return false;
        }
        at += length;
    }
    return true;
}

void checkDecoded(const LogRecord& record, const std::string& datagram)
{
    require(record.kind == RecordKind::Text ? record.logId != 2 : record.logId == 2,
            "events come from the events log and text from the others");
    const std::string encoded = encode(record);
    if (record.kind == RecordKind::Text) {
        require(startsWith(datagram, encoded) &&
                    (datagram.size() == encoded.size() || datagram[encoded.size()] == '\0'),
                "a text record encodes back to the datagram up to its message's NUL");
    } else {
        require(encoded == datagram, "an event encodes back to the whole datagram");
        require(record.kind == RecordKind::StringEvent || !record.hasEventType || record.eventType != 2,
                "a binary event's type is not the string type");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    LogRecord record;
    std::string error;
    if (!velmo::kvo::logcat::decodeRecord(data, size, record, error)) {
        require(!error.empty() && error.find('\n') == std::string::npos, "a refusal gives a one-line reason");
        return 0;
    }
    require(size >= velmo::kvo::logcat::recordHeaderSize, "no record is shorter than its header");
    checkDecoded(record, std::string(reinterpret_cast<const char*>(data), size));

    const std::string text = velmo::kvo::logcat::formatTextLine(record);
    require(!hasControlCharacter(text), "the text line has no control character", text);
    const std::string json = velmo::kvo::logcat::formatJsonLine(record);
    require(startsWith(json, "{\"id\":") && endsWith(json, "}"), "the JSON line is one object", json);
    require(!hasControlCharacter(json), "the JSON line has no control character", json);
    require(isValidUtf8(json), "the JSON line is valid UTF-8", json);
    return 0;
}
