#include "CInterface.h"
#include "velmo/kvo/lipsyncapi/akvo_lipsync_sync.h"

#include <gtest/gtest.h>

#include <memory>

extern "C" int akvo_test_sync_null_arguments(void);

using akvo::test::fixedTimestamps;
using akvo::test::Handle;
using akvo::test::newHandle;
using akvo::test::SimulatorProcess;

namespace {

struct DestroyRunner
{
    void operator()(akvo_lipsync_sync_runner* runner) const { akvo_lipsync_sync_runner_destroy(runner); }
};

using Runner = std::unique_ptr<akvo_lipsync_sync_runner, DestroyRunner>;

std::string lastFailure(const Runner& runner)
{
    std::string text(akvo_lipsync_sync_runner_last_failure(runner.get(), nullptr, 0), '\0');
    akvo_lipsync_sync_runner_last_failure(runner.get(), &text[0], text.size() + 1);
    return text;
}

TEST(CSync, HeaderIsC99AndNullArgumentsAreRefused)
{
    EXPECT_EQ(12, akvo_test_sync_null_arguments());
}

// The runner's calls are the handle's: its deadline ends an exchange and
// disconnects it, and the next poll connects anew and re-applies the margin.
TEST(CSync, RunnerReconnectsAfterTheHandlesDeadline)
{
    SimulatorProcess simulator({"--fixed", "--fault", "1:delay:2000"});
    const Handle service = newHandle();
    akvo_lipsync_set_deadline(service.get(), 100);
    const Runner runner(akvo_lipsync_sync_runner_create(service.get(), simulator.socketPath().c_str(), 200));
    const akvo_lipsync_sync_video frame = {fixedTimestamps.capture - (40ULL << 32) / 1000,
                                           fixedTimestamps.capture};
    akvo_lipsync_sync_report report;
    ASSERT_EQ(AKVO_LIPSYNC_SUCCESS, akvo_lipsync_sync_runner_poll(runner.get(), 0, &frame, &report));
    EXPECT_EQ(AKVO_LIPSYNC_DEADLINE_EXCEEDED, report.timestamps_code);
    EXPECT_EQ(0, report.connected);
    EXPECT_EQ(AKVO_LIPSYNC_SYNC_AUDIO_FAILED | AKVO_LIPSYNC_SYNC_RECONNECTED, report.decision.events);
    EXPECT_EQ(0u, lastFailure(runner).find(
                      "Deadline exceeded (Code 1100): No answer within 100 ms, disconnected {"));

    // No deadline now: a loaded machine must not fail the answer.
    akvo_lipsync_set_deadline(service.get(), 0);
    ASSERT_EQ(AKVO_LIPSYNC_SUCCESS, akvo_lipsync_sync_runner_poll(runner.get(), 200, &frame, &report));
    EXPECT_EQ(AKVO_LIPSYNC_SUCCESS, report.timestamps_code);
    EXPECT_EQ(AKVO_LIPSYNC_SUCCESS, report.margin_code);
    EXPECT_EQ(1, report.connected);
    EXPECT_TRUE(report.audio == fixedTimestamps);
    EXPECT_EQ(AKVO_LIPSYNC_SYNC_RECONNECTED, report.decision.events);
    EXPECT_EQ(1, report.decision.apply_margin);
    EXPECT_EQ(AKVO_LIPSYNC_SYNC_MARGIN_PENDING, report.decision.state);
    EXPECT_NEAR(0.1 - 40, report.decision.uncorrected_skew_ms, 0.001);
}

struct RunCount
{
    int frames = 0;
    int reports = 0;
    akvo_lipsync_sync_report last{};
};

TEST(CSync, RunPollsUntilTheReportSaysStop)
{
    const Handle service = newHandle();
    const Runner runner(akvo_lipsync_sync_runner_create(service.get(), "/tmp/akvo-sync-nobody-listens", 1));
    RunCount count;
    ASSERT_EQ(AKVO_LIPSYNC_SUCCESS, akvo_lipsync_sync_runner_run(
                                        runner.get(),
                                        [](void* context, akvo_lipsync_sync_video*) {
                                            return ++static_cast<RunCount*>(context)->frames, 0;
                                        },
                                        [](void* context, const akvo_lipsync_sync_report* report) {
                                            RunCount& count = *static_cast<RunCount*>(context);
                                            count.last = *report;
                                            return ++count.reports < 3 ? 1 : 0;
                                        },
                                        &count));
    EXPECT_EQ(3, count.frames);
    EXPECT_EQ(3, count.reports);
    EXPECT_EQ(AKVO_LIPSYNC_CANNOT_CONNECT, count.last.timestamps_code);
    EXPECT_EQ(AKVO_LIPSYNC_SYNC_AUDIO_FAILED | AKVO_LIPSYNC_SYNC_VIDEO_MISSING, count.last.decision.events);
    EXPECT_EQ(0u, lastFailure(runner).find("Cannot connect to Audio KVO (Code 1004): {"));
    akvo_lipsync_sync_margin_response response;
    ASSERT_EQ(AKVO_LIPSYNC_SUCCESS, akvo_lipsync_sync_runner_margin_response(runner.get(), &response));
    EXPECT_EQ(0u, response.changes_seen);
}

} // namespace
