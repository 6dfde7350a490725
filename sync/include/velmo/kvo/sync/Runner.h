#ifndef VELMO_KVO_SYNC_RUNNER_H
#define VELMO_KVO_SYNC_RUNNER_H

/**
 * @file
 * `velmo::kvo::sync::Runner`: the Controller driven over a Service.
 */

#include "velmo/kvo/lipsyncapi/Service.h"
#include "velmo/kvo/sync/Controller.h"
#include "velmo/utilities/Export.h"

#include <functional>
#include <memory>
#include <string>

namespace velmo {
namespace kvo {
namespace sync {

/// What one poll of the Runner did and decided.
struct RunnerReport
{
    /// The controller's decision; the margin in it has been sent when `applyMargin` is set.
    Decision decision;
    /// Connected to the engine after this poll.
    bool connected;
    /// The outcome of this poll's timestamps call, or of the connection attempt
    /// that failed before it (lipsyncapi::Service::CannotConnect).
    lipsyncapi::Service::ResultCode timestampsCode;
    /// The outcome of the margin sent in this poll; Success when none was sent.
    lipsyncapi::Service::ResultCode marginCode;
    /// The audio timestamps this poll read; all 0 unless `timestampsCode` is Success.
    common::LipSyncNtpTimestamps audio;
};

/**
 * Keeps a call in lip sync through its own Service: each poll connects if it
 * is not connected, reads the audio timestamps, hands them with the video
 * frame on screen to a Controller, and sends the margin the controller asks
 * for (a new one, or the same again after a reconnection or a refusal). A
 * transport failure (lipsyncapi::Service::TransportError) closes the
 * connection, and the next poll connects anew: the engine may have restarted,
 * so the margin is re-applied. The application applies the video delay of
 * each report to the frames it shows from then on.
 *
 * The engine may close the connection at any time; writing the next request
 * then raises SIGPIPE, which ends the process unless it is ignored
 * (`signal(SIGPIPE, SIG_IGN)`). The Service's calls block, and the rules of
 * the Service about threads hold for the Runner: one thread at a time, and no
 * other call that waits for the engine at the same time.
 */
class VELMO_EXPORT Runner
{
public:
    /// A Runner for the engine at @p socketPath, to be polled every @p pollIntervalMs. Connects at the first
    /// poll.
    Runner(const std::string& socketPath, unsigned pollIntervalMs);
    ~Runner();
    Runner(const Runner&) = delete;
    Runner& operator=(const Runner&) = delete;

    /**
     * One poll at @p nowMs (the application's monotonic clock, in
     * milliseconds), with the frame on screen, or null when there is none.
     */
    RunnerReport poll(long long nowMs, const VideoTimestamps* video);

    /**
     * Polls every interval on the steady clock until @p report returns false.
     * Before each poll @p frame is asked for the frame on screen; it returns
     * false when there is none.
     */
    void run(const std::function<bool(VideoTimestamps&)>& frame,
             const std::function<bool(const RunnerReport&)>& report);

    /// The text of the last call that failed (its format()), or "" when none has.
    const std::string& lastFailure() const;
    /// The controller, for what it has learnt.
    const Controller& controller() const;

private:
    struct Impl;
    std::unique_ptr<Impl> _impl;
};

} // namespace sync
} // namespace kvo
} // namespace velmo

#endif
