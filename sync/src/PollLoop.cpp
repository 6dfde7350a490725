#include "velmo/kvo/sync/PollLoop.h"

#include "velmo/kvo/lipsyncapi/Service.h"

namespace velmo {
namespace kvo {
namespace sync {

using lipsyncapi::Service;

PollLoop::PollLoop(Engine& engine, unsigned pollIntervalMs)
    : _engine(engine), _controller(pollIntervalMs), _pollIntervalMs(pollIntervalMs)
{
}

PollReport PollLoop::poll(long long nowMs, const VideoTimestamps* video)
{
    PollReport report{};
    report.timestampsCode = Service::Success;
    report.marginCode = Service::Success;
    if (!_engine.isConnected()) {
        report.timestampsCode = _engine.connect(_lastFailure);
        if (report.timestampsCode == Service::Success) {
            _controller.reconnected();
        }
    }
    Poll poll{
        nowMs, false, {0, 0, 0, 0}, video != nullptr, video != nullptr ? *video : VideoTimestamps{0, 0}};
    if (report.timestampsCode == Service::Success) {
        report.timestampsCode =
            closingAfterTransportError(_engine.getAudioTimestamps(poll.audio, _lastFailure));
        poll.audioValid = report.timestampsCode == Service::Success;
    }
    report.decision = _controller.update(poll);
    if (report.decision.applyMargin && _engine.isConnected()) {
        report.marginCode =
            closingAfterTransportError(_engine.setAudioDelayMargin(report.decision.marginMs, _lastFailure));
        _controller.marginApplied(nowMs, report.decision.marginMs, report.marginCode == Service::Success);
    }
    report.connected = _engine.isConnected();
    if (poll.audioValid) {
        report.audio = poll.audio;
    }
    return report;
}

int32_t PollLoop::closingAfterTransportError(int32_t code)
{
    if (code == Service::TransportError && _engine.isConnected()) {
        _engine.disconnect();
    }
    return code;
}

} // namespace sync
} // namespace kvo
} // namespace velmo
