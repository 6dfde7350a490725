#include "StopSignals.h"

namespace velmo {
namespace kvo {
namespace logcat {

namespace {

volatile sig_atomic_t stopSignalReceived = 0;

void onStopSignal(int)
{
    stopSignalReceived = 1;
}

} // namespace

StopSignals::StopSignals()
{
    sigset_t stopSet;
    sigemptyset(&stopSet);
    sigaddset(&stopSet, SIGINT);
    sigaddset(&stopSet, SIGTERM);
    sigprocmask(SIG_BLOCK, &stopSet, &_waitMask);
    sigdelset(&_waitMask, SIGINT);
    sigdelset(&_waitMask, SIGTERM);

    struct sigaction action = {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool StopSignals::stopRequested() const
{
    return stopSignalReceived != 0;
}

} // namespace logcat
} // namespace kvo
} // namespace velmo
