#ifndef VELMO_KVO_LOGWRITER_THROUGHPUTLIMIT_H
#define VELMO_KVO_LOGWRITER_THROUGHPUTLIMIT_H

namespace velmo {
namespace kvo {
namespace logwriter {

// Counts one record against `throughput_limit` and, when the threshold is
// reached, sleeps on the calling thread before the record goes out.
void applyThroughputLimit();

} // namespace logwriter
} // namespace kvo
} // namespace velmo

#endif
