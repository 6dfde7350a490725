#ifndef VELMO_KVO_CLI_SESSION_H
#define VELMO_KVO_CLI_SESSION_H

#include "ExitStatus.h"
#include "Output.h"

#include "velmo/kvo/lipsyncapi/Service.h"

#include <string>

namespace velmo {
namespace kvo {
namespace cli {

// Exit statuses, one per class of failure, so that scripts can react.
enum ExitStatus
{
    ExitSuccess = 0,
    ExitOtherFailure = 1,
    ExitUsage = tools::usageError,
    ExitCannotConnect = 3,
    ExitInvalidParam = 4,
    ExitBadState = 5,
    ExitTransportError = 6,
    ExitServerError = 7,
    ExitNotInCall = 8
};

int exitStatusFor(const lipsyncapi::Service::ServiceResult& result);

// One Service and the commands a user can run on it; each command prints one
// line per outcome and returns its exit status.
class Session
{
public:
    explicit Session(const Output& output) : _output(output) {}

    int connect(const std::string& socketName, bool quietOnSuccess);
    int disconnect(bool quietOnSuccess);
    int caps();
    int setMargin(unsigned long long delayMs);
    int getMargin();
    // With `watch`, statistics follow the samples; `csv` prints a table
    // instead, and failures on standard error.
    int timestamps(unsigned int count, unsigned int intervalMs, bool watch, bool csv);
    int videoTimestamps(const common::LipSyncNtpTimestamps& timestamps);

private:
    lipsyncapi::Service _service;
    const Output& _output;
};

} // namespace cli
} // namespace kvo
} // namespace velmo

#endif
