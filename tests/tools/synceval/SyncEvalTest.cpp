#include "ProgramRun.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <unistd.h>

namespace akvo {
namespace test {
namespace {

// Runs akvo-synceval on `scenario` written to a file of its own.
ProgramOutput evaluate(const std::string& scenario)
{
    const std::string path = "/tmp/akvo-synceval-" + std::to_string(getpid()) + ".json";
    std::ofstream(path) << scenario;
    ProgramOutput run = runProgram({AKVO_SYNCEVAL_PATH, path});
    unlink(path.c_str());
    return run;
}

TEST(SyncEval, PrintsOneLinePerScenarioThenTheCount)
{
    const ProgramOutput run = evaluate(R"({"name": "quiet", "duration_s": 30, "margin_lag_ms": 300,
        "audio": {"latency_ms": 95, "noise_ms": 5}, "video": {"latency_ms": 120, "noise_ms": 3}})");
    EXPECT_EQ(0, run.exitStatus) << run.standardError;
    const std::regex line(
        "PASS quiet controller: is191=100\\.0% bt1359=100\\.0% settle_max=0\\.0s margin_changes=1 "
        "video_step_max=[0-9]+ms \\| baseline: is191=[0-9.]+% bt1359=100\\.0% settle_max=0\\.0s \\| "
        "none: is191=0\\.0%\n1 passed, 0 failed\n");
    EXPECT_TRUE(std::regex_match(run.standardOutput, line)) << run.standardOutput;
    EXPECT_EQ("", run.standardError);
}

// Video later than audio by 200 ms after 10 s: nothing reaches the window,
// which a scenario marked feasible does not expect.
TEST(SyncEval, FailsAndSaysWhy)
{
    const ProgramOutput run = evaluate(R"({"name": "late", "duration_s": 30,
        "audio": {"latency_ms": 80}, "video": {"latency_ms": 100, "steps": [[10, 300]]}})");
    EXPECT_EQ(1, run.exitStatus);
    EXPECT_EQ(0u, run.standardOutput.find("FAIL late controller: ")) << run.standardOutput;
    EXPECT_NE(std::string::npos, run.standardOutput.find("\n0 passed, 1 failed\n"));
    EXPECT_NE(std::string::npos,
              run.standardError.find(
                  "akvo-synceval: late: the scenario says feasible, yet its skew goes beyond reach\n"));
}

TEST(SyncEval, RefusesABadFileNamingTheField)
{
    const ProgramOutput run = evaluate(R"({"name": "x", "duration_s": 30, "audio": {"latency_ms": 80}})");
    EXPECT_EQ(2, run.exitStatus);
    EXPECT_EQ("", run.standardOutput);
    EXPECT_NE(std::string::npos, run.standardError.find(".json: field \"video\" is required\n"))
        << run.standardError;
}

} // namespace
} // namespace test
} // namespace akvo
