#include "velmo/kvo/sync/DelayFilter.h"

#include "Median.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace velmo {
namespace kvo {
namespace sync {

bool DelayFilter::add(double delayMs)
{
    if (_hasLast) {
        _differences.push_back(std::fabs(delayMs - _last));
        if (_differences.size() > tuning::noiseReadings) {
            _differences.pop_front();
        }
    }
    _hasLast = true;
    _last = delayMs;
    if (_window.empty()) {
        restart({delayMs});
        return false;
    }
    if (_confirming) {
        return confirm(delayMs);
    }
    const double residual = delayMs - _level;
    if (accumulate(residual, _upSum, _upRun, delayMs) || accumulate(-residual, _downSum, _downRun, delayMs)) {
        return false;
    }
    _window.push_back(delayMs);
    if (_window.size() > tuning::filterWindow) {
        _window.pop_front();
    }
    updateLevel();
    return false;
}

bool DelayFilter::confirm(double delayMs)
{
    _since.push_back(delayMs);
    _window.push_back(delayMs);
    updateLevel();
    if (_since.size() < tuning::minStepReadings) {
        return false;
    }
    _confirming = false;
    const double mean =
        std::accumulate(_since.begin(), _since.end(), 0.0) / static_cast<double>(_since.size());
    if (std::fabs(mean - _stepLevel) <= std::fabs(mean - _beforeLevel)) {
        return true;
    }
    _window = _before;
    for (double reading : _since) {
        _window.push_back(reading);
        if (_window.size() > tuning::filterWindow) {
            _window.pop_front();
        }
    }
    updateLevel();
    return false;
}

bool DelayFilter::accumulate(double distanceMs, double& sum, std::deque<double>& run, double delayMs)
{
    const double alarm = alarmLevel();
    // The level itself is uncertain just after a restart: that is no step either.
    const double slack = tuning::stepSlackNoise * noise() + levelNoise();
    sum = std::max(0.0, sum + std::min(distanceMs - slack, alarm / tuning::minStepReadings));
    if (sum <= 0) {
        run.clear();
        return false;
    }
    run.push_back(delayMs);
    if (sum < alarm) {
        return false;
    }
    _before = _window;
    _beforeLevel = _level;
    restart(std::deque<double>(run));
    _stepLevel = _level;
    _confirming = true;
    _since.clear();
    return true;
}

void DelayFilter::restart(const std::deque<double>& delaysMs)
{
    _window = delaysMs;
    _upSum = 0;
    _downSum = 0;
    _upRun.clear();
    _downRun.clear();
    updateLevel();
}

double DelayFilter::noise() const
{
    if (_differences.size() < tuning::minNoiseReadings) {
        return tuning::initialNoiseMs;
    }
    // Consecutive readings differ by a median of 0.954 standard deviations
    // under normal noise (1.015 under even noise); a step is only one difference.
    return median(_differences) / 0.954;
}

double DelayFilter::levelNoise() const
{
    // The mean of the middle half of n readings spreads about 1.2 / sqrt(n) times as much as one reading.
    return 1.2 * noise() / std::sqrt(static_cast<double>(std::max<std::size_t>(_window.size(), 1)));
}

double DelayFilter::alarmLevel() const
{
    return std::max(tuning::minStepMs, tuning::stepAlarmNoise * noise());
}

void DelayFilter::shift(double deltaMs)
{
    for (double& value : _window) {
        value += deltaMs;
    }
    _level += deltaMs;
}

void DelayFilter::updateLevel()
{
    // The mean of the middle half: nearly as calm as the mean under even
    // noise, and as deaf as the median to a few wild readings.
    std::vector<double> sorted(_window.begin(), _window.end());
    std::sort(sorted.begin(), sorted.end());
    const std::size_t quarter = sorted.size() / 4;
    const std::size_t kept = sorted.size() - 2 * quarter;
    _level = std::accumulate(sorted.begin() + quarter, sorted.end() - quarter, 0.0) / kept;
}

} // namespace sync
} // namespace kvo
} // namespace velmo
