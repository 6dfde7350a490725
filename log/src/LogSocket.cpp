#include "LogSocket.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace log {

namespace {

int closeWithError(int fd)
{
    const int error = errno;
    close(fd);
    return -error;
}

} // namespace

int openLogSocket(bool& failedAtConnect)
{
    failedAtConnect = false;
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        return -errno;
    }
    // A stalled daemon must never block the logging thread.
    const int flags = fcntl(fd, F_GETFL);
    if (flags < 0 || fcntl(fd, F_SETFL, flags | O_NONBLOCK) < 0) {
        return closeWithError(fd);
    }

    sockaddr_un address;
    std::memset(&address, 0, sizeof(address));
    address.sun_family = AF_UNIX;
    static_assert(sizeof(AKVO_LOGDW_PATH) <= sizeof(address.sun_path), "log socket path too long");
    std::memcpy(address.sun_path, AKVO_LOGDW_PATH, sizeof(AKVO_LOGDW_PATH));
    if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) < 0) {
        failedAtConnect = true;
        return closeWithError(fd);
    }
    return fd;
}

} // namespace log
} // namespace kvo
} // namespace velmo
