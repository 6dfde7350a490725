#include "Session.h"

#include "Statistics.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <thread>
#include <unistd.h>
#include <vector>

namespace velmo {
namespace kvo {
namespace cli {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void onInterrupt(int)
{
    interrupted = 1;
}

// The outcome of the thread's latest call, which returned `code`.
Outcome outcomeOf(int32_t code)
{
    std::vector<char> text(akvo_lipsync_result_text(nullptr, 0) + 1);
    akvo_lipsync_result_text(text.data(), text.size());
    return Outcome{code, std::string(text.data(), text.size() - 1)};
}

// NTP timestamps carry seconds in the upper and the fraction in the lower 32
// bits, so a difference of two is in units of 2^-32 s.
double ntpDifferenceMs(uint64_t later, uint64_t earlier)
{
    const int64_t difference = static_cast<int64_t>(later - earlier);
    return static_cast<double>(difference) * 1000.0 / 4294967296.0;
}

} // namespace

int exitStatusFor(const Outcome& outcome)
{
    switch (outcome.code) {
    case AKVO_LIPSYNC_SUCCESS:
        return ExitSuccess;
    case AKVO_LIPSYNC_INVALID_PARAM:
        return ExitInvalidParam;
    case AKVO_LIPSYNC_BAD_STATE:
        return ExitBadState;
    case AKVO_LIPSYNC_CANNOT_CONNECT:
        return ExitCannotConnect;
    case AKVO_LIPSYNC_TRANSPORT_ERROR:
        return ExitTransportError;
    case AKVO_LIPSYNC_SERVER_ERROR:
        return ExitServerError;
    case AKVO_LIPSYNC_NOT_IN_CALL:
        return ExitNotInCall;
    case AKVO_LIPSYNC_DEADLINE_EXCEEDED:
        return ExitTimedOut;
    default:
        return ExitOtherFailure;
    }
}

void Session::setTimeout(uint32_t milliseconds)
{
    akvo_lipsync_set_deadline(_service.get(), milliseconds);
}

int Session::connect(const std::string& socketName, bool quietOnSuccess)
{
    const Outcome outcome = outcomeOf(akvo_lipsync_connect(_service.get(), socketName.c_str()));
    if (!outcome.isSuccess() || !quietOnSuccess) {
        _output.print("connect", outcome, {textField("socket", socketName)});
    }
    return exitStatusFor(outcome);
}

int Session::disconnect(bool quietOnSuccess)
{
    const Outcome outcome = outcomeOf(akvo_lipsync_disconnect(_service.get()));
    if (!outcome.isSuccess() || !quietOnSuccess) {
        _output.print("disconnect", outcome);
    }
    return exitStatusFor(outcome);
}

int Session::caps()
{
    uint64_t granularityMs = 0;
    uint64_t maxAudioDelayMargin = 0;
    const Outcome outcome =
        outcomeOf(akvo_lipsync_get_capabilities(_service.get(), &granularityMs, &maxAudioDelayMargin));
    _output.print("caps", outcome,
                  {numberField("granularityMs", granularityMs),
                   numberField("maxAudioDelayMargin", maxAudioDelayMargin)});
    return exitStatusFor(outcome);
}

int Session::setMargin(unsigned long long delayMs)
{
    const Outcome outcome = outcomeOf(akvo_lipsync_set_audio_delay_margin(_service.get(), delayMs));
    // In plain text the margin goes into the label, since a refusal prints no values.
    _output.print(_output.json() ? "set-margin" : "set-margin " + std::to_string(delayMs), outcome,
                  {numberField("delayMs", delayMs)});
    return exitStatusFor(outcome);
}

int Session::getMargin()
{
    uint64_t delayMs = 0;
    const Outcome outcome = outcomeOf(akvo_lipsync_get_audio_delay_margin(_service.get(), &delayMs));
    _output.print("get-margin", outcome, {numberField("delayMs", delayMs)});
    return exitStatusFor(outcome);
}

int Session::timestamps(unsigned int count, unsigned int intervalMs, bool watch, bool csv)
{
    const bool liveLine = watch && !csv && !_output.json() && isatty(STDOUT_FILENO);
    // Standard output holds nothing but the table in CSV.
    const Output output = csv ? _output.withFailuresOn(stderr) : _output;
    interrupted = 0;
    void (*previous)(int) = std::signal(SIGINT, onInterrupt);
    if (csv) {
        output.write("capture,rendering,receiving,jitterBufferDepth,audioLatencyMs,networkDelayMs\n");
    }
    Statistics latency;
    Statistics network;
    Statistics depth;
    std::optional<Outcome> lastSuccess;
    bool lineShown = false;
    int status = ExitSuccess;
    for (unsigned int sample = 0; (watch && count == 0) || sample < count; ++sample) {
        if (sample > 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(intervalMs));
        }
        if (interrupted || Output::broken()) {
            break;
        }
        if (lineShown) {
            // The library writes a line to standard error on every call, which
            // on a terminal would land inside the live line: cleared first,
            // the line scrolls up whole and the live line is drawn below it.
            output.write("\r\033[K");
            lineShown = false;
        }
        akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
        const Outcome outcome = outcomeOf(akvo_lipsync_get_audio_timestamps(_service.get(), &timestamps));
        status = exitStatusFor(outcome);
        if (!outcome.isSuccess()) {
            output.print("timestamps", outcome);
            break;
        }
        lastSuccess = outcome;
        const double latencyMs = ntpDifferenceMs(timestamps.rendering, timestamps.capture);
        const double networkMs = ntpDifferenceMs(timestamps.capture, timestamps.receiving);
        latency.add(latencyMs);
        network.add(networkMs);
        depth.add(static_cast<double>(timestamps.jitter_buffer_depth));
        char line[160];
        if (liveLine) {
            std::snprintf(line, sizeof(line),
                          "audio latency %8.3f ms | network delay %8.3f ms | jitter buffer %4llu", latencyMs,
                          networkMs, static_cast<unsigned long long>(timestamps.jitter_buffer_depth));
            output.write(line);
            lineShown = true;
        } else if (csv) {
            std::snprintf(line, sizeof(line), "%llu,%llu,%llu,%llu,%.3f,%.3f\n",
                          static_cast<unsigned long long>(timestamps.capture),
                          static_cast<unsigned long long>(timestamps.rendering),
                          static_cast<unsigned long long>(timestamps.receiving),
                          static_cast<unsigned long long>(timestamps.jitter_buffer_depth), latencyMs,
                          networkMs);
            output.write(line);
        } else {
            output.print("timestamps", outcome,
                         {timestampField("capture", timestamps.capture),
                          timestampField("rendering", timestamps.rendering),
                          timestampField("receiving", timestamps.receiving),
                          numberField("jitterBufferDepth", timestamps.jitter_buffer_depth),
                          decimalField("audioLatencyMs", latencyMs),
                          decimalField("networkDelayMs", networkMs)});
        }
    }
    if (lineShown) {
        output.write("\n");
    }
    if (watch && !csv && lastSuccess) {
        output.print(
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

int Session::videoTimestamps(const akvo_lipsync_timestamps& timestamps)
{
    const Outcome outcome = outcomeOf(akvo_lipsync_set_video_timestamps(_service.get(), &timestamps));
    _output.print("video-ts", outcome);
    return exitStatusFor(outcome);
}

} // namespace cli
} // namespace kvo
} // namespace velmo
