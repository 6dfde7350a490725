#include "Session.h"

#include "Statistics.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <thread>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace cli {

using common::LipSyncNtpTimestamps;
using lipsyncapi::Service;

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
        _output.print("connect", result, {textField("socket", socketName)});
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

int Session::timestamps(unsigned int count, unsigned int intervalMs, bool watch, bool csv)
{
    const bool liveLine = watch && !csv && !_output.json() && isatty(STDOUT_FILENO);
    // Standard output holds nothing but the table in CSV.
    const Output failures(_output.json(), csv ? stderr : stdout);
    interrupted = 0;
    void (*previous)(int) = std::signal(SIGINT, onInterrupt);
    if (csv) {
        std::printf("capture,rendering,receiving,jitterBufferDepth,audioLatencyMs,networkDelayMs\n");
    }
    Statistics latency;
    Statistics network;
    Statistics depth;
    std::optional<Service::ServiceResult> lastSuccess;
    bool lineShown = false;
    int status = ExitSuccess;
    for (unsigned int sample = 0; (watch && count == 0) || sample < count; ++sample) {
        if (sample > 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(intervalMs));
        }
        if (interrupted) {
            break;
        }
        if (lineShown) {
            // The library writes a line to standard error on every call, which
            // on a terminal would land inside the live line: cleared first,
            // the line scrolls up whole and the live line is drawn below it.
            std::printf("\r\033[K");
            std::fflush(stdout);
            lineShown = false;
        }
        LipSyncNtpTimestamps timestamps = {0, 0, 0, 0};
        const Service::ServiceResult result = _service.getAudioTimestamps(timestamps);
        status = exitStatusFor(result);
        if (result.isFailure()) {
            failures.print("timestamps", result);
            break;
        }
        lastSuccess = result;
        const double latencyMs = ntpDifferenceMs(timestamps.tRdr, timestamps.tCap);
        const double networkMs = ntpDifferenceMs(timestamps.tCap, timestamps.tRcv);
        latency.add(latencyMs);
        network.add(networkMs);
        depth.add(static_cast<double>(timestamps.jbmDepth));
        if (liveLine) {
            std::printf("audio latency %8.3f ms | network delay %8.3f ms | jitter buffer %4llu", latencyMs,
                        networkMs, timestamps.jbmDepth);
            std::fflush(stdout);
            lineShown = true;
        } else if (csv) {
            std::printf("%llu,%llu,%llu,%llu,%.3f,%.3f\n", timestamps.tCap, timestamps.tRdr, timestamps.tRcv,
                        timestamps.jbmDepth, latencyMs, networkMs);
            std::fflush(stdout);
        } else {
            _output.print(
                "timestamps", result,
                {timestampField("capture", timestamps.tCap), timestampField("rendering", timestamps.tRdr),
                 timestampField("receiving", timestamps.tRcv),
                 numberField("jitterBufferDepth", timestamps.jbmDepth),
                 decimalField("audioLatencyMs", latencyMs), decimalField("networkDelayMs", networkMs)});
        }
    }
    if (lineShown) {
        std::printf("\n");
    }
    if (watch && !csv && lastSuccess) {
        _output.print(
            "timestamps statistics", *lastSuccess,
            {numberField("samples", latency.count()), decimalField("audioLatencyMinMs", latency.least()),
             decimalField("audioLatencyMeanMs", latency.mean()),
             decimalField("audioLatencyMaxMs", latency.greatest()),
             decimalField("networkDelayMinMs", network.least()),
             decimalField("networkDelayMeanMs", network.mean()),
             decimalField("networkDelayMaxMs", network.greatest()),
             numberField("jitterBufferDepthMin", static_cast<unsigned long long>(depth.least())),
             decimalField("jitterBufferDepthMean", depth.mean()),
             numberField("jitterBufferDepthMax", static_cast<unsigned long long>(depth.greatest()))});
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
} // namespace kvo
} // namespace velmo
