#ifndef VELMO_KVO_LOGCAT_RECORDDECODER_H
#define VELMO_KVO_LOGCAT_RECORDDECODER_H

#include "LogRecord.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace velmo {
namespace kvo {
namespace logcat {

constexpr size_t recordHeaderSize = 11;
constexpr uint8_t eventsLogId = 2;
constexpr uint8_t stringEventType = 2;

// Decodes one datagram. Records of the events log are events; records of any
// other log are text. A text message that lost its NUL to the payload limit
// runs to the end of the datagram. Returns false with a one-line reason in
// `error` for a datagram that is not a record.
bool decodeRecord(const uint8_t* data, size_t size, LogRecord& record, std::string& error);

} // namespace logcat
} // namespace kvo
} // namespace velmo

#endif
