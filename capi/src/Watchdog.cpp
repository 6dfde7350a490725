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
    _wake.notify_one();
    return true;
}

// No wake-up here: a thread that wakes at a deadline already disarmed finds
// nothing to watch and goes back to sleep, which costs less than waking it
// after every call.
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
            _wake.wait(lock);
        } else if (Clock::now() >= _deadline) {
            _link->close();
            _link = nullptr;
            _expired = true;
        } else {
            _wake.wait_until(lock, _deadline);
        }
    }
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo
