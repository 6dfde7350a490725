#include "Process.h"

#include <pthread.h>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

Process& Process::get()
{
    static Process* const process = new Process;
    return *process;
}

Process::Process()
{
    pthread_atfork(&Process::prepareFork, &Process::afterForkInParent, &Process::afterForkInChild);
}

void Process::add(akvo_lipsync_service& handle)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    handle.next = _first;
    if (_first != nullptr) {
        _first->previous = &handle;
    }
    _first = &handle;
}

// The watchdog stops under the lock, so that no handle is made while its
// thread goes.
void Process::remove(akvo_lipsync_service& handle)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    (handle.previous != nullptr ? handle.previous->next : _first) = handle.next;
    if (handle.next != nullptr) {
        handle.next->previous = handle.previous;
    }
    if (_first == nullptr) {
        _watchdog.stop();
    }
}

// Every lock that another thread may hold is taken by the thread that forks,
// always in this order, so that the child finds each in a known state.
void Process::prepareFork()
{
    Process& process = get();
    process._mutex.lock();
    for (akvo_lipsync_service* handle = process._first; handle != nullptr; handle = handle->next) {
        handle->turn.lockForFork();
    }
    process._exchangeTurn.lockForFork();
    process._watchdog.lockForFork();
}

void Process::afterForkInParent()
{
    Process& process = get();
    process._watchdog.unlockAfterFork();
    process._exchangeTurn.unlockAfterFork();
    for (akvo_lipsync_service* handle = process._first; handle != nullptr; handle = handle->next) {
        handle->turn.unlockAfterFork();
    }
    process._mutex.unlock();
}

void Process::afterForkInChild()
{
    Process& process = get();
    process._watchdog.resetInChild();
    process._exchangeTurn.resetInChild();
    for (akvo_lipsync_service* handle = process._first; handle != nullptr; handle = handle->next) {
        handle->turn.resetInChild();
        handle->connection.inheritInChild();
    }
    process._mutex.unlock();
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo
