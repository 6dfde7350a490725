#ifndef VELMO_KVO_SYNC_POLLLOOP_H
#define VELMO_KVO_SYNC_POLLLOOP_H

#include "velmo/kvo/sync/Controller.h"
#include "velmo/kvo/sync/Engine.h"

#include <chrono>
#include <string>
#include <thread>

namespace velmo {
namespace kvo {
namespace sync {

// What one poll did and decided, with the codes of the way in (see Engine).
struct PollReport
{
    Decision decision;
    bool connected;
    int32_t timestampsCode;
    int32_t marginCode;
    common::LipSyncNtpTimestamps audio;
};

// The runner's logic, once for every way to the engine: each poll connects
// if the engine is not connected (and tells the controller), reads the audio
// timestamps, hands them with the frame on screen to the controller, and
// sends the margin it asks for. A transport failure closes the connection:
// part of an answer may still wait on it, and the engine may have restarted,
// so the next poll starts on a new one.
class PollLoop
{
public:
    PollLoop(Engine& engine, unsigned pollIntervalMs);

    PollReport poll(long long nowMs, const VideoTimestamps* video);

    // Polls every interval on the steady clock, its time counted from the
    // call, until `report` returns false; `frame(VideoTimestamps&)` fills the
    // frame on screen before each poll, or returns false when there is none.
    template <class Frame, class Report>
    void run(Frame&& frame, Report&& report)
    {
        using Clock = std::chrono::steady_clock;
        const Clock::time_point start = Clock::now();
        Clock::time_point next = start;
        for (;;) {
            VideoTimestamps video{0, 0};
            const bool shown = frame(video);
            const long long nowMs =
                std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
            if (!report(poll(nowMs, shown ? &video : nullptr))) {
                return;
            }
            next += std::chrono::milliseconds(_pollIntervalMs);
            std::this_thread::sleep_until(next);
        }
    }

    const std::string& lastFailure() const { return _lastFailure; }
    const Controller& controller() const { return _controller; }

private:
    int32_t closingAfterTransportError(int32_t code);

    Engine& _engine;
    Controller _controller;
    unsigned _pollIntervalMs;
    std::string _lastFailure;
};

} // namespace sync
} // namespace kvo
} // namespace velmo

#endif
