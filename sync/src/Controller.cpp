#include "velmo/kvo/sync/Controller.h"

#include "velmo/kvo/sync/DelayFilter.h"
#include "velmo/kvo/sync/MarginLearner.h"
#include "velmo/kvo/sync/ReadingCheck.h"

#include <algorithm>
#include <cmath>
#include <deque>

namespace velmo {
namespace kvo {
namespace sync {

namespace {

// After a reconnection: what the engine was left with is unknown until the
// re-applied margin has been accepted and has had time to work.
struct Recovery
{
    bool active = false;
    bool accepted = false;
    long long acceptedAt = 0;
    // The raw audio delay before the reconnection, to tell a forgotten margin.
    double beforeMs = 0;
    unsigned fallenReadings = 0;
    bool forgottenReported = false;
};

} // namespace

struct Controller::Impl
{
    explicit Impl(unsigned pollIntervalMs)
        : pollIntervalMs(pollIntervalMs), learner(pollIntervalMs),
          audioCheck(AudioRenderingBeforeCapture, AudioDelayImplausible, AudioClockJump),
          videoCheck(VideoRenderingBeforeCapture, VideoDelayImplausible, VideoClockJump)
    {
    }

    void takeAudio(long long nowMs, double rawMs, unsigned& events)
    {
        if (recovery.active) {
            return recover(nowMs, rawMs, events);
        }
        std::deque<double> readings = {rawMs};
        if (learner.watching()) {
            const double gainBefore = learner.gain();
            const MarginLearner::Outcome outcome = learner.observe(nowMs, rawMs, audio.noise(), readings);
            if (outcome == MarginLearner::Outcome::Watching) {
                return;
            }
            if (outcome == MarginLearner::Outcome::Learnt) {
                events |= MarginLearnt;
            }
            // The readings before the change were corrected with the old gain.
            audio.shift(-(learner.gain() - gainBefore) * marginBeforeChange);
        }
        for (double raw : readings) {
            if (audio.add(raw - learner.gain() * engineMargin)) {
                events |= AudioStep;
            }
        }
    }

    void recover(long long nowMs, double rawMs, unsigned& events)
    {
        const double margin = learner.gain() * engineMargin;
        const double fall = recovery.beforeMs - rawMs;
        const bool fallen = engineMargin > 0 && fall > std::max(margin / 2, 2 * audio.noise());
        recovery.fallenReadings = fallen ? recovery.fallenReadings + 1 : 0;
        if (recovery.fallenReadings >= 2 && !recovery.forgottenReported) {
            recovery.forgottenReported = true;
            events |= MarginForgotten;
        }
        if (recovery.accepted &&
            static_cast<double>(nowMs - recovery.acceptedAt) >= learner.lagMs() + 2.0 * pollIntervalMs) {
            recovery.active = false;
            if (audio.add(rawMs - margin)) {
                events |= AudioStep;
            }
        }
    }

    void decide(long long nowMs)
    {
        const double gain = learner.gain();
        const double base = audio.level() - video.level();
        const double noise = skewNoise();
        const double hysteresis = std::max(tuning::minHysteresisMs, tuning::hysteresisNoiseFactor * noise);
        const double deadBand = std::max(tuning::minDeadBandMs, tuning::deadBandNoiseFactor * noise);
        // The video delay that margin m needs to bring the skew to the target.
        auto videoNeed = [&](unsigned m) { return base + gain * m - tuning::targetSkewMs; };

        unsigned planned = targetMargin;
        if (!learner.watching() && !recovery.active) {
            const double need = videoNeed(targetMargin);
            const bool tooEarly = need < -hysteresis && targetMargin < tuning::maxMarginMs;
            // A lower margin only saves latency while the video delay holds the skew, so it can wait.
            const bool calm = !changedMargin || nowMs - marginChangedAt >= tuning::marginLowerHoldMs;
            const bool tooLate = need > gain * tuning::marginStepMs + hysteresis && targetMargin > 0 && calm;
            if (tooEarly || tooLate) {
                const double steps =
                    std::ceil((tuning::targetSkewMs - base) / (gain * tuning::marginStepMs) - 1e-9);
                planned = static_cast<unsigned>(
                              std::clamp(steps, 0.0, double(tuning::maxMarginMs / tuning::marginStepMs))) *
                          tuning::marginStepMs;
            }
        }
        // A change planned while a step is being confirmed waits for the confirmation,
        // but the video delay already heads where it will be needed.
        const bool marginChanged = planned != targetMargin && audio.settled() && video.settled();
        if (marginChanged) {
            changedMargin = true;
            marginChangedAt = nowMs;
            applyWanted = true;
            targetMargin = planned;
        }
        const double goal = std::clamp(videoNeed(planned), 0.0, tuning::maxVideoDelayMs);
        if (marginChanged || std::fabs(goal - videoGoal) > deadBand) {
            videoGoal = goal;
        }
        const double lowest = base + gain * tuning::maxMarginMs;
        const double highest = base - tuning::maxVideoDelayMs;
        infeasible = infeasible ? lowest < tuning::windowLowMs + hysteresis ||
                                      highest > tuning::windowHighMs + hysteresis
                                : lowest < tuning::windowLowMs || highest > tuning::windowHighMs;
    }

    void slewVideo(double elapsedMs)
    {
        const double limit = std::min(tuning::videoRateMsPerS * elapsedMs / 1000, tuning::maxVideoStepMs);
        videoDelay += std::clamp(videoGoal - videoDelay, -limit, limit);
    }

    double skewNoise() const { return std::hypot(audio.levelNoise(), video.levelNoise()); }

    Decision decision(unsigned events) const
    {
        Decision out{};
        out.marginMs = targetMargin;
        out.applyMargin = applyWanted;
        out.videoDelayMs = videoDelay;
        out.events = events;
        out.infeasible = infeasible;
        const bool ready = audio.ready() && video.ready();
        out.state = !ready                              ? State::Starting
                    : recovery.active                   ? State::Recovering
                    : learner.watching() || applyWanted ? State::MarginPending
                                                        : State::Tracking;
        const double base = ready ? audio.level() - video.level() : 0;
        out.uncorrectedSkewMs = base;
        out.skewMs = ready ? base + learner.gain() * engineMargin - videoDelay : 0;
        return out;
    }

    unsigned pollIntervalMs;
    MarginLearner learner;
    ReadingCheck audioCheck;
    ReadingCheck videoCheck;
    // The audio delay without the margin, and the video delay without the extra video delay.
    DelayFilter audio;
    DelayFilter video;
    Recovery recovery;

    bool polled = false;
    long long lastNowMs = 0;
    unsigned pendingEvents = 0;

    unsigned targetMargin = 0;
    // The margin the engine last accepted, and in effect unless a change is being watched.
    unsigned engineMargin = 0;
    // The margin before the change being watched.
    unsigned marginBeforeChange = 0;
    bool applyWanted = false;
    bool changedMargin = false;
    long long marginChangedAt = 0;
    double videoDelay = 0;
    double videoGoal = 0;
    bool infeasible = false;
};

Controller::Controller(unsigned pollIntervalMs) : _impl(std::make_unique<Impl>(std::max(pollIntervalMs, 1u)))
{
}

Controller::~Controller() = default;

Decision Controller::update(const Poll& poll)
{
    Impl& d = *_impl;
    unsigned events = d.pendingEvents;
    d.pendingEvents = 0;
    if (d.polled && poll.nowMs < d.lastNowMs) {
        return d.decision(events | TimeWentBack);
    }
    const double elapsed = d.polled ? static_cast<double>(poll.nowMs - d.lastNowMs) : 0;
    if (elapsed > tuning::pollGapIntervals * d.pollIntervalMs) {
        events |= PollGap;
    }
    double delay = 0;
    if (!poll.audioValid) {
        events |= AudioFailed;
    } else if (const unsigned bad = d.audioCheck.check(poll.nowMs, poll.audio.tCap, poll.audio.tRdr, delay)) {
        events |= bad;
    } else {
        d.takeAudio(poll.nowMs, delay, events);
    }
    if (!poll.videoValid) {
        events |= VideoMissing;
    } else if (const unsigned bad =
                   d.videoCheck.check(poll.nowMs, poll.video.capture, poll.video.rendering, delay)) {
        events |= bad;
    } else if (d.video.add(delay - d.videoDelay)) {
        events |= VideoStep;
    }
    d.polled = true;
    d.lastNowMs = poll.nowMs;
    if (d.audio.ready() && d.video.ready()) {
        d.decide(poll.nowMs);
        d.slewVideo(elapsed);
    }
    return d.decision(events);
}

void Controller::marginApplied(long long nowMs, unsigned marginMs, bool accepted)
{
    Impl& d = *_impl;
    if (!accepted) {
        d.pendingEvents |= MarginRefused;
        d.applyWanted = true;
        return;
    }
    d.applyWanted = marginMs != d.targetMargin;
    if (d.recovery.active) {
        d.recovery.accepted = true;
        d.recovery.acceptedAt = nowMs;
        d.engineMargin = marginMs;
        return;
    }
    if (marginMs == d.engineMargin) {
        return;
    }
    if (d.audio.ready()) {
        d.marginBeforeChange = d.engineMargin;
        // A level that rests on a few readings, whatever the noise seems to be, teaches nothing.
        const bool known = d.audio.readings() >= tuning::learnReadings;
        d.learner.start(nowMs, d.engineMargin, marginMs, d.audio.level() + d.learner.gain() * d.engineMargin,
                        d.audio.levelNoise(), known);
    }
    d.engineMargin = marginMs;
}

void Controller::reconnected()
{
    Impl& d = *_impl;
    d.pendingEvents |= Reconnected;
    d.applyWanted = true;
    d.learner.cancel();
    d.recovery = Recovery();
    // Before the first audio level there is nothing the engine's state could spoil.
    d.recovery.active = d.audio.ready();
    d.recovery.beforeMs = d.audio.level() + d.learner.gain() * d.engineMargin;
}

MarginResponse Controller::marginResponse() const
{
    return {_impl->learner.gain(), _impl->learner.lagMs(), _impl->learner.changesSeen()};
}

} // namespace sync
} // namespace kvo
} // namespace velmo
