#ifndef VELMO_KVO_SYNCEVAL_BASELINE_H
#define VELMO_KVO_SYNCEVAL_BASELINE_H

#include "Strategy.h"

#include <deque>

namespace velmo {
namespace kvo {
namespace synceval {

// The yardstick: stream synchronisation as WebRTC publicly describes it. Once
// a second it averages the last 4 readings of the relative delay (audio delay
// minus video delay, as measured); while that average is under 30 ms it does
// nothing; otherwise it moves the delays by the average, at most 80 ms per
// step: when the audio is early it first takes back extra video delay, then
// delays the audio (through the margin, rounded to its steps); when the video
// is early it first takes back extra audio delay, then delays the video.
class Baseline : public Strategy
{
public:
    static constexpr double periodMs = 1000;
    static constexpr std::size_t readings = 4;
    static constexpr double deadZoneMs = 30;
    static constexpr double maxStepMs = 80;

    void reconnected() override { _apply = true; }
    Action update(const sync::Poll& poll) override;
    void marginApplied(long long nowMs, unsigned marginMs, bool accepted) override;

private:
    std::deque<double> _relative;
    bool _started = false;
    long long _lastStepAt = 0;
    // The audio delay it wants, before rounding to a margin.
    double _audioExtraMs = 0;
    double _videoExtraMs = 0;
    unsigned _margin = 0;
    bool _apply = false;
};

} // namespace synceval
} // namespace kvo
} // namespace velmo

#endif
