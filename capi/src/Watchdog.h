#ifndef VELMO_KVO_LIPSYNCAPI_WATCHDOG_H
#define VELMO_KVO_LIPSYNCAPI_WATCHDOG_H

#include "velmo/kvo/comms/Link.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// Closes a link whose exchange outlives its deadline, which wakes the thread
// blocked on it. One thread per watchdog, started by the first arm() and
// kept for the next calls, so that a bounded call costs no thread creation.
class Watchdog
{
public:
    using Clock = std::chrono::steady_clock;

    Watchdog() = default;
    ~Watchdog();

    // Watches `link` until disarm(); false when no thread could be started,
    // and then nothing is watched.
    bool arm(comms::Link& link, Clock::time_point deadline);
    // Stops watching; true when the deadline passed first and the link was
    // closed.
    bool disarm();

    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

private:
    void run();

    std::mutex _mutex;
    std::condition_variable _wake;
    std::thread _thread;
    comms::Link* _link = nullptr;
    Clock::time_point _deadline;
    // When the thread wakes up by itself; the largest time while it waits
    // for something to watch.
    Clock::time_point _asleepUntil = Clock::time_point::max();
    bool _expired = false;
    bool _stopping = false;
};

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
