#ifndef VELMO_KVO_LOGWRITER_LOGSOCKET_H
#define VELMO_KVO_LOGWRITER_LOGSOCKET_H

namespace velmo {
namespace kvo {
namespace logwriter {

// The path of the log daemon's socket: the one the library was built with,
// or the environment variable AKVO_LOG_SOCKET, read once at load time when
// it is set and not empty. Null when that value is too long for a Unix
// socket address (107 bytes at most): the writer then reaches no daemon at
// all rather than one at a shortened path.
const char* logSocketPath();

// Opens a close-on-exec, non-blocking datagram socket connected to the log
// daemon. Returns the descriptor, or minus the error number; then
// `failedAtConnect` tells a daemon that is not there (worth trying again)
// from a process that cannot have such a socket at all.
int openLogSocket(bool& failedAtConnect);

} // namespace logwriter
} // namespace kvo
} // namespace velmo

#endif
