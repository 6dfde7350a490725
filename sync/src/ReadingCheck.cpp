#include "velmo/kvo/sync/ReadingCheck.h"

#include "velmo/kvo/sync/Controller.h"
#include "velmo/kvo/sync/NtpDuration.h"

#include <cmath>

namespace velmo {
namespace kvo {
namespace sync {

ReadingCheck::ReadingCheck(unsigned renderingBeforeCapture, unsigned delayImplausible, unsigned clockJump)
    : _renderingBeforeCapture(renderingBeforeCapture), _delayImplausible(delayImplausible),
      _clockJump(clockJump)
{
}

unsigned ReadingCheck::check(long long nowMs, std::uint64_t capture, std::uint64_t rendering, double& delayMs)
{
    const double delay = ntpSpanMs(capture, rendering);
    if (delay < 0) {
        return _renderingBeforeCapture;
    }
    if (delay > tuning::maxPlausibleDelayMs) {
        return _delayImplausible;
    }
    const bool jumped = _seen && std::fabs(ntpSpanMs(_lastCapture, capture) -
                                           static_cast<double>(nowMs - _lastNowMs)) > tuning::maxClockJumpMs;
    // The clock that jumped becomes the reference: if it really was set anew,
    // the readings after this one agree with it again.
    _seen = true;
    _lastCapture = capture;
    _lastNowMs = nowMs;
    if (jumped) {
        return _clockJump;
    }
    delayMs = delay;
    return 0;
}

} // namespace sync
} // namespace kvo
} // namespace velmo
