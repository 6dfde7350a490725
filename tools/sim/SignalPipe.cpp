#include "SignalPipe.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace sim {

namespace {

volatile sig_atomic_t writeFd = -1;

extern "C" void onStopSignal(int)
{
    int saved = errno;
    char byte = 0;
    // Non-blocking: when the pipe is full a stop is pending already.
    ssize_t ignored = ::write(writeFd, &byte, 1);
    (void)ignored;
    errno = saved;
}

} // namespace

SignalPipe::~SignalPipe()
{
    if (_readFd >= 0) {
        std::signal(SIGINT, SIG_DFL);
        std::signal(SIGTERM, SIG_DFL);
        ::close(writeFd);
        ::close(_readFd);
    }
}

bool SignalPipe::install()
{
    int fds[2];
    if (::pipe2(fds, O_NONBLOCK | O_CLOEXEC) != 0) {
        return false;
    }
    _readFd = fds[0];
    writeFd = fds[1];
    struct sigaction action
    {
    };
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    struct sigaction ignore
    {
    };
    ignore.sa_handler = SIG_IGN;
    sigemptyset(&ignore.sa_mask);
    return ::sigaction(SIGINT, &action, nullptr) == 0 && ::sigaction(SIGTERM, &action, nullptr) == 0 &&
           ::sigaction(SIGPIPE, &ignore, nullptr) == 0;
}

} // namespace sim
} // namespace kvo
} // namespace velmo
