#ifndef AKVO_TESTS_HARDENING_FAULTSESSION_H
#define AKVO_TESTS_HARDENING_FAULTSESSION_H

#include "SyscallFaults.h"

#include <cstddef>
#include <string>
#include <vector>

namespace akvo {
namespace test {

// The operations of one application session, in order; Recovering is the
// second session that shows the Service still usable, and is not swept.
enum Phase
{
    Connecting,
    Capabilities,
    Setting,
    Fetching,
    Disconnecting,
    Recovering
};

extern const char* const phaseNames[];

struct Case
{
    // From 1; 0 runs the session without a fault.
    size_t failingCall;
    SysCall call;
    Owner owner;
    Failure failure;
};

// Runs one session (connect, getCapabilities, setAudioDelayMargin(40),
// getAudioTimestamps, disconnect) against the --fixed simulator at
// `socketPath`, with the wrapped call `c.failingCall` failing; then a second
// session and one log record. Checks every result against what the failure
// must lead to, and returns a report for parseReport. With `logDaemon` a log
// receiver stands in for the log daemon while the session runs.
std::string runFaultSession(const std::string& socketPath, bool logDaemon, const Case& c);

struct Report
{
    std::vector<SeenCall> calls;
    std::vector<std::string> problems;
};

Report parseReport(const std::string& text);

} // namespace test
} // namespace akvo

#endif
