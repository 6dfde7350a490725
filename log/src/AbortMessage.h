#ifndef VELMO_KVO_LOGWRITER_ABORTMESSAGE_H
#define VELMO_KVO_LOGWRITER_ABORTMESSAGE_H

namespace velmo {
namespace kvo {
namespace logwriter {

// Hands a fatal message to the C library, which reports it as the reason of
// the abort that usually follows. Does nothing on a C library without
// android_set_abort_message.
void recordAbortMessage(const char* message);

} // namespace logwriter
} // namespace kvo
} // namespace velmo

#endif
