#ifndef VELMO_KVO_LOGWRITER_FORMATBUFFER_H
#define VELMO_KVO_LOGWRITER_FORMATBUFFER_H

#include <cstddef>

namespace velmo {
namespace kvo {
namespace logwriter {

// Formatted messages are built on the stack and cut to this size, NUL
// included, so that no record allocates.
constexpr size_t formatBufferSize = 1024;

} // namespace logwriter
} // namespace kvo
} // namespace velmo

#endif
