#include "velmo/kvo/sync/Runner.h"
#include "Simulator.h"
#include "TempDir.h"
#include "velmo/kvo/sync/NtpDuration.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fstream>

namespace akvo {
namespace test {
namespace {

using velmo::kvo::lipsyncapi::Service;
using namespace velmo::kvo::sync;

constexpr unsigned pollMs = 50;
constexpr double videoLatencyMs = 140;

// Audio 60 ms against video 140: margin 100 and 5 ms of video delay. Polls
// from 1.5 s to 2.5 s cannot be read, and the engine restarts at 4 s.
const char scenario[] = R"({"name": "runner", "duration_s": 600, "margin_lag_ms": 100,
 "audio": {"latency_ms": 60}, "video": {"latency_ms": 140},
 "lost_polls": [[1.5, 2.5]], "engine_restarts": [4.0]})";

TEST(Runner, KeepsTheSimulatorInSyncThroughLostPollsAndAnEngineRestart)
{
    std::signal(SIGPIPE, SIG_IGN);
    const TempDir folder;
    const std::string path = folder.file("scenario.json");
    std::ofstream(path) << scenario;
    SimulatorProcess simulator({"--scenario", path, "--verbose"});
    Runner runner(simulator.socketPath(), pollMs);

    double videoDelayMs = 0;
    std::uint64_t frameNtp = 1ULL << 62;
    auto frame = [&](VideoTimestamps& video) {
        frameNtp += ntpFromMs(pollMs);
        video = {frameNtp - ntpFromMs(videoLatencyMs + videoDelayMs), frameNtp};
        return true;
    };
    bool lost = false;
    bool restarted = false;
    bool recovered = false;
    RunnerReport last{};
    const auto guard = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    runner.run(frame, [&](const RunnerReport& report) {
        last = report;
        videoDelayMs = report.decision.videoDelayMs;
        lost = lost || report.timestampsCode == Service::TransportError;
        restarted = restarted || simulator.errorOutput().find("engine restart") != std::string::npos;
        recovered = recovered || (restarted && (report.decision.events & Reconnected) != 0);
        const bool done = recovered && report.decision.state == State::Tracking;
        return !done && std::chrono::steady_clock::now() < guard;
    });
    EXPECT_TRUE(lost);
    EXPECT_TRUE(recovered);
    EXPECT_EQ(State::Tracking, last.decision.state);
    EXPECT_TRUE(last.connected);
    EXPECT_EQ(100u, last.decision.marginMs);
    EXPECT_NEAR(5, last.decision.videoDelayMs, 1);
    EXPECT_NEAR(tuning::targetSkewMs, last.decision.skewMs, 1);
    EXPECT_NE(std::string::npos, runner.lastFailure().find("(Code 1005)"));
    // The margin went to the engine again after the restart.
    const std::string log = simulator.errorOutput();
    EXPECT_NE(std::string::npos, log.find("SetAudioDelay_Request 100", log.find("engine restart")));
}

TEST(Runner, ReportsAnEngineItCannotReach)
{
    Runner runner("/tmp/akvo-runner-nothing-listens-here", pollMs);
    const RunnerReport report = runner.poll(0, nullptr);
    EXPECT_FALSE(report.connected);
    EXPECT_EQ(Service::CannotConnect, report.timestampsCode);
    EXPECT_EQ(Service::Success, report.marginCode);
    EXPECT_EQ(State::Starting, report.decision.state);
    EXPECT_EQ(AudioFailed | VideoMissing, report.decision.events);
    EXPECT_EQ(0u, runner.lastFailure().find("Cannot connect to Audio KVO (Code 1004)"));
}

} // namespace
} // namespace test
} // namespace akvo
