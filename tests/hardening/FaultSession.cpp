#include "FaultSession.h"

#include "FdCount.h"
#include "FixedEngine.h"
#include "LogReceiver.h"
#include "velmo/kvo/lipsyncapi/Service.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <sstream>

using velmo::kvo::lipsyncapi::Service;

namespace akvo {
namespace test {

const char* const phaseNames[] = {
    "connect", "getCapabilities", "setAudioDelayMargin", "getAudioTimestamps", "disconnect", "recovery"};

namespace {

bool hits(const Case& c, Owner owner, SysCall call)
{
    return c.failingCall != 0 && c.owner == owner && c.call == call;
}

std::string errnoText(int error)
{
    return std::string(std::strerror(error)) + " (Code " + std::to_string(error) + ")";
}

// What the Service reports when the Link's read or write fails this way;
// empty when the Link must ride the failure out (retry or continue).
std::string transportText(SysCall call, Failure failure)
{
    if (call == SysCall::Read) {
        if (failure == Failure::Eio || failure == Failure::Epipe) {
            return ioErrorText(errnoOf(failure));
        }
        if (failure == Failure::Econnreset || failure == Failure::NothingTransferred) {
            return closedByDistantText;
        }
    } else if (call == SysCall::Write) {
        if (failure == Failure::Eio || failure == Failure::Econnreset) {
            return ioErrorText(errnoOf(failure));
        }
        if (failure == Failure::Epipe) {
            return closedByDistantText;
        }
    }
    return std::string();
}

struct Outcome
{
    // The formatted result of each call, empty for a call the session skipped.
    std::string connect;
    std::string set;
    std::string get;
    std::string disconnect;
};

Outcome expectedOutcome(const Case& c, int phase, const std::string& socketPath)
{
    Outcome expected{"Success", "Success", "Success", "Success"};
    if (hits(c, Owner::Link, SysCall::Socket)) {
        expected = {"Cannot connect to Audio KVO (Code 1004): {Connection has failed (Code 20002): {" +
                        errnoText(errnoOf(c.failure)) + "}}",
                    "", "", ""};
    } else if (hits(c, Owner::Link, SysCall::Connect)) {
        expected = {"Cannot connect to Audio KVO (Code 1004): {Connection has failed (Code 20002): Unable to "
                    "connect to " +
                        socketPath + " {" + errnoText(errnoOf(c.failure)) + "}}",
                    "", "", ""};
    } else if (hits(c, Owner::Link, SysCall::Read) || hits(c, Owner::Link, SysCall::Write)) {
        const std::string text = transportText(c.call, c.failure);
        if (!text.empty() && phase == Setting) {
            expected.set = text;
            expected.get = "";
        } else if (!text.empty() && phase == Fetching) {
            expected.get = text;
        }
    }
    return expected;
}

// A failed socket() makes the log writer give up for the life of the process
// (-1 for every record); otherwise, with no log daemon, every record retries
// the connect and returns its error, and with one, "T" and "m" make a
// payload of 5 bytes.
int expectedProbeResult(const Case& c, bool logDaemon)
{
    if (hits(c, Owner::LogWriter, SysCall::Socket)) {
        return -1;
    }
    return logDaemon ? 5 : -ENOENT;
}

// Records that reach the log daemon out of `records` Service lines and the probe.
int expectedReceived(const Case& c, bool logDaemon, int records)
{
    if (!logDaemon || hits(c, Owner::LogWriter, SysCall::Socket)) {
        return 0;
    }
    const bool oneLost = hits(c, Owner::LogWriter, SysCall::Connect) ||
                         (hits(c, Owner::LogWriter, SysCall::Writev) && c.failure != Failure::Enotconn);
    return records + 1 - (oneLost ? 1 : 0);
}

void checkCall(std::vector<std::string>& problems, const char* what, const std::string& actual,
               const std::string& expected)
{
    if (actual != expected) {
        problems.push_back(std::string(what) + " gave '" + actual + "' instead of '" + expected + "'");
    }
}

// How the calls after the failing one show that a failure was retried, or not.
void checkFollowingCalls(std::vector<std::string>& problems, const Case& c,
                         const std::vector<SeenCall>& calls)
{
    const size_t failed = c.failingCall - 1;
    const int phase = calls[failed].phase;
    if (c.owner == Owner::Link && (c.call == SysCall::Read || c.call == SysCall::Write)) {
        const bool retried = transportText(c.call, c.failure).empty();
        size_t sameLater = 0;
        for (size_t i = failed + 1; i < calls.size() && calls[i].phase == phase; ++i) {
            sameLater += calls[i].owner == Owner::Link && calls[i].call == c.call ? 1 : 0;
        }
        const bool nextIsSame = failed + 1 < calls.size() && calls[failed + 1].owner == Owner::Link &&
                                calls[failed + 1].call == c.call;
        if (retried && !nextIsSame) {
            problems.push_back("the link did not carry on with another " + std::string(nameOf(c.call)));
        }
        if (!retried && sameLater != 0) {
            problems.push_back("the link tried another " + std::string(nameOf(c.call)) + " after a failure");
        }
    } else if (hits(c, Owner::Link, SysCall::Socket) || hits(c, Owner::Link, SysCall::Connect)) {
        for (size_t i = failed + 1; i < calls.size() && calls[i].phase == phase; ++i) {
            if (calls[i].owner == Owner::Link &&
                (calls[i].call == SysCall::Socket || calls[i].call == SysCall::Connect)) {
                problems.push_back("connect tried again after a failed " + std::string(nameOf(c.call)));
            }
        }
    } else if (hits(c, Owner::LogWriter, SysCall::Writev) && c.failure == Failure::Enotconn) {
        const SysCall reconnect[] = {SysCall::Close, SysCall::Socket, SysCall::Connect, SysCall::Writev};
        for (size_t i = 0; i < 4; ++i) {
            const size_t at = failed + 1 + i;
            if (at >= calls.size() || calls[at].owner != Owner::LogWriter || calls[at].call != reconnect[i]) {
                problems.push_back(
                    "the log writer did not close, reopen, reconnect and resend after ENOTCONN");
                break;
            }
        }
    }
}

void checkRecords(std::vector<std::string>& problems, const std::vector<LogRecord>& records, int expected)
{
    if (static_cast<int>(records.size()) != expected) {
        problems.push_back("the log daemon received " + std::to_string(records.size()) +
                           " records instead of " + std::to_string(expected));
        return;
    }
    for (size_t i = 0; i < records.size(); ++i) {
        const LogRecord& record = records[i];
        const bool probe = i + 1 == records.size();
        const bool whole = probe
                               ? record.tag == "T" && record.message == "m"
                               : record.tag == "AKVOLIPSYNCAPI" && record.message.rfind("Client is", 0) == 0;
        if (!whole || record.priority != AKVO_LOG_INFO) {
            problems.push_back("record " + std::to_string(i) + " is not what was logged: tag '" + record.tag +
                               "' message '" + record.message + "'");
        }
    }
}

} // namespace

// The report has one line per wrapped call seen, then one per problem.
std::string runFaultSession(const std::string& socketPath, bool logDaemon, const Case& c)
{
    std::vector<std::string> problems;
    std::optional<LogReceiver> receiver;
    if (logDaemon) {
        receiver.emplace(AKVO_TEST_LOGDW_PATH);
    }
    const int descriptors = openDescriptorCount();
    Outcome outcome;
    LipSyncNtpTimestamps fetched = untouchedTimestamps;
    int records = 0;

    startWatching(c.failingCall, c.failure);
    {
        Service service;
        setPhase(Connecting);
        outcome.connect = service.connect(socketPath).format();
        ++records;
        if (outcome.connect == "Success") {
            setPhase(Capabilities);
            unsigned long long granularity = 0;
            unsigned long long maximum = 0;
            if (service.getCapabilities(granularity, maximum).format() != "Success" || granularity != 20 ||
                maximum != 100) {
                problems.push_back("getCapabilities did not give 20 and 100");
            }
            setPhase(Setting);
            outcome.set = service.setAudioDelayMargin(40).format();
            ++records;
            if (outcome.set == "Success") {
                setPhase(Fetching);
                outcome.get = service.getAudioTimestamps(fetched).format();
                ++records;
            }
            setPhase(Disconnecting);
            outcome.disconnect = service.disconnect().format();
            ++records;
        }

        setPhase(Recovering);
        LipSyncNtpTimestamps again = untouchedTimestamps;
        checkCall(problems, "connect after the session", service.connect(socketPath).format(), "Success");
        checkCall(problems, "getAudioTimestamps after the session",
                  service.getAudioTimestamps(again).format(), "Success");
        checkCall(problems, "disconnect after the session", service.disconnect().format(), "Success");
        records += 3;
        if (!sameTimestamps(fixedTimestamps, again)) {
            problems.push_back("getAudioTimestamps after the session gave other timestamps");
        }
    }
    // The destructor of a disconnected Service logs one more line.
    ++records;
    const int probe = __android_log_write(AKVO_LOG_INFO, "T", "m");
    Watch watch = stopWatching();
    problems.insert(problems.end(), watch.problems.begin(), watch.problems.end());

    int phase = Connecting;
    if (c.failingCall != 0) {
        if (c.failingCall > watch.calls.size() || watch.calls[c.failingCall - 1].call != c.call ||
            watch.calls[c.failingCall - 1].owner != c.owner) {
            problems.push_back("call " + std::to_string(c.failingCall) + " was not the " + nameOf(c.owner) +
                               " " + nameOf(c.call) + " of the session without faults");
        } else {
            phase = watch.calls[c.failingCall - 1].phase;
            checkFollowingCalls(problems, c, watch.calls);
        }
    }
    const Outcome expected = expectedOutcome(c, phase, socketPath);
    checkCall(problems, "connect", outcome.connect, expected.connect);
    checkCall(problems, "setAudioDelayMargin(40)", outcome.set, expected.set);
    checkCall(problems, "getAudioTimestamps", outcome.get, expected.get);
    checkCall(problems, "disconnect", outcome.disconnect, expected.disconnect);
    const LipSyncNtpTimestamps& expectedTimestamps =
        outcome.get == "Success" ? fixedTimestamps : untouchedTimestamps;
    if (!sameTimestamps(expectedTimestamps, fetched)) {
        problems.push_back(
            "getAudioTimestamps wrote other timestamps than expected into the caller's record");
    }
    if (probe != expectedProbeResult(c, logDaemon)) {
        problems.push_back("a record after the session returned " + std::to_string(probe) + " instead of " +
                           std::to_string(expectedProbeResult(c, logDaemon)));
    }
    if (watch.openLogSockets > 1) {
        problems.push_back("the log writer holds " + std::to_string(watch.openLogSockets) + " sockets");
    }
    const int descriptorsAfter = openDescriptorCount();
    if (descriptorsAfter != descriptors + watch.openLogSockets) {
        problems.push_back(std::to_string(descriptorsAfter - descriptors) +
                           " more descriptors open after the session, the log writer's socket included");
    }
    if (receiver) {
        checkRecords(problems, receiver->drain(), expectedReceived(c, logDaemon, records));
    }

    std::ostringstream report;
    for (const SeenCall& call : watch.calls) {
        report << "call " << static_cast<int>(call.call) << ' ' << static_cast<int>(call.owner) << ' '
               << call.phase << '\n';
    }
    for (const std::string& problem : problems) {
        report << "problem " << problem << '\n';
    }
    return report.str();
}

Report parseReport(const std::string& text)
{
    Report report;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        if (line.rfind("problem ", 0) == 0) {
            report.problems.push_back(line.substr(8));
            continue;
        }
        int call = 0;
        int owner = 0;
        int phase = 0;
        if (std::sscanf(line.c_str(), "call %d %d %d", &call, &owner, &phase) == 3) {
            report.calls.push_back({static_cast<SysCall>(call), static_cast<Owner>(owner), phase});
        }
    }
    return report;
}

} // namespace test
} // namespace akvo
