#include "ChildProcess.h"
#include "FaultSession.h"
#include "FdCount.h"
#include "Simulator.h"

#include <gtest/gtest.h>

#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

using akvo::test::Case;
using akvo::test::ChildRun;
using akvo::test::Failure;
using akvo::test::Owner;
using akvo::test::Phase;
using akvo::test::phaseNames;
using akvo::test::Report;
using akvo::test::SeenCall;
using akvo::test::SysCall;

namespace {

std::string describe(const Case& c)
{
    return "call " + std::to_string(c.failingCall) + " (" + nameOf(c.owner) + " " + nameOf(c.call) +
           ") fails with " + nameOf(c.failure);
}

std::string describe(const SeenCall& call)
{
    return std::string(phaseNames[call.phase]) + ": " + nameOf(call.owner) + " " + nameOf(call.call);
}

std::vector<Failure> failuresFor(SysCall call, Owner owner)
{
    if (owner == Owner::Link) {
        switch (call) {
        case SysCall::Socket:
            return {Failure::Emfile};
        case SysCall::Connect:
            return {Failure::Econnrefused, Failure::Eintr};
        case SysCall::Read:
        case SysCall::Write:
            return {Failure::Eintr, Failure::Eagain,     Failure::ShortTransfer, Failure::NothingTransferred,
                    Failure::Eio,   Failure::Econnreset, Failure::Epipe};
        case SysCall::Shutdown:
            return {Failure::Enotconn};
        case SysCall::Close:
            return {Failure::Eintr, Failure::Eio};
        case SysCall::Writev:
            break;
        }
    } else if (owner == Owner::LogWriter) {
        switch (call) {
        case SysCall::Socket:
            return {Failure::Emfile};
        case SysCall::Connect:
            return {Failure::Econnrefused};
        case SysCall::Writev:
            return {Failure::Eagain, Failure::Enotconn, Failure::Eio};
        case SysCall::Close:
            return {Failure::Eio};
        case SysCall::Read:
        case SysCall::Write:
        case SysCall::Shutdown:
            break;
        }
    }
    return {};
}

std::string joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines) {
        text += "\n  " + line;
    }
    return text;
}

// The wrapped calls of a session without faults. Without a log daemon every
// log line opens a socket, fails to connect and closes it again; with one,
// the first line connects and every line is one writev.
std::vector<std::string> expectedSession(bool logDaemon)
{
    const std::vector<std::string> firstLine =
        logDaemon ? std::vector<std::string>{"log writer socket", "log writer connect", "log writer writev"}
                  : std::vector<std::string>{"log writer socket", "log writer connect", "log writer close"};
    const std::vector<std::string> line =
        logDaemon ? std::vector<std::string>{"log writer writev"} : firstLine;
    const std::vector<std::pair<Phase, std::vector<std::string>>> phases = {
        {akvo::test::Connecting, {"link socket", "link connect"}},
        {akvo::test::Setting, {"link write", "link read"}},
        {akvo::test::Fetching, {"link write", "link read"}},
        {akvo::test::Disconnecting, {"link shutdown", "link close"}}};
    std::vector<std::string> calls;
    for (const auto& phase : phases) {
        std::vector<std::string> own = phase.second;
        const std::vector<std::string>& logged = phase.first == akvo::test::Connecting ? firstLine : line;
        own.insert(own.end(), logged.begin(), logged.end());
        for (const std::string& call : own) {
            calls.push_back(std::string(phaseNames[phase.first]) + ": " + call);
        }
    }
    return calls;
}

class SyscallFaultSweep : public ::testing::TestWithParam<bool>
{
};

// Every wrapped call of a session (connect, getCapabilities,
// setAudioDelayMargin(40), getAudioTimestamps, disconnect) fails once, in
// every way that call can fail, each time in a fresh child process.
TEST_P(SyscallFaultSweep, EveryCallOfASessionFailsOnce)
{
    const bool logDaemon = GetParam();
    unlink(AKVO_TEST_LOGDW_PATH);
    akvo::test::SimulatorProcess simulator({"--fixed"});
    const std::string socketPath = simulator.socketPath();
    const int descriptors = akvo::test::openDescriptorCount();

    const Case noFault{0, SysCall::Socket, Owner::Unknown, Failure::Eintr};
    const ChildRun baseline =
        akvo::test::runInChild([&] { return akvo::test::runFaultSession(socketPath, logDaemon, noFault); });
    ASSERT_TRUE(baseline.exitedCleanly()) << baseline.describe();
    const Report baselineReport = akvo::test::parseReport(baseline.report);
    ASSERT_TRUE(baselineReport.problems.empty()) << "without faults:" << joined(baselineReport.problems);
    std::vector<SeenCall> session;
    std::vector<std::string> sessionNames;
    for (const SeenCall& call : baselineReport.calls) {
        if (call.phase != akvo::test::Recovering) {
            session.push_back(call);
            sessionNames.push_back(describe(call));
        }
    }
    ASSERT_EQ(expectedSession(logDaemon), sessionNames);

    size_t cases = 0;
    for (size_t index = 0; index < session.size(); ++index) {
        for (Failure failure : failuresFor(session[index].call, session[index].owner)) {
            const Case c{index + 1, session[index].call, session[index].owner, failure};
            const ChildRun run =
                akvo::test::runInChild([&] { return akvo::test::runFaultSession(socketPath, logDaemon, c); });
            const Report report = akvo::test::parseReport(run.report);
            EXPECT_TRUE(run.exitedCleanly())
                << describe(c) << " in " << phaseNames[session[index].phase] << ": " << run.describe();
            EXPECT_TRUE(report.problems.empty()) << describe(c) << " in " << phaseNames[session[index].phase]
                                                 << ":" << joined(report.problems);
            ++cases;
        }
    }
    EXPECT_GT(cases, session.size());
    EXPECT_EQ(descriptors, akvo::test::openDescriptorCount());
    EXPECT_NE(0, access(AKVO_TEST_LOGDW_PATH, F_OK)) << "a child left its log receiver behind";
}

INSTANTIATE_TEST_SUITE_P(Service, SyscallFaultSweep, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& info) {
                             return info.param ? "WithLogDaemon" : "WithoutLogDaemon";
                         });

} // namespace
