#ifndef AKVO_TOOLS_CLI_SESSION_H
#define AKVO_TOOLS_CLI_SESSION_H

#include "Output.h"

#include "velmo/kvo/lipsyncapi/Service.h"

#include <string>

namespace akvo {
namespace cli {

// Exit statuses, one per class of failure, so that scripts can react.
enum ExitStatus
{
    ExitSuccess = 0,
    ExitOtherFailure = 1,
    ExitUsage = 2,
    ExitCannotConnect = 3,
    ExitInvalidParam = 4,
    ExitBadState = 5,
    ExitTransportError = 6,
    ExitServerError = 7,
    ExitNotInCall = 8
};

int exitStatusFor(const velmo::kvo::lipsyncapi::Service::ServiceResult& result);

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
    int timestamps(unsigned int count, unsigned int intervalMs, bool watch);
    int videoTimestamps(const velmo::kvo::common::LipSyncNtpTimestamps& timestamps);

private:
    velmo::kvo::lipsyncapi::Service _service;
    const Output& _output;
};

} // namespace cli
} // namespace akvo

#endif
