#include "Watchdog.h"

#include <csignal>
#include <new>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

bool Watchdog::arm(comms::Link& link, Clock::time_point deadline)
{
    std::unique_lock<std::mutex> lock(_mutex);
    _stopped.wait(lock, [this] { return !_stopping; });
    if (!_running) {
        // The thread inherits the signal mask: with every signal blocked, no
        // handler of the application ever runs on it.
        sigset_t all;
        sigset_t saved;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &saved);
        const int created = pthread_create(&_thread, nullptr, &Watchdog::run, this);
        pthread_sigmask(SIG_SETMASK, &saved, nullptr);
        if (created != 0) {
            return false;
        }
        // Named here rather than by the thread itself, so that the name is
        // there by the time the first watched call returns.
        pthread_setname_np(_thread, "akvo-watchdog");
        _running = true;
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

void Watchdog::stop()
{
    std::unique_lock<std::mutex> lock(_mutex);
    _stopped.wait(lock, [this] { return !_stopping; });
    if (!_running || _link != nullptr) {
        return;
    }
    _stopping = true;
    _wake.notify_one();
    const pthread_t thread = _thread;
    lock.unlock();
    pthread_join(thread, nullptr);
    lock.lock();
    _running = false;
    _stopping = false;
    _stopped.notify_all();
}

void Watchdog::resetInChild()
{
    new (&_wake) std::condition_variable;
    new (&_stopped) std::condition_variable;
    _running = false;
    _stopping = false;
    _link = nullptr;
    _asleepUntil = Clock::time_point::max();
    _expired = false;
    _mutex.unlock();
}

void* Watchdog::run(void* watchdog)
{
    static_cast<Watchdog*>(watchdog)->watch();
    return nullptr;
}

// The link is closed under the mutex, so the calling thread cannot disarm
// and free it in the middle.
void Watchdog::watch()
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
