#include "StdErrToDevNull.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace akvo {
namespace bench {

StdErrToDevNull::StdErrToDevNull() : _savedStdErr(dup(STDERR_FILENO))
{
    std::fflush(stderr);
    const int devNull = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (devNull >= 0) {
        dup2(devNull, STDERR_FILENO);
        close(devNull);
    }
}

StdErrToDevNull::~StdErrToDevNull()
{
    std::fflush(stderr);
    if (_savedStdErr >= 0) {
        dup2(_savedStdErr, STDERR_FILENO);
        close(_savedStdErr);
    }
}

} // namespace bench
} // namespace akvo
