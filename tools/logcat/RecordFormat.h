#ifndef VELMO_KVO_LOGCAT_RECORDFORMAT_H
#define VELMO_KVO_LOGCAT_RECORDFORMAT_H

#include "LogRecord.h"

#include <string>

namespace velmo {
namespace kvo {
namespace logcat {

// "MM-DD HH:MM:SS.mmm TID P/TAG: message" in local time, for a text record;
// "MM-DD HH:MM:SS.mmm TID event N (type T): hex" or "(string): text" for
// events. No newline.
std::string formatTextLine(const LogRecord& record);

// One JSON object on one line, no newline.
std::string formatJsonLine(const LogRecord& record);

} // namespace logcat
} // namespace kvo
} // namespace velmo

#endif
