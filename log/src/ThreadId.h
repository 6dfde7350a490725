#ifndef VELMO_KVO_LOGWRITER_THREADID_H
#define VELMO_KVO_LOGWRITER_THREADID_H

#include <sys/types.h>

namespace velmo {
namespace kvo {
namespace logwriter {

// The kernel's id of the calling thread. Asked of the C library once per
// thread: glibc's gettid() is a system call every time, which each record
// would pay. The one place that depends on the C library offering gettid():
// bionic and glibc 2.30+ both do.
pid_t currentThreadId();

} // namespace logwriter
} // namespace kvo
} // namespace velmo

#endif
