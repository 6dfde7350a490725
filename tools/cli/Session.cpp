#include "Session.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <thread>
#include <unistd.h>

namespace akvo {
namespace cli {

using velmo::kvo::common::LipSyncNtpTimestamps;
using velmo::kvo::lipsyncapi::Service;

namespace {

volatile std::sig_atomic_t interrupted = 0;

void onInterrupt(int)
{
    interrupted = 1;
}

// NTP timestamps carry seconds in the upper and the fraction in the lower 32
// bits, so a difference of two is in units of 2^-32 s.
double ntpDifferenceMs(unsigned long long later, unsigned long long earlier)
{
    const int64_t difference = static_cast<int64_t>(later - earlier);
    return static_cast<double>(difference) * 1000.0 / 4294967296.0;
}

} // namespace

int exitStatusFor(const Service::ServiceResult& result)
{
    switch (result.getErrorCode()) {
    case Service::Success:
        return ExitSuccess;
    case Service::InvalidParam:
        return ExitInvalidParam;
    case Service::BadState:
        return ExitBadState;
    case Service::CannotConnect:
        return ExitCannotConnect;
    case Service::TransportError:
        return ExitTransportError;
    case Service::ServerError:
        return ExitServerError;
    case Service::NotInCall:
        return ExitNotInCall;
    default:
        return ExitOtherFailure;
    }
}

int Session::connect(const std::string& socketName, bool quietOnSuccess)
{
    const Service::ServiceResult result = _service.connect(socketName);
    if (result.isFailure() || !quietOnSuccess) {
        _output.print("connect", result, {Field{"socket", socketName, false}});
    }
    return exitStatusFor(result);
}

int Session::disconnect(bool quietOnSuccess)
{
    const Service::ServiceResult result = _service.disconnect();
    if (result.isFailure() || !quietOnSuccess) {
        _output.print("disconnect", result);
    }
    return exitStatusFor(result);
}

int Session::caps()
{
    unsigned long long granularityMs = 0;
    unsigned long long maxAudioDelayMargin = 0;
    const Service::ServiceResult result = _service.getCapabilities(granularityMs, maxAudioDelayMargin);
    if (result.isSuccess()) {
        _output.print("caps", result,
                      {numberField("granularityMs", granularityMs),
                       numberField("maxAudioDelayMargin", maxAudioDelayMargin)});
    } else {
        _output.print("caps", result);
    }
    return exitStatusFor(result);
}

int Session::setMargin(unsigned long long delayMs)
{
    const Service::ServiceResult result = _service.setAudioDelayMargin(delayMs);
    // In plain text the margin goes into the label, since a refusal prints no values.
    _output.print(_output.json() ? "set-margin" : "set-margin " + std::to_string(delayMs), result,
                  {numberField("delayMs", delayMs)});
    return exitStatusFor(result);
}

int Session::getMargin()
{
    unsigned long long delayMs = 0;
    const Service::ServiceResult result = _service.getAudioDelayMargin(delayMs);
    if (result.isSuccess()) {
        _output.print("get-margin", result, {numberField("delayMs", delayMs)});
    } else {
        _output.print("get-margin", result);
    }
    return exitStatusFor(result);
}

int Session::timestamps(unsigned int count, unsigned int intervalMs, bool watch)
{
    const bool liveLine = watch && !_output.json() && isatty(STDOUT_FILENO);
    interrupted = 0;
    void (*previous)(int) = std::signal(SIGINT, onInterrupt);
    int status = ExitSuccess;
    for (unsigned int sample = 0; (watch && count == 0) || sample < count; ++sample) {
        if (sample > 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(intervalMs));
        }
        if (interrupted) {
            break;
        }
        LipSyncNtpTimestamps timestamps = {0, 0, 0, 0};
        const Service::ServiceResult result = _service.getAudioTimestamps(timestamps);
        status = exitStatusFor(result);
        if (result.isFailure()) {
            if (liveLine) {
                std::printf("\n");
            }
            _output.print("timestamps", result);
            break;
        }
        const double latencyMs = ntpDifferenceMs(timestamps.tRdr, timestamps.tCap);
        const double networkMs = ntpDifferenceMs(timestamps.tCap, timestamps.tRcv);
        if (liveLine) {
            std::printf("\raudio latency %8.3f ms | network delay %8.3f ms | jitter buffer %4llu   ",
                        latencyMs, networkMs, timestamps.jbmDepth);
            std::fflush(stdout);
            continue;
        }
        _output.print(
            "timestamps", result,
            {numberField("capture", timestamps.tCap), numberField("rendering", timestamps.tRdr),
             numberField("receiving", timestamps.tRcv), numberField("jitterBufferDepth", timestamps.jbmDepth),
             millisecondsField("audioLatencyMs", latencyMs), millisecondsField("networkDelayMs", networkMs)});
    }
    if (liveLine) {
        std::printf("\n");
    }
    std::signal(SIGINT, previous);
    return status;
}

int Session::videoTimestamps(const LipSyncNtpTimestamps& timestamps)
{
    const Service::ServiceResult result = _service.setVideoTimestamps(timestamps);
    _output.print("video-ts", result);
    return exitStatusFor(result);
}

} // namespace cli
} // namespace akvo
