#ifndef VELMO_KVO_LIPSYNCAPI_SIGPIPEGUARD_H
#define VELMO_KVO_LIPSYNCAPI_SIGPIPEGUARD_H

#include <csignal>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// Keeps the SIGPIPE that a call raises from the process, whatever the
// application's disposition, which stays as it is. A write to a connection
// that the engine or the watchdog closed raises SIGPIPE in the writing thread
// only, so the signal is blocked in the calling thread for the call, and one
// that became pending meanwhile is taken back before the thread's mask is
// restored. One that was pending before the call is the application's and
// stays pending.
class SigpipeGuard
{
public:
    SigpipeGuard();
    ~SigpipeGuard();

    SigpipeGuard(const SigpipeGuard&) = delete;
    SigpipeGuard& operator=(const SigpipeGuard&) = delete;

private:
    sigset_t _savedMask;
    bool _wasPending;
};

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
