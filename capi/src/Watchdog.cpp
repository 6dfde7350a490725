#include "Watchdog.h"

#include <system_error>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

Watchdog::~Watchdog()
{
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _stopping = true;
    }
    _wake.notify_one();
    if (_thread.joinable()) {
        _thread.join();
    }
}

bool Watchdog::arm(comms::Link& link, Clock::time_point deadline)
{
    std::lock_guard<std::mutex> lock(_mutex);
    if (!_thread.joinable()) {
        try {
            _thread = std::thread(&Watchdog::run, this);
        } catch (const std::system_error&) {
            return false;
        }
    }
    _link = &link;
    _deadline = deadline;
    _expired = false;
    // A thread asleep until an earlier time wakes up by itself and then
    // sleeps on until this deadline, so calls under the same deadline cost
    // no wake-up each.
    if (deadline < _asleepUntil) {
        _wake.notify_one();
    }
    return true;
}

// No wake-up here: a thread that wakes at a deadline already disarmed finds
// nothing to watch, or the next call's deadline, and goes back to sleep.
bool Watchdog::disarm()
{
    std::lock_guard<std::mutex> lock(_mutex);
    _link = nullptr;
    return _expired;
}

// The link is closed under the mutex, so the calling thread cannot disarm
// and free it in the middle.
void Watchdog::run()
{
    std::unique_lock<std::mutex> lock(_mutex);
    while (!_stopping) {
        if (_link == nullptr) {
            _asleepUntil = Clock::time_point::max();
            _wake.wait(lock);
        } else if (Clock::now() >= _deadline) {
            _link->close();
            _link = nullptr;
            _expired = true;
        } else {
            _asleepUntil = _deadline;
            _wake.wait_until(lock, _deadline);
        }
    }
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo
