#include "Baseline.h"

#include "velmo/kvo/sync/NtpDuration.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace velmo {
namespace kvo {
namespace synceval {

Action Baseline::update(const sync::Poll& poll)
{
    if (poll.audioValid && poll.videoValid) {
        _relative.push_back(sync::ntpSpanMs(poll.audio.tCap, poll.audio.tRdr) -
                            sync::ntpSpanMs(poll.video.capture, poll.video.rendering));
        if (_relative.size() > readings) {
            _relative.pop_front();
        }
    }
    if (!_started) {
        _started = true;
        _lastStepAt = poll.nowMs;
    }
    if (poll.nowMs - _lastStepAt >= periodMs && _relative.size() == readings) {
        _lastStepAt = poll.nowMs;
        const double average = std::accumulate(_relative.begin(), _relative.end(), 0.0) / readings;
        const double step = std::min(std::fabs(average), maxStepMs);
        if (std::fabs(average) >= deadZoneMs) {
            if (average < 0) {
                if (_videoExtraMs > 0) {
                    _videoExtraMs = std::max(0.0, _videoExtraMs - step);
                } else {
                    _audioExtraMs = std::min(double(sync::tuning::maxMarginMs), _audioExtraMs + step);
                }
            } else if (_audioExtraMs > 0) {
                _audioExtraMs = std::max(0.0, _audioExtraMs - step);
            } else {
                _videoExtraMs += step;
            }
            const unsigned margin =
                static_cast<unsigned>(std::lround(_audioExtraMs / sync::tuning::marginStepMs)) *
                sync::tuning::marginStepMs;
            _apply = _apply || margin != _margin;
            _margin = margin;
        }
    }
    return {_margin, _apply, _videoExtraMs, false};
}

void Baseline::marginApplied(long long, unsigned marginMs, bool accepted)
{
    _apply = !accepted || marginMs != _margin;
}

} // namespace synceval
} // namespace kvo
} // namespace velmo
