#ifndef VELMO_KVO_LIPSYNCAPI_TURN_H
#define VELMO_KVO_LIPSYNCAPI_TURN_H

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// One holder at a time, like a mutex, with a wait that can end at a time of
// the steady clock. std::timed_mutex offers that too, but its steady-clock
// wait is a call that ThreadSanitizer does not follow, which would hide every
// race behind it.
class Turn
{
public:
    using Clock = std::chrono::steady_clock;

    void take()
    {
        std::unique_lock<std::mutex> lock(_mutex);
        _given.wait(lock, [this] { return !_taken; });
        _taken = true;
    }

    // False when `deadline` came first.
    bool takeBefore(Clock::time_point deadline)
    {
        std::unique_lock<std::mutex> lock(_mutex);
        if (!_given.wait_until(lock, deadline, [this] { return !_taken; })) {
            return false;
        }
        _taken = true;
        return true;
    }

    void give()
    {
        {
            std::lock_guard<std::mutex> lock(_mutex);
            _taken = false;
        }
        _given.notify_one();
    }

private:
    std::mutex _mutex;
    std::condition_variable _given;
    bool _taken = false;
};

// Gives a taken turn back when it goes out of scope.
class HeldTurn
{
public:
    HeldTurn() = default;
    ~HeldTurn()
    {
        if (_turn != nullptr) {
            _turn->give();
        }
    }

    void hold(Turn& turn) { _turn = &turn; }

    HeldTurn(const HeldTurn&) = delete;
    HeldTurn& operator=(const HeldTurn&) = delete;

private:
    Turn* _turn = nullptr;
};

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
