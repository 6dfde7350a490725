#ifndef VELMO_KVO_LOG_THROUGHPUTLIMIT_H
#define VELMO_KVO_LOG_THROUGHPUTLIMIT_H

namespace velmo {
namespace kvo {
namespace log {

// Counts one record against `throughput_limit` and, when the threshold is
// reached, sleeps on the calling thread before the record goes out.
void applyThroughputLimit();

} // namespace log
} // namespace kvo
} // namespace velmo

#endif
