#ifndef VELMO_KVO_LOG_THREADID_H
#define VELMO_KVO_LOG_THREADID_H

#include <sys/types.h>

namespace velmo {
namespace kvo {
namespace log {

// The kernel's id of the calling thread. Asked of the C library once per
// thread: glibc's gettid() is a system call every time, which each record
// would pay. The one place that depends on the C library offering gettid():
// bionic and glibc 2.30+ both do.
pid_t currentThreadId();

} // namespace log
} // namespace kvo
} // namespace velmo

#endif
