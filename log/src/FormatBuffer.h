#ifndef VELMO_KVO_LOG_FORMATBUFFER_H
#define VELMO_KVO_LOG_FORMATBUFFER_H

#include <cstddef>

namespace velmo {
namespace kvo {
namespace log {

// Formatted messages are built on the stack and cut to this size, NUL
// included, so that no record allocates.
constexpr size_t formatBufferSize = 1024;

} // namespace log
} // namespace kvo
} // namespace velmo

#endif
