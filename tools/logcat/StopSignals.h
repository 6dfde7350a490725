#ifndef VELMO_KVO_LOGCAT_STOPSIGNALS_H
#define VELMO_KVO_LOGCAT_STOPSIGNALS_H

#include <signal.h>

namespace velmo {
namespace kvo {
namespace logcat {

// SIGINT and SIGTERM stay blocked except while the program waits with
// waitMask() (ppoll), so a stop request is seen before the next wait starts
// and the program can remove its socket file on the way out.
class StopSignals
{
public:
    StopSignals();

    const sigset_t* waitMask() const { return &_waitMask; }
    bool stopRequested() const;

    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

private:
    sigset_t _waitMask;
};

} // namespace logcat
} // namespace kvo
} // namespace velmo

#endif
