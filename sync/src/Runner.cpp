#include "velmo/kvo/sync/Runner.h"

#include <chrono>
#include <thread>

namespace velmo {
namespace kvo {
namespace sync {

using lipsyncapi::Service;

namespace {

// Keeps the text of a failure; after a transport failure it closes the
// connection: part of an answer may still wait on it, and the engine may have
// restarted, so the next poll starts on a new one.
Service::ResultCode note(const Service::ServiceResult& result, Service& service, bool& connected,
                         std::string& lastFailure)
{
    if (result.isFailure()) {
        lastFailure = result.format();
    }
    if (result.getErrorCode() == Service::TransportError) {
        service.disconnect();
        connected = false;
    }
    return result.getErrorCode();
}

} // namespace

Runner::Runner(const std::string& socketPath, unsigned pollIntervalMs)
    : _controller(pollIntervalMs), _socketPath(socketPath), _pollIntervalMs(pollIntervalMs)
{
}

Runner::~Runner() = default;

RunnerReport Runner::poll(long long nowMs, const VideoTimestamps* video)
{
    RunnerReport report{};
    report.timestampsCode = Service::Success;
    report.marginCode = Service::Success;
    if (!_connected) {
        report.timestampsCode = note(_service.connect(_socketPath), _service, _connected, _lastFailure);
        _connected = report.timestampsCode == Service::Success;
        if (_connected) {
            _controller.reconnected();
        }
    }
    Poll poll{
        nowMs, false, {0, 0, 0, 0}, video != nullptr, video != nullptr ? *video : VideoTimestamps{0, 0}};
    if (_connected) {
        report.timestampsCode =
            note(_service.getAudioTimestamps(poll.audio), _service, _connected, _lastFailure);
        poll.audioValid = report.timestampsCode == Service::Success;
    }
    report.decision = _controller.update(poll);
    if (_connected && report.decision.applyMargin) {
        report.marginCode =
            note(_service.setAudioDelayMargin(report.decision.marginMs), _service, _connected, _lastFailure);
        _controller.marginApplied(nowMs, report.decision.marginMs, report.marginCode == Service::Success);
    }
    report.connected = _connected;
    return report;
}

void Runner::run(const std::function<bool(VideoTimestamps&)>& frame,
                 const std::function<bool(const RunnerReport&)>& report)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    Clock::time_point next = start;
    for (;;) {
        VideoTimestamps video{0, 0};
        const bool shown = frame(video);
        const long long nowMs =
            std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
        if (!report(poll(nowMs, shown ? &video : nullptr))) {
            return;
        }
        next += std::chrono::milliseconds(_pollIntervalMs);
        std::this_thread::sleep_until(next);
    }
}

} // namespace sync
} // namespace kvo
} // namespace velmo
