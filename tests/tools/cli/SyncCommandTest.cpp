#include "ProgramRun.h"
#include "Simulator.h"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>

using akvo::test::ProgramOutput;
using akvo::test::runProgram;
using akvo::test::SimulatorProcess;

namespace {

ProgramOutput cliSync(const std::string& socketPath, const std::vector<std::string>& arguments,
                      const std::string& input = "")
{
    std::vector<std::string> command{AKVO_CLI_PATH, "--socket", socketPath};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runProgram(command, input);
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// Audio 60 ms against video 140 ms: margin 100 and 5 ms of video delay bring
// the skew to 15 ms, where it stays.
TEST(CliSync, BringsTheScenarioIntoTheWindow)
{
    SimulatorProcess simulator({"--scenario", AKVO_SYNC_SCENARIO});
    const ProgramOutput run = cliSync(
        simulator.socketPath(), {"sync", "--video-delay-ms", "140", "--interval-ms", "20", "--count", "40"});
    EXPECT_EQ(0, run.exitStatus) << run.standardError;
    const std::vector<std::string> lines = linesOf(run.standardOutput);
    ASSERT_EQ(40u, lines.size()) << run.standardOutput;
    EXPECT_EQ("sync: Success skewMs=-80.000 window=outside uncorrectedSkewMs=-80.000 state=MarginPending "
              "marginMs=0 marginSent=true videoDelayMs=0.000 infeasible=false events=Reconnected",
              lines.front());
    // A loaded machine may have made the last poll late: its events are left out.
    EXPECT_EQ(0u, lines.back().find("sync: Success skewMs=15.000 window=IS-191 uncorrectedSkewMs=-80.000 "
                                    "state=Tracking marginMs=100 marginSent=false videoDelayMs=5.000 "
                                    "infeasible=false events="))
        << run.standardOutput;
}

// The latest line of standard input is the frame on screen; JSON carries the timestamps as digit strings.
TEST(CliSync, ReadsFramesFromStandardInput)
{
    SimulatorProcess simulator({"--fixed"});
    const ProgramOutput run = cliSync(
        simulator.socketPath(), {"--json", "sync", "--video-stdin", "--count", "2", "--interval-ms", "1"},
        "1 2\nnot a frame\n4611686018427387904 4611686018599186596\n");
    EXPECT_EQ(0, run.exitStatus);
    EXPECT_EQ(
        "{\"command\":\"sync\",\"code\":1000,\"result\":\"Success\",\"skewMs\":-39.900,\"window\":"
        "\"BT.1359\",\"uncorrectedSkewMs\":-39.900,\"state\":\"MarginPending\",\"marginMs\":0,"
        "\"marginSent\":true,\"videoDelayMs\":0.000,\"infeasible\":false,\"events\":\"Reconnected\","
        "\"audioCapture\":\"16045690984833536\",\"audioRendering\":\"16045690985263104\",\"videoCapture\":"
        "\"4611686018427387904\",\"videoRendering\":\"4611686018599186596\"}",
        linesOf(run.standardOutput).at(0));
    EXPECT_EQ(2u, linesOf(run.standardOutput).size());
    EXPECT_NE(std::string::npos,
              run.standardError.find(
                  "akvo-lipsync: sync: line 2 of standard input is not \"CAPTURE RENDERING\", skipped\n"));
}

struct FailureCase
{
    std::vector<std::string> simulatorArgs; // none: no simulator
    std::vector<std::string> arguments;
    int exitStatus;
    std::string output;
};

class SyncFailure : public ::testing::TestWithParam<FailureCase>
{
};

// Each poll prints its failure; the exit status is the last one's.
TEST_P(SyncFailure, PrintsItAndExitsWithItsClass)
{
    std::optional<SimulatorProcess> simulator;
    if (!GetParam().simulatorArgs.empty()) {
        simulator.emplace(GetParam().simulatorArgs);
    }
    const ProgramOutput run = cliSync(
        simulator ? simulator->socketPath() : "/tmp/akvo-cli-sync-nobody-listens", GetParam().arguments);
    EXPECT_EQ(GetParam().exitStatus, run.exitStatus) << run.standardError;
    EXPECT_EQ(GetParam().output, run.standardOutput.substr(0, GetParam().output.size()))
        << run.standardOutput;
}

INSTANTIATE_TEST_SUITE_P(
    CliSync, SyncFailure,
    ::testing::Values(
        FailureCase{
            {},
            {"sync", "--video-delay-ms", "0", "--count", "2", "--interval-ms", "1"},
            3,
            "sync: Cannot connect to Audio KVO (Code 1004): {Connection has failed (Code 20002): Unable to "
            "connect to /tmp/akvo-cli-sync-nobody-listens {No such file or directory (Code 2)}}\nsync: "
            "Cannot connect to Audio KVO (Code 1004)"},
        FailureCase{{"--fault", "*:delay:100000"},
                    {"sync", "--video-delay-ms", "0", "--count", "1", "--timeout-ms", "50"},
                    9,
                    "sync: Deadline exceeded (Code 1100): No answer within 50 ms, disconnected {"},
        FailureCase{{}, {"sync", "--count", "1"}, 2, ""}));

} // namespace
