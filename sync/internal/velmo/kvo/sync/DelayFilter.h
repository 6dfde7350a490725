#ifndef VELMO_KVO_SYNC_DELAYFILTER_H
#define VELMO_KVO_SYNC_DELAYFILTER_H

#include "velmo/kvo/sync/Controller.h"

#include <deque>
#include <vector>

namespace velmo {
namespace kvo {
namespace sync {

// One side's delay, filtered: the mean of the middle half of the readings
// since the last step (at most tuning::filterWindow), with a running estimate
// of the readings' noise. Steps are found by a cumulative sum on each side
// (see tuning): the window restarts from the readings that made the sum, so a
// real change is followed in a few readings while noise does not move it.
// The next tuning::minStepReadings readings confirm the step, or, when they
// lie nearer the level before it, take it back.
class DelayFilter
{
public:
    // Returns true when this reading confirmed a step.
    bool add(double delayMs);
    // Moves every reading held by `deltaMs`, for a change in how readings are corrected.
    void shift(double deltaMs);
    bool ready() const { return !_window.empty(); }
    // Enough readings since the last restart for the level to be more than a guess.
    std::size_t readings() const { return _window.size(); }
    bool settled() const { return !_confirming && _window.size() >= tuning::settledReadings; }
    double level() const { return _level; }
    // Standard deviation of one reading.
    double noise() const;
    // Standard deviation of level().
    double levelNoise() const;

private:
    double alarmLevel() const;
    // Forgets the readings and starts again from `delaysMs`; the noise estimate stays.
    void restart(const std::deque<double>& delaysMs);
    bool confirm(double delayMs);
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
    // A step being confirmed: the window and level before it, the level it
    // restarted at, and the readings since.
    bool _confirming = false;
    std::deque<double> _before;
    double _beforeLevel = 0;
    double _stepLevel = 0;
    std::vector<double> _since;
    // The latest differences between consecutive readings, across restarts.
    std::deque<double> _differences;
    bool _hasLast = false;
    double _last = 0;
};

} // namespace sync
} // namespace kvo
} // namespace velmo

#endif
