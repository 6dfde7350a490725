#ifndef VELMO_KVO_LOG_LOGSOCKET_H
#define VELMO_KVO_LOG_LOGSOCKET_H

namespace velmo {
namespace kvo {
namespace log {

// Opens a close-on-exec, non-blocking datagram socket connected to the log
// daemon. Returns the descriptor, or minus the error number; then
// `failedAtConnect` tells a daemon that is not there (worth trying again)
// from a process that cannot have such a socket at all.
int openLogSocket(bool& failedAtConnect);

} // namespace log
} // namespace kvo
} // namespace velmo

#endif
