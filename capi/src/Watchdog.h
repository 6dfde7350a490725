#ifndef VELMO_KVO_LIPSYNCAPI_WATCHDOG_H
#define VELMO_KVO_LIPSYNCAPI_WATCHDOG_H

#include "velmo/kvo/comms/Link.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <pthread.h>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// Closes a link whose exchange outlives its deadline, which wakes the thread
// blocked on it. Exchanges run one at a time in the whole process, so one
// watchdog with one thread serves them all: the thread starts with the first
// arm() and stays for the next calls, so that a bounded call costs no thread
// creation, until stop().
class Watchdog
{
public:
    using Clock = std::chrono::steady_clock;

    // Watches `link` until disarm(); false when no thread could be started,
    // and then nothing is watched.
    bool arm(comms::Link& link, Clock::time_point deadline);
    // Stops watching; true when the deadline passed first and the link was
    // closed.
    bool disarm();
    // Ends the thread unless a link is being watched; the next arm() starts
    // another.
    void stop();

    // Around fork(), as Turn's. The child has no watchdog thread: the next
    // arm() there starts one.
    void lockForFork() { _mutex.lock(); }
    void unlockAfterFork() { _mutex.unlock(); }
    void resetInChild();

private:
    static void* run(void* watchdog);
    void watch();

    std::mutex _mutex;
    std::condition_variable _wake;
    // Tells arm() and stop() that a stop() finished joining the thread.
    std::condition_variable _stopped;
    pthread_t _thread;
    bool _running = false;
    bool _stopping = false;
    comms::Link* _link = nullptr;
    Clock::time_point _deadline;
    // When the thread wakes up by itself; the largest time while it waits
    // for something to watch.
    Clock::time_point _asleepUntil = Clock::time_point::max();
    bool _expired = false;
};

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
