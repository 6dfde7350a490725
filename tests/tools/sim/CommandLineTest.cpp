#include "EngineMessages.h"
#include "ProgramRun.h"
#include "Simulator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

namespace akvo {
namespace test {
namespace {

// A path that the refused command lines name but must leave free.
const std::string unusedPath = "/tmp/akvo-sim-unused-" + std::to_string(getpid()) + ".sock";

const std::string usageHint = "\nRun with --help for more information.\n";

// The first line of the error holds `part`; `rest` follows it.
void expectRefused(const std::vector<std::string>& args, const std::string& part,
                   const std::string& rest = usageHint)
{
    std::vector<std::string> command = {simulatorExecutable()};
    command.insert(command.end(), args.begin(), args.end());
    const ProgramOutput run = runProgram(command);
    EXPECT_EQ(2, run.exitStatus);
    EXPECT_EQ("", run.standardOutput);
    const std::string& error = run.standardError;
    const size_t lineEnd = std::min(error.find('\n'), error.size());
    EXPECT_EQ(0u, error.find("akvo-lipsync-sim: ")) << error;
    EXPECT_NE(std::string::npos, error.substr(0, lineEnd).find(part)) << error << " should contain " << part;
    EXPECT_EQ(rest, error.substr(lineEnd));
    EXPECT_NE(0, access(unusedPath.c_str(), F_OK));
}

struct BadCommandLine
{
    std::vector<std::string> args;
    const char* part;
};

class SimBadCommandLine : public ::testing::TestWithParam<BadCommandLine>
{
};

TEST_P(SimBadCommandLine, ExitsWithStatusTwoAndPointsToHelp)
{
    expectRefused(GetParam().args, GetParam().part);
}

INSTANTIATE_TEST_SUITE_P(
    Inputs, SimBadCommandLine,
    ::testing::Values(
        BadCommandLine{{}, "--socket"},
        BadCommandLine{{"--socket", unusedPath, "--fault", "1:explode"}, "bad fault"},
        BadCommandLine{{"--socket", unusedPath, "--fault", "0:close"}, "bad fault"},
        BadCommandLine{{"--socket", unusedPath, "--fault", "1:split:10"}, "bad fault"},
        BadCommandLine{{"--socket", unusedPath, "--fault", "3:close", "--fault", "3:double"}, "already"},
        BadCommandLine{{"--socket", unusedPath, "--fault-file", "/nonexistent-akvo-faults"}, "nonexistent"},
        BadCommandLine{{"--socket", unusedPath, "--scenario", "/nonexistent-akvo-scenario"},
                       "/nonexistent-akvo-scenario: cannot be read"},
        BadCommandLine{{"--socket", unusedPath, "--fixed", "--scenario", "/nonexistent-akvo-scenario"},
                       "--fixed excludes --scenario"}));

// The path is owned as OwnedSocket says; a live server keeps it.
TEST(SimCommandLine, RefusesALivePathAndABadFaultFile)
{
    SimulatorProcess live({"--fixed"});
    const std::string faults = live.socketPath() + ".faults";
    std::ofstream(faults) << "# comment\n1:close\n2:teleport\n";
    expectRefused({"--socket", live.socketPath()}, "path in use by another process: " + live.socketPath(),
                  "\n");
    expectRefused({"--socket", unusedPath, "--fault-file", faults}, faults + ":3: bad fault");
    EXPECT_EQ(framed(fixedGetAudioTsAnswer), serverReply(live.socketPath(), framed(getAudioTsRequest)));
}

TEST(SimCommandLine, SigtermEndsCleanlyAndRemovesTheSocketFile)
{
    SimulatorProcess sim({"--fixed", "--fault", "1:delay:600000"});
    // A client waiting for its answer holds up neither other clients nor the end.
    RawClient waiting(sim.socketPath());
    ASSERT_TRUE(waiting.write(framed(getAudioTsRequest)));
    EXPECT_EQ(framed(fixedGetAudioTsAnswer), serverReply(sim.socketPath(), framed(getAudioTsRequest)));
    const int status = sim.stop(SIGTERM);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "wait status " << status;
    EXPECT_NE(0, access(sim.socketPath().c_str(), F_OK));
    EXPECT_EQ("", waiting.readUntilClosed());
}

} // namespace
} // namespace test
} // namespace akvo
