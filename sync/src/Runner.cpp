#include "velmo/kvo/sync/Runner.h"

#include "velmo/kvo/sync/PollLoop.h"

namespace velmo {
namespace kvo {
namespace sync {

using lipsyncapi::Service;

namespace {

// The engine behind a Service of the runner's own.
class ServiceEngine final : public Engine
{
public:
    explicit ServiceEngine(const std::string& socketPath) : _socketPath(socketPath) {}

    bool isConnected() override { return _connected; }

    int32_t connect(std::string& failure) override
    {
        const int32_t code = noted(_service.connect(_socketPath), failure);
        _connected = code == Service::Success;
        return code;
    }

    void disconnect() override
    {
        _service.disconnect();
        _connected = false;
    }

    int32_t getAudioTimestamps(common::LipSyncNtpTimestamps& audio, std::string& failure) override
    {
        return noted(_service.getAudioTimestamps(audio), failure);
    }

    int32_t setAudioDelayMargin(unsigned marginMs, std::string& failure) override
    {
        return noted(_service.setAudioDelayMargin(marginMs), failure);
    }

private:
    static int32_t noted(const Service::ServiceResult& result, std::string& failure)
    {
        if (result.isFailure()) {
            failure = result.format();
        }
        return result.getErrorCode();
    }

    Service _service;
    std::string _socketPath;
    bool _connected = false;
};

// Every code of a Service is a Service::ResultCode.
RunnerReport fromService(const PollReport& report)
{
    return {report.decision, report.connected, static_cast<Service::ResultCode>(report.timestampsCode),
            static_cast<Service::ResultCode>(report.marginCode), report.audio};
}

} // namespace

struct Runner::Impl
{
    Impl(const std::string& socketPath, unsigned pollIntervalMs)
        : engine(socketPath), loop(engine, pollIntervalMs)
    {
    }

    ServiceEngine engine;
    PollLoop loop;
};

Runner::Runner(const std::string& socketPath, unsigned pollIntervalMs)
    : _impl(std::make_unique<Impl>(socketPath, pollIntervalMs))
{
}

Runner::~Runner() = default;

RunnerReport Runner::poll(long long nowMs, const VideoTimestamps* video)
{
    return fromService(_impl->loop.poll(nowMs, video));
}

void Runner::run(const std::function<bool(VideoTimestamps&)>& frame,
                 const std::function<bool(const RunnerReport&)>& report)
{
    _impl->loop.run(frame, [&report](const PollReport& polled) { return report(fromService(polled)); });
}

const std::string& Runner::lastFailure() const
{
    return _impl->loop.lastFailure();
}

const Controller& Runner::controller() const
{
    return _impl->loop.controller();
}

} // namespace sync
} // namespace kvo
} // namespace velmo
