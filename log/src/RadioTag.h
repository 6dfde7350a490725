#ifndef VELMO_KVO_LOGWRITER_RADIOTAG_H
#define VELMO_KVO_LOGWRITER_RADIOTAG_H

#include <cstddef>

namespace velmo {
namespace kvo {
namespace logwriter {

constexpr size_t radioTagSize = 32;

// The radio stack's records belong in the radio log, whichever log their
// code asked for. For such a tag, returns the radio log's id and points
// `tag` at "use-Rlog/RLOG-<tag>" built in `buffer` (cut to fit); otherwise
// returns `logId` and leaves `tag` alone.
int routeRadioTag(int logId, const char*& tag, char (&buffer)[radioTagSize]);

} // namespace logwriter
} // namespace kvo
} // namespace velmo

#endif
