#ifndef AKVO_TESTS_SYNC_ENGINELOOP_H
#define AKVO_TESTS_SYNC_ENGINELOOP_H

#include "velmo/kvo/sync/Controller.h"
#include "velmo/kvo/sync/NtpDuration.h"

#include <cstdint>
#include <random>
#include <vector>

namespace akvo {
namespace test {

using namespace velmo::kvo::sync;

// The controller in closed loop with an engine whose margin works `lagMs`
// after acceptance, times `gain`, and a video path that shows the video delay
// at once; readings carry uniform noise. Time advances by the poll interval.
struct EngineLoop
{
    static constexpr unsigned pollMs = 200;
    // NTP times start 20 s before the seconds field wraps.
    static constexpr std::uint64_t startNtp = 0xFFFFFFECULL << 32;

    Controller controller{pollMs};
    long long now = 0;
    double audioMs = 80;
    double videoMs = 100;
    double noiseMs = 0;
    double gain = 1;
    double lagMs = 300;
    bool acceptMargins = true;
    std::vector<std::pair<long long, unsigned>> accepted;
    Decision last{};
    std::mt19937 random{7};

    double marginInEffect() const
    {
        unsigned margin = 0;
        for (const auto& acceptance : accepted) {
            margin = acceptance.first + lagMs <= now ? acceptance.second : margin;
        }
        return margin;
    }
    double trueAudio() const { return audioMs + gain * marginInEffect(); }
    double trueVideo() const { return videoMs + last.videoDelayMs; }
    double skew() const { return trueAudio() - trueVideo(); }
    double noise() { return std::uniform_real_distribution<double>(-noiseMs, noiseMs)(random); }

    // The poll the application would make now.
    Poll reading()
    {
        const std::uint64_t at = startNtp + ntpFromMs(static_cast<double>(now));
        const double audio = trueAudio() + noise();
        const double video = trueVideo() + noise();
        return {now, true, {at - ntpFromMs(audio), at, 0, 40}, true, {at - ntpFromMs(video), at}};
    }

    Decision poll(const Poll& poll)
    {
        last = controller.update(poll);
        if (last.applyMargin) {
            if (acceptMargins) {
                accepted.emplace_back(now, last.marginMs);
            }
            controller.marginApplied(now, last.marginMs, acceptMargins);
        }
        now += pollMs;
        return last;
    }
    Decision poll() { return poll(reading()); }

    // Polls for `ms`; returns the largest video delay change from one poll to the next.
    double run(long long ms)
    {
        double largest = 0;
        for (const long long end = now + ms; now < end;) {
            const double before = last.videoDelayMs;
            poll();
            largest = std::max(largest, std::fabs(last.videoDelayMs - before));
        }
        return largest;
    }
};

inline bool inWindow(double skew)
{
    return skew >= tuning::windowLowMs && skew <= tuning::windowHighMs;
}

} // namespace test
} // namespace akvo

#endif
