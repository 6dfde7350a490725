#include "velmo/kvo/sync/MarginLearner.h"

#include "Median.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace velmo {
namespace kvo {
namespace sync {

void MarginLearner::start(long long nowMs, unsigned fromMs, unsigned toMs, double beforeMs,
                          double beforeNoiseMs, bool teaching)
{
    _beforeNoiseMs = beforeNoiseMs;
    _teaching = teaching;
    _watching = true;
    _acceptedAt = nowMs;
    _changeMs = static_cast<double>(toMs) - static_cast<double>(fromMs);
    _beforeMs = beforeMs;
    _lastReadingAt = nowMs;
    _moved.clear();
    _sinceLag.clear();
    _seen = false;
}

MarginLearner::Outcome MarginLearner::observe(long long nowMs, double audioMs, double noiseMs,
                                              std::deque<double>& after)
{
    const double elapsed = static_cast<double>(nowMs - _acceptedAt);
    const double expected = _gain * std::fabs(_changeMs);
    const double threshold = std::max(expected / 2, 2 * noiseMs);
    // Seeing a change needs room between the noise and what the change does,
    // and a level before it that is known well enough.
    const bool visible = threshold < 0.8 * expected && _beforeNoiseMs <= expected / 4;
    _noiseMs = noiseMs;
    if (!_seen) {
        const double moved = (audioMs - _beforeMs) * (_changeMs > 0 ? 1 : -1);
        if (visible && moved > threshold) {
            if (_moved.empty()) {
                _movedAfter = _lastReadingAt;
                _movedFrom = nowMs;
            }
            _moved.push_back(audioMs);
            _seen = _moved.size() >= 2;
        } else {
            _moved.clear();
        }
        _lastReadingAt = nowMs;
        if (elapsed >= _lagMs) {
            _sinceLag.push_back(audioMs);
        }
        const bool waitedOut = !visible && elapsed >= _lagMs + 2.0 * _pollIntervalMs;
        if (!_seen && (waitedOut || elapsed > tuning::maxLagMs)) {
            _watching = false;
            after = _sinceLag.empty() ? std::deque<double>{audioMs} : _sinceLag;
            return Outcome::Unlearnt;
        }
        if (!_seen) {
            return Outcome::Watching;
        }
    } else {
        _moved.push_back(audioMs);
    }
    if (_moved.size() < tuning::gainReadings) {
        return Outcome::Watching;
    }
    return learn(after);
}

MarginLearner::Outcome MarginLearner::learn(std::deque<double>& after)
{
    _watching = false;
    after = _moved;
    if (!_teaching) {
        return Outcome::Unlearnt;
    }
    const double move = median(_moved) - _beforeMs;
    const double gain = move / _changeMs;
    if (gain < tuning::minGain || gain > tuning::maxGain) {
        return Outcome::Unlearnt;
    }
    // Least squares weighted by how well each change was measured, with the
    // initial gain as a prior worth tuning::gainPriorSpread.
    const double spread =
        std::hypot(_beforeNoiseMs, 1.25 * _noiseMs / std::sqrt(double(tuning::gainReadings)));
    const double weight = 1 / std::max(spread * spread, 1e-6);
    _sumChangeByMove = tuning::gainMemory * _sumChangeByMove + weight * _changeMs * move;
    _sumChangeSquared = tuning::gainMemory * _sumChangeSquared + weight * _changeMs * _changeMs;
    const double prior = 1 / (tuning::gainPriorSpread * tuning::gainPriorSpread);
    _gain = std::clamp((prior * tuning::initialGain + _sumChangeByMove) / (prior + _sumChangeSquared),
                       tuning::minGain, tuning::maxGain);
    // The change came to work between the last reading that did not show it and the first that did.
    const double lag = (static_cast<double>(_movedAfter + _movedFrom) / 2) - static_cast<double>(_acceptedAt);
    _lagMs = _changesSeen == 0 ? lag : _lagMs + tuning::lagSmoothing * (lag - _lagMs);
    ++_changesSeen;
    return Outcome::Learnt;
}

} // namespace sync
} // namespace kvo
} // namespace velmo
