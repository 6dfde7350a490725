#ifndef VELMO_KVO_LOGWRITER_RECORDWRITER_H
#define VELMO_KVO_LOGWRITER_RECORDWRITER_H

#include <cstddef>
#include <sys/uio.h>

namespace velmo {
namespace kvo {
namespace logwriter {

// Text records have the most payload buffers: priority, tag and message.
constexpr size_t maxPayloadBuffers = 3;

// Sends one record of at most maxPayloadBuffers buffers to the log daemon
// through the process's current writer. Returns the payload bytes sent, 0 for
// a record dropped on purpose, or a negative error number.
int writeRecord(int logId, iovec* payload, size_t count);

template <size_t count>
int writeRecord(int logId, iovec (&payload)[count])
{
    static_assert(count <= maxPayloadBuffers, "more payload buffers than a record may have");
    return writeRecord(logId, payload, count);
}

} // namespace logwriter
} // namespace kvo
} // namespace velmo

#endif
