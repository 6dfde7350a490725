#include "EngineLoop.h"

#include <gtest/gtest.h>

#include <functional>

namespace akvo {
namespace test {
namespace {

// Audio early by 60, uncorrected: margin 80 and 5 ms of video delay bring it to 15.
void settle(EngineLoop& loop, double noiseMs = 0)
{
    loop.audioMs = 60;
    loop.videoMs = 120;
    loop.noiseMs = noiseMs;
    loop.run(20000);
}

TEST(Controller, AimsAtTheMiddleOfTheWindowWithTheSmallestMarginThatReachesIt)
{
    EngineLoop loop;
    settle(loop);
    EXPECT_EQ(80u, loop.last.marginMs);
    EXPECT_NEAR(5, loop.last.videoDelayMs, 0.5);
    EXPECT_NEAR(tuning::targetSkewMs, loop.skew(), 0.5);
    EXPECT_EQ(State::Tracking, loop.last.state);
    EXPECT_FALSE(loop.last.infeasible);
}

TEST(Controller, NoiseMovesNeitherTheMarginNorTheVideoDelay)
{
    EngineLoop loop;
    settle(loop, 25);
    const unsigned margin = loop.last.marginMs;
    double low = loop.last.videoDelayMs;
    double high = low;
    for (int i = 0; i < 3000; ++i) {
        loop.poll();
        EXPECT_EQ(margin, loop.last.marginMs);
        EXPECT_TRUE(inWindow(loop.skew())) << loop.skew();
        low = std::min(low, loop.last.videoDelayMs);
        high = std::max(high, loop.last.videoDelayMs);
    }
    EXPECT_LT(high - low, loop.noiseMs);
}

struct Step
{
    const char* name;
    double audioMs;
    double videoMs;
    unsigned margin;
};

class ControllerStep : public ::testing::TestWithParam<Step>
{
};

// Within the allowance (2 s, 2 polls and the lag) the skew is back in the
// window for good, and the video delay never moved by more than its rate.
TEST_P(ControllerStep, IsCorrectedWithinTheAllowanceAtTheVideoRateLimit)
{
    EngineLoop loop;
    settle(loop, 5);
    loop.audioMs = GetParam().audioMs;
    loop.videoMs = GetParam().videoMs;
    const double largest = loop.run(2000 + 2 * EngineLoop::pollMs + 300);
    for (int i = 0; i < 100; ++i) {
        loop.poll();
        ASSERT_TRUE(inWindow(loop.skew())) << loop.skew();
    }
    EXPECT_EQ(GetParam().margin, loop.last.marginMs);
    EXPECT_LE(largest, tuning::videoRateMsPerS * EngineLoop::pollMs / 1000 + 1e-9);
}

INSTANTIATE_TEST_SUITE_P(Steps, ControllerStep,
                         ::testing::Values(Step{"VideoLaterBy40", 60, 160, 100},
                                           Step{"VideoEarlierBy100", 60, 20, 0},
                                           Step{"AudioLaterBy60", 120, 120, 20},
                                           Step{"AudioLaterBy250", 310, 120, 0}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(Controller, MovesTheVideoDelayByAtMostOneStepAfterAGap)
{
    EngineLoop loop;
    settle(loop);
    loop.audioMs = 310;
    loop.run(1000);
    const double before = loop.last.videoDelayMs;
    ASSERT_LT(before, 100) << "the video delay has 170 ms to go";
    loop.now += 10000;
    loop.poll();
    EXPECT_NE(0u, loop.last.events & PollGap);
    EXPECT_NEAR(tuning::maxVideoStepMs, loop.last.videoDelayMs - before, 1e-6);
}

// The skew sits just where the margin would go from 20 to 40, with noise:
// the margin is chosen once.
TEST(Controller, MarginDoesNotFlapBetweenNeighbours)
{
    EngineLoop loop;
    loop.audioMs = 100;
    loop.videoMs = 120;
    loop.noiseMs = 15;
    loop.run(5000);
    const unsigned margin = loop.last.marginMs;
    unsigned changes = 0;
    for (int i = 0; i < 3000; ++i) {
        const unsigned before = loop.last.marginMs;
        loop.poll();
        changes += loop.last.marginMs != before;
    }
    EXPECT_EQ(0u, changes) << "from " << margin;
}

struct Response
{
    double gain;
    double lagMs;
};

class ControllerLearning : public ::testing::TestWithParam<Response>
{
};

TEST_P(ControllerLearning, MeasuresGainAndLagOfMarginChanges)
{
    EngineLoop loop;
    loop.gain = GetParam().gain;
    loop.lagMs = GetParam().lagMs;
    loop.noiseMs = 3;
    for (double videoMs : {150, 100, 170, 110, 160}) {
        loop.videoMs = videoMs;
        loop.run(15000);
        ASSERT_TRUE(inWindow(loop.skew())) << videoMs << ": " << loop.skew();
    }
    const MarginResponse learnt = loop.controller.marginResponse();
    EXPECT_GE(learnt.changesSeen, 3u);
    EXPECT_NEAR(GetParam().gain, learnt.gain, 0.06);
    EXPECT_NEAR(GetParam().lagMs, learnt.lagMs, EngineLoop::pollMs);
}

INSTANTIATE_TEST_SUITE_P(Engines, ControllerLearning,
                         ::testing::Values(Response{0.75, 1500}, Response{1.2, 100}, Response{1, 700}));

struct Nonsense
{
    const char* name;
    std::function<void(Poll&)> spoil;
    unsigned event;
};

class ControllerNonsense : public ::testing::TestWithParam<Nonsense>
{
};

// A reading that would pull the estimate away if it were taken, again and
// again: the decision stays, and the first poll says why.
TEST_P(ControllerNonsense, IsHeldOffAndReported)
{
    EngineLoop loop;
    settle(loop);
    const Decision before = loop.last;
    for (int i = 0; i < 20; ++i) {
        Poll poll = loop.reading();
        GetParam().spoil(poll);
        const Decision decision = loop.poll(poll);
        EXPECT_TRUE(i > 0 || (decision.events & GetParam().event) != 0);
        EXPECT_EQ(before.marginMs, decision.marginMs);
        EXPECT_NEAR(before.videoDelayMs, decision.videoDelayMs, 1e-9);
        EXPECT_NEAR(before.uncorrectedSkewMs, decision.uncorrectedSkewMs, 1e-9);
    }
}

constexpr std::uint64_t second = 1ULL << 32;

INSTANTIATE_TEST_SUITE_P(
    Readings, ControllerNonsense,
    ::testing::Values(
        Nonsense{"AudioRenderingBeforeCapture", [](Poll& p) { p.audio.tRdr = p.audio.tCap - ntpFromMs(200); },
                 AudioRenderingBeforeCapture},
        Nonsense{"AudioRenderingSecondsJumped", [](Poll& p) { p.audio.tRdr += second << 16; },
                 AudioDelayImplausible},
        Nonsense{"AudioClockJumped",
                 [](Poll& p) { p.audio.tCap -= second << 20, p.audio.tRdr -= second << 20; }, AudioClockJump},
        Nonsense{"AudioCallFailed", [](Poll& p) { p.audioValid = false, p.audio.tRdr += ntpFromMs(200); },
                 AudioFailed},
        Nonsense{"VideoRenderingBeforeCapture", [](Poll& p) { p.video.rendering -= ntpFromMs(1000); },
                 VideoRenderingBeforeCapture},
        Nonsense{"VideoMissing", [](Poll& p) { p.videoValid = false, p.video.capture -= ntpFromMs(200); },
                 VideoMissing},
        Nonsense{"TimeWentBack", [](Poll& p) { p.nowMs -= 60000, p.audio.tRdr += ntpFromMs(200); },
                 TimeWentBack}),
    [](const auto& info) { return std::string(info.param.name); });

// The loop's NTP times cross the seconds field's wrap after 20 s: the
// readings on either side are good ones.
TEST(Controller, ReadingsAcrossTheNtpWrapAreGood)
{
    EngineLoop loop;
    settle(loop);
    unsigned events = 0;
    for (int i = 0; i < 50; ++i) {
        events |= loop.poll().events;
    }
    EXPECT_EQ(0u, events);
    EXPECT_NEAR(tuning::targetSkewMs, loop.skew(), 0.5);
}

TEST(Controller, ReappliesTheMarginAnEngineRestartForgot)
{
    EngineLoop loop;
    settle(loop, 3);
    loop.accepted.clear();
    loop.controller.reconnected();
    unsigned events = 0;
    std::vector<State> states;
    for (int i = 0; i < 20; ++i) {
        loop.accepted.erase(loop.accepted.begin(),
                            loop.accepted.end() - std::min<std::size_t>(loop.accepted.size(), 1));
        events |= loop.poll().events;
        states.push_back(loop.last.state);
    }
    EXPECT_EQ(Reconnected | MarginForgotten, events & (Reconnected | MarginForgotten | AudioStep));
    EXPECT_EQ(State::Recovering, states.front());
    EXPECT_EQ(State::Tracking, states.back());
    EXPECT_EQ(80u, loop.last.marginMs);
    EXPECT_EQ(80u, loop.marginInEffect());
    EXPECT_NEAR(tuning::targetSkewMs, loop.skew(), 3);
}

TEST(Controller, AsksAgainForARefusedMargin)
{
    EngineLoop loop;
    loop.audioMs = 60;
    loop.videoMs = 120;
    loop.acceptMargins = false;
    loop.run(2000);
    loop.acceptMargins = true;
    EXPECT_TRUE(loop.last.applyMargin);
    EXPECT_NE(0u, loop.poll().events & MarginRefused);
    loop.run(3000);
    EXPECT_FALSE(loop.last.applyMargin);
    EXPECT_NEAR(tuning::targetSkewMs, loop.skew(), 0.5);
}

TEST(Controller, SaysWhenTheSkewIsBeyondReachAndHoldsTheClosest)
{
    EngineLoop loop;
    settle(loop);
    loop.videoMs = 320;
    loop.run(5000);
    EXPECT_TRUE(loop.last.infeasible);
    EXPECT_EQ(100u, loop.last.marginMs);
    EXPECT_EQ(0, loop.last.videoDelayMs);
    EXPECT_NEAR(60 + 100 - 320, loop.skew(), 0.5);
    loop.videoMs = 120;
    loop.run(5000);
    EXPECT_FALSE(loop.last.infeasible);
    EXPECT_TRUE(inWindow(loop.skew()));
}

} // namespace
} // namespace test
} // namespace akvo
