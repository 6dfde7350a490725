#ifndef VELMO_KVO_LOG_ABORTMESSAGE_H
#define VELMO_KVO_LOG_ABORTMESSAGE_H

namespace velmo {
namespace kvo {
namespace log {

// Hands a fatal message to the C library, which reports it as the reason of
// the abort that usually follows. Does nothing on a C library without
// android_set_abort_message.
void recordAbortMessage(const char* message);

} // namespace log
} // namespace kvo
} // namespace velmo

#endif
