#include "LogSocket.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace logwriter {

namespace {

static_assert(sizeof(AKVO_LOGDW_PATH) <= sizeof(sockaddr_un::sun_path), "log socket path too long");

// The built-in path until the load-time initialiser has looked at the
// environment, so that a record written before it still goes somewhere sane.
sockaddr_un logAddress = {AF_UNIX, AKVO_LOGDW_PATH};
bool overrideTooLong = false;

// A host has no log daemon at the built-in path; the variable points the
// writer at a receiver such as akvo-logcat without a rebuild. An empty value
// counts as unset.
__attribute__((constructor)) void loadLogSocketPath()
{
    const char* path = std::getenv("AKVO_LOG_SOCKET");
    if (path == nullptr || *path == '\0') {
        return;
    }
    const size_t length = std::strlen(path);
    if (length >= sizeof(logAddress.sun_path)) {
        overrideTooLong = true;
        return;
    }
    std::memset(logAddress.sun_path, 0, sizeof(logAddress.sun_path));
    std::memcpy(logAddress.sun_path, path, length);
}

int closeWithError(int fd)
{
    const int error = errno;
    close(fd);
    return -error;
}

} // namespace

const char* logSocketPath()
{
    return overrideTooLong ? nullptr : logAddress.sun_path;
}

int openLogSocket(bool& failedAtConnect)
{
    failedAtConnect = false;
    // Non-blocking from its creation, so that a stalled daemon never blocks
    // the logging thread; while no daemon listens, every record pays for
    // this attempt, so it takes no system call that it can spare.
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0) {
        return -errno;
    }
    if (overrideTooLong) {
        failedAtConnect = true;
        close(fd);
        return -ENAMETOOLONG;
    }
    if (connect(fd, reinterpret_cast<const sockaddr*>(&logAddress), sizeof(logAddress)) < 0) {
        failedAtConnect = true;
        return closeWithError(fd);
    }
    return fd;
}

} // namespace logwriter
} // namespace kvo
} // namespace velmo
