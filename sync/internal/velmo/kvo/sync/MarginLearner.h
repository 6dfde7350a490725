#ifndef VELMO_KVO_SYNC_MARGINLEARNER_H
#define VELMO_KVO_SYNC_MARGINLEARNER_H

#include "velmo/kvo/sync/Controller.h"

#include <deque>

namespace velmo {
namespace kvo {
namespace sync {

// Learns what a margin change does to the audio delay. Each accepted change
// is watched in the raw audio readings: it is seen at work when two readings
// in a row have moved from the level before the change by more than half of
// what it should do (and clear of the noise); the time from acceptance to
// then is a lag measurement, and the median of the first readings after it a
// gain measurement, weighed by how precise it is against the initial gain. A
// change too small to be told from the noise, or made from a level not yet
// known well, is waited out for the lag learnt so far and teaches nothing.
// A change watched without teaching ends when seen, and teaches nothing either.
class MarginLearner
{
public:
    enum class Outcome
    {
        Watching,
        Learnt,
        // Over without a measurement: not seen in time, too small to see, or disturbed.
        Unlearnt
    };

    explicit MarginLearner(unsigned pollIntervalMs) : _pollIntervalMs(pollIntervalMs) {}

    double gain() const { return _gain; }
    double lagMs() const { return _lagMs; }
    unsigned changesSeen() const { return _changesSeen; }

    // Starts watching a change from `fromMs` to `toMs` accepted at `nowMs`,
    // when the raw audio delay stood at `beforeMs`, known to a standard
    // deviation of `beforeNoiseMs`. A change watched without `teaching` ends
    // when it is seen, but measures nothing: its level before rests on too
    // few readings for that.
    void start(long long nowMs, unsigned fromMs, unsigned toMs, double beforeMs, double beforeNoiseMs,
               bool teaching);
    bool watching() const { return _watching; }
    void cancel() { _watching = false; }
    // Feeds one raw audio delay. When the watch ends, `after` holds the raw
    // readings that show the new margin at work.
    Outcome observe(long long nowMs, double audioMs, double noiseMs, std::deque<double>& after);

private:
    Outcome learn(std::deque<double>& after);

    unsigned _pollIntervalMs;
    double _gain = tuning::initialGain;
    double _lagMs = tuning::initialLagMs;
    unsigned _changesSeen = 0;
    // Least squares of the audio delay change on the margin change, with forgetting.
    double _sumChangeByMove = 0;
    double _sumChangeSquared = 0;

    bool _watching = false;
    long long _acceptedAt = 0;
    double _changeMs = 0;
    double _beforeMs = 0;
    double _beforeNoiseMs = 0;
    bool _teaching = false;
    double _noiseMs = 0;
    long long _lastReadingAt = 0;
    // Readings beyond the threshold since `_movedFrom`; two of them mark the change seen.
    std::deque<double> _moved;
    long long _movedFrom = 0;
    long long _movedAfter = 0;
    bool _seen = false;
    // Readings from the lag learnt so far on, which a change that is waited out leaves the filter.
    std::deque<double> _sinceLag;
};

} // namespace sync
} // namespace kvo
} // namespace velmo

#endif
