#include "QuietStderr.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace akvo {
namespace test {

QuietStderr::QuietStderr() : _savedFd(dup(STDERR_FILENO))
{
    std::fflush(stderr);
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (null >= 0) {
        dup2(null, STDERR_FILENO);
        close(null);
    }
}

QuietStderr::~QuietStderr()
{
    if (_savedFd < 0) {
        return;
    }
    std::fflush(stderr);
    dup2(_savedFd, STDERR_FILENO);
    close(_savedFd);
}

} // namespace test
} // namespace akvo
