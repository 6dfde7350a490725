#ifndef VELMO_KVO_SYNC_MEDIAN_H
#define VELMO_KVO_SYNC_MEDIAN_H

#include <algorithm>
#include <deque>
#include <vector>

namespace velmo {
namespace kvo {
namespace sync {

// The median of a few dozen readings at most, so a sorted copy is cheap
// enough; `values` must not be empty.
inline double median(const std::deque<double>& values)
{
    std::vector<double> sorted(values.begin(), values.end());
    std::sort(sorted.begin(), sorted.end());
    const std::size_t middle = sorted.size() / 2;
    return sorted.size() % 2 == 1 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
}

} // namespace sync
} // namespace kvo
} // namespace velmo

#endif
