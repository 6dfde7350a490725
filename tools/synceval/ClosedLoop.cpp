#include "ClosedLoop.h"

#include "EngineModel.h"

#include "velmo/kvo/sync/NtpDuration.h"

#include <cmath>

namespace velmo {
namespace kvo {
namespace synceval {

namespace {

constexpr std::uint64_t startNtp = 0xFFFFFFF0ULL << 32;
// Audio is stamped at capture a little before the engine is asked about it.
constexpr double captureAgeMs = 5;

std::uint64_t ntpAt(double tMs)
{
    return startNtp + sync::ntpFromMs(tMs);
}

} // namespace

Trace runClosedLoop(const scenario::Scenario& scenario, Strategy& strategy)
{
    scenario::EngineModel engine(scenario);
    scenario::Noise audioNoise(scenario.seed);
    scenario::Noise videoNoise(scenario.seed ^ 0x5DEECE66DULL);
    const std::size_t tickCount =
        static_cast<std::size_t>(std::floor(scenario.durationS * 1000 / tickMs)) + 1;
    Trace trace;
    trace.ticks.reserve(tickCount);

    std::size_t nextRestart = 0;
    bool connected = false;
    bool dropped = false;
    double nextPollMs = 0;
    Action action;
    for (std::size_t i = 0; i < tickCount; ++i) {
        const double t = static_cast<double>(i) * tickMs;
        while (nextRestart < scenario.engineRestarts.size() &&
               scenario.engineRestarts[nextRestart] * 1000 <= t) {
            ++nextRestart;
            engine.restart();
            dropped = connected;
        }
        if (t >= nextPollMs) {
            nextPollMs += scenario.pollMs;
            const long long now = static_cast<long long>(t);
            if (!connected) {
                connected = true;
                strategy.reconnected();
            }
            // Both noises are drawn at every poll, so every strategy meets the same ones.
            const double audioRead = engine.audioDelay(t) + audioNoise.next(scenario.audio.noiseMs);
            const double videoRead =
                scenario.video.baseAt(t) + action.videoDelayMs + videoNoise.next(scenario.video.noiseMs);
            sync::Poll poll{
                now, false, {0, 0, 0, 0}, true, {ntpAt(t) - sync::ntpFromMs(videoRead), ntpAt(t)}};
            if (dropped || scenario.pollLostAt(t)) {
                connected = false;
                dropped = false;
            } else {
                poll.audioValid = true;
                poll.audio.tCap = ntpAt(t - captureAgeMs);
                poll.audio.tRdr = poll.audio.tCap + sync::ntpFromMs(audioRead);
            }
            action = strategy.update(poll);
            if (connected && action.applyMargin) {
                engine.accept(t, action.marginMs);
                strategy.marginApplied(now, action.marginMs, true);
            }
            trace.polls.push_back({t, action.marginMs, action.videoDelayMs});
        }
        const double video = scenario.video.baseAt(t) + action.videoDelayMs;
        trace.ticks.push_back(
            {engine.audioDelay(t) - video, engine.marginInEffect(t), action.videoDelayMs, action.infeasible});
    }
    return trace;
}

} // namespace synceval
} // namespace kvo
} // namespace velmo
