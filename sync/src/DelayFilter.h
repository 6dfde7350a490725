#ifndef VELMO_KVO_SYNC_DELAYFILTER_H
#define VELMO_KVO_SYNC_DELAYFILTER_H

#include "velmo/kvo/sync/Controller.h"

#include <deque>

namespace velmo {
namespace kvo {
namespace sync {

// One side's delay, filtered: the mean of the middle half of the readings
// since the last step (at most tuning::filterWindow), with a running estimate of the readings'
// noise. Steps are found by a cumulative sum on each side (see tuning): the
// window restarts from the readings that made the sum, so a real change is
// followed in a few readings while noise does not move it.
class DelayFilter
{
public:
    // Returns true when this reading completed a step.
    bool add(double delayMs);
    // Forgets the readings and starts again from `delaysMs`; the noise estimate stays.
    void restart(const std::deque<double>& delaysMs);
    // Moves every reading held by `deltaMs`, for a change in how readings are corrected.
    void shift(double deltaMs);
    bool ready() const { return !_window.empty(); }
    // Enough readings since the last restart for the level to be more than a guess.
    bool settled() const { return _window.size() >= tuning::settledReadings; }
    double level() const { return _level; }
    // Standard deviation of one reading.
    double noise() const;
    // Standard deviation of level().
    double levelNoise() const;

private:
    double alarmLevel() const;
    // Adds one reading to one side's sum; true when that side found a step.
    bool accumulate(double distanceMs, double& sum, std::deque<double>& run, double delayMs);
    void updateLevel();

    std::deque<double> _window;
    // Each side's sum, and the readings since it was last zero.
    double _upSum = 0;
    double _downSum = 0;
    std::deque<double> _upRun;
    std::deque<double> _downRun;

    double _level = 0;
    // The latest differences between consecutive readings, across restarts.
    std::deque<double> _differences;
    bool _hasLast = false;
    double _last = 0;
};

} // namespace sync
} // namespace kvo
} // namespace velmo

#endif
