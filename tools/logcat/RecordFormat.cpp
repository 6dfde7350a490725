#include "RecordFormat.h"

#include "JsonObject.h"
#include "RecordDecoder.h"
#include "TextEscape.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <limits>

namespace velmo {
namespace kvo {
namespace logcat {

namespace {

char priorityLetter(uint8_t priority)
{
    static const char letters[] = "VDIWEF";
    return priority >= 2 && priority <= 7 ? letters[priority - 2] : '?';
}

// Seconds east of UTC of the local zone at `seconds`. Records count unsigned
// 32-bit seconds, up to 2106, while a 32-bit time_t ends in January 2038; past
// its end the zone is asked about the same moment whole 28-year cycles earlier,
// which fall on the same dates and weekdays (after February 2100, a day apart),
// so its daylight-saving rules give the same offset.
int64_t localOffset(int64_t seconds)
{
    constexpr int64_t cycle = (28 * 365 + 7) * int64_t{86400};
    while (seconds > std::numeric_limits<time_t>::max()) {
        seconds -= cycle;
    }
    const time_t asked = static_cast<time_t>(seconds);
    tm local = {};
    localtime_r(&asked, &local);
    return local.tm_gmtoff;
}

// "MM-DD HH:MM:SS.mmm" in local time.
std::string localTime(const LogRecord& record)
{
    const int64_t local = int64_t{record.seconds} + localOffset(record.seconds);
    const int64_t days = local / 86400 - (local % 86400 < 0 ? 1 : 0);
    const int64_t secondOfDay = local - days * 86400;
    // Month and day from the days since 1970-01-01 (-1 at the least): the
    // Gregorian calendar repeats every 400 years, counted here from 0000-03-01
    // so that a leap day ends its year.
    const int64_t dayOfEra = (days + 719468) % 146097;
    const int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
    const int64_t day = dayOfYear - (153 * shiftedMonth + 2) / 5 + 1;
    const int64_t month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
    char text[64];
    std::snprintf(text, sizeof(text), "%02d-%02d %02d:%02d:%02d.%03u", static_cast<int>(month),
                  static_cast<int>(day), static_cast<int>(secondOfDay / 3600),
                  static_cast<int>(secondOfDay / 60 % 60), static_cast<int>(secondOfDay % 60),
                  record.nanoseconds / 1000000u);
    return text;
}

// The record after its time: "P/TAG" or "event N", then `thread`, then the
// rest of the line.
std::string describe(const LogRecord& record, const std::string& thread)
{
    switch (record.kind) {
    case RecordKind::Text:
        return priorityLetter(record.priority) + ('/' + escapeControlCharacters(record.tag)) + thread + ": " +
               escapeControlCharacters(record.message);
    case RecordKind::Binary:
        return "event " + std::to_string(record.eventTag) + thread +
               (record.hasEventType
                    ? " (type " + std::to_string(record.eventType) + "): " + hexBytes(record.eventBytes)
                    : ":");
    case RecordKind::StringEvent:
        return "event " + std::to_string(record.eventTag) + thread +
               " (string): " + escapeControlCharacters(record.message);
    }
    return std::string();
}

} // namespace

std::string formatTextLine(const LogRecord& record)
{
    return localTime(record) + ' ' + std::to_string(record.threadId) + ' ' + describe(record, "");
}

std::string formatThreadTimeLine(const LogRecord& record)
{
    char ids[32];
    std::snprintf(ids, sizeof(ids), " %5d %5u ", static_cast<int>(record.pid),
                  static_cast<unsigned>(record.threadId));
    if (record.kind != RecordKind::Text) {
        return localTime(record) + ids + describe(record, "");
    }
    std::string tag = escapeControlCharacters(record.tag);
    tag.resize(std::max<size_t>(tag.size(), 8), ' ');
    return localTime(record) + ids + priorityLetter(record.priority) + ' ' + tag + ": " +
           escapeControlCharacters(record.message);
}

std::string formatBriefLine(const LogRecord& record)
{
    return describe(record, '(' + std::to_string(record.threadId) + ')');
}

std::string formatJsonLine(const LogRecord& record)
{
    tools::JsonObject object;
    object.number("id", record.logId)
        .number("pid", record.pid)
        .number("uid", record.uid)
        .number("tid", record.threadId)
        .number("sec", record.seconds)
        .number("nsec", record.nanoseconds);
    switch (record.kind) {
    case RecordKind::Text:
        object.text("kind", "text")
            .number("priority", record.priority)
            .text("level", std::string(1, priorityLetter(record.priority)))
            .text("tag", record.tag)
            .text("message", record.message);
        break;
    case RecordKind::Binary:
        object.text("kind", "binary").number("event", record.eventTag);
        if (record.hasEventType) {
            object.number("type", record.eventType).text("payload", hexBytes(record.eventBytes));
        }
        break;
    case RecordKind::StringEvent:
        object.text("kind", "string")
            .number("event", record.eventTag)
            .number("type", stringEventType)
            .text("message", record.message);
        break;
    }
    return object.line();
}

std::string formatLine(const LogRecord& record, LineFormat format)
{
    switch (format) {
    case LineFormat::Brief:
        return formatBriefLine(record);
    case LineFormat::Json:
        return formatJsonLine(record);
    case LineFormat::ThreadTime:
        return formatThreadTimeLine(record);
    case LineFormat::Time:
        break;
    }
    return formatTextLine(record);
}

} // namespace logcat
} // namespace kvo
} // namespace velmo
