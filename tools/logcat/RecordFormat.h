#ifndef VELMO_KVO_LOGCAT_RECORDFORMAT_H
#define VELMO_KVO_LOGCAT_RECORDFORMAT_H

#include "LogRecord.h"

#include <string>

namespace velmo {
namespace kvo {
namespace logcat {

enum class LineFormat
{
    Brief,
    Time,
    ThreadTime,
    Json
};

// Every line below has no newline.

// "MM-DD HH:MM:SS.mmm TID P/TAG: message" in local time, for a text record;
// "MM-DD HH:MM:SS.mmm TID event N (type T): hex" or "(string): text" for
// events.
std::string formatTextLine(const LogRecord& record);

// "MM-DD HH:MM:SS.mmm  PID   TID P TAG     : message" as Android's threadtime,
// the process from the sender's credentials and the thread's low 16 bits
// from the record; events as in formatTextLine after the two numbers.
std::string formatThreadTimeLine(const LogRecord& record);

// "P/TAG(TID): message", or "event N(TID) (type T): hex" and so on: Android's
// brief form, with the thread in the place of the process, which records do
// not carry.
std::string formatBriefLine(const LogRecord& record);

// One JSON object on one line: the log id, the sender's pid and uid, the
// thread, the time, then the record's own members; a text record's priority
// as its number and as its letter ("level").
std::string formatJsonLine(const LogRecord& record);

std::string formatLine(const LogRecord& record, LineFormat format);

} // namespace logcat
} // namespace kvo
} // namespace velmo

#endif
