#ifndef VELMO_KVO_CLI_SESSION_H
#define VELMO_KVO_CLI_SESSION_H

#include "ExitStatus.h"
#include "Output.h"

#include "velmo/kvo/lipsyncapi/akvo_lipsync.h"

#include <cstdint>
#include <memory>
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
    ExitNotInCall = 8,
    ExitTimedOut = 9
};

int exitStatusFor(const Outcome& outcome);

// One service and the commands a user can run on it; each command prints one
// line per outcome and returns its exit status. The service is the C
// interface's: its deadline (--timeout-ms) bounds a call that a hung engine
// would otherwise hold for ever.
class Session
{
public:
    explicit Session(const Output& output) : _service(akvo_lipsync_create()), _output(output) {}

    // False when there was no memory for the service.
    bool ready() const { return _service != nullptr; }
    // Bounds each later call to about `milliseconds`, 0 for no bound. A call
    // cut short ends with code 1100 and leaves the session disconnected.
    void setTimeout(uint32_t milliseconds);

    int connect(const std::string& socketName, bool quietOnSuccess);
    int disconnect(bool quietOnSuccess);
    int caps();
    int setMargin(unsigned long long delayMs);
    int getMargin();
    // `count` samples, without end when it is 0 and `watch` is set; with
    // `watch`, statistics follow the samples. `csv` prints a table instead,
    // and failures on standard error.
    int timestamps(unsigned int count, unsigned int intervalMs, bool watch, bool csv);
    int videoTimestamps(const akvo_lipsync_timestamps& timestamps);

private:
    struct Destroy
    {
        void operator()(akvo_lipsync_service* service) const { akvo_lipsync_destroy(service); }
    };

    std::unique_ptr<akvo_lipsync_service, Destroy> _service;
    const Output& _output;
};

} // namespace cli
} // namespace kvo
} // namespace velmo

#endif
