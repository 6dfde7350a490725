#include "SigpipeGuard.h"

#include <cerrno>
#include <ctime>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

namespace {

sigset_t sigpipeOnly()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    return set;
}

bool sigpipePending()
{
    sigset_t pending;
    return sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1;
}

} // namespace

SigpipeGuard::SigpipeGuard()
{
    const sigset_t sigpipe = sigpipeOnly();
    pthread_sigmask(SIG_BLOCK, &sigpipe, &_savedMask);
    _wasPending = sigpipePending();
}

SigpipeGuard::~SigpipeGuard()
{
    if (!_wasPending && sigpipePending()) {
        const sigset_t sigpipe = sigpipeOnly();
        const timespec now = {0, 0};
        while (sigtimedwait(&sigpipe, nullptr, &now) < 0 && errno == EINTR) {
        }
    }
    pthread_sigmask(SIG_SETMASK, &_savedMask, nullptr);
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo
