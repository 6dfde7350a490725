#ifndef VELMO_KVO_LIPSYNCAPI_TURN_H
#define VELMO_KVO_LIPSYNCAPI_TURN_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>

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

    // Around fork(): the parent's thread that forks holds the mutex, so that
    // the child gets it in a known state.
    void lockForFork() { _mutex.lock(); }
    void unlockAfterFork() { _mutex.unlock(); }

    // In the child: whoever held the turn or waited for it was another thread
    // of the parent, which the child does not have. The condition variable
    // still counts those waiters, so it starts afresh.
    void resetInChild()
    {
        new (&_given) std::condition_variable;
        _taken = false;
        _mutex.unlock();
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
