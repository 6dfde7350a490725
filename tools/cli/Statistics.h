#ifndef VELMO_KVO_CLI_STATISTICS_H
#define VELMO_KVO_CLI_STATISTICS_H

#include <algorithm>

namespace velmo {
namespace kvo {
namespace cli {

// Least, mean and greatest of the values seen so far.
class Statistics
{
public:
    void add(double value)
    {
        _least = _count == 0 ? value : std::min(_least, value);
        _greatest = _count == 0 ? value : std::max(_greatest, value);
        _sum += value;
        ++_count;
    }

    unsigned long long count() const { return _count; }
    double least() const { return _least; }
    double mean() const { return _count == 0 ? 0.0 : _sum / static_cast<double>(_count); }
    double greatest() const { return _greatest; }

private:
    unsigned long long _count = 0;
    double _least = 0.0;
    double _greatest = 0.0;
    double _sum = 0.0;
};

} // namespace cli
} // namespace kvo
} // namespace velmo

#endif
