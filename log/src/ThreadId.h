#ifndef VELMO_KVO_LOG_THREADID_H
#define VELMO_KVO_LOG_THREADID_H

#include <sys/types.h>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace log {

// The kernel's id of the calling thread. The one place that depends on the C
// library offering gettid(): bionic and glibc 2.30+ both do.
inline pid_t currentThreadId()
{
    return gettid();
}

} // namespace log
} // namespace kvo
} // namespace velmo

#endif
