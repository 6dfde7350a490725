#include "LogListener.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace logcat {

namespace {

// Far above the largest record a writer sends (11 + 4076 bytes, a little more
// on a resend after reconnecting).
constexpr size_t receiveBufferSize = 65536;

} // namespace

LogListener::LogListener(const StopSignals& signals) : _signals(signals), _fd(-1) {}

LogListener::~LogListener()
{
    if (_fd < 0) {
        return;
    }
    close(_fd);
    struct stat status = {};
    if (lstat(_path.c_str(), &status) == 0 && status.st_dev == _device && status.st_ino == _inode) {
        unlink(_path.c_str());
    }
}

LogListener::BindOutcome LogListener::bind(const std::string& path, std::string& error)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof(address.sun_path)) {
        error = "socket path must have 1 to " + std::to_string(sizeof(address.sun_path) - 1) + " characters";
        return BindOutcome::Refused;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size());
    const BindOutcome cleared = clearPath(path, error);
    if (cleared != BindOutcome::Bound) {
        return cleared;
    }
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        error = std::string("cannot create a socket: ") + std::strerror(errno);
        return BindOutcome::Failed;
    }
    // A listener that appeared since the check makes bind fail with EADDRINUSE
    // rather than lose its path.
    struct stat status = {};
    if (::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) < 0 ||
        lstat(path.c_str(), &status) != 0) {
        error = "cannot bind " + path + ": " + std::strerror(errno);
        close(fd);
        return BindOutcome::Refused;
    }
    _fd = fd;
    _path = path;
    _device = status.st_dev;
    _inode = status.st_ino;
    return BindOutcome::Bound;
}

LogListener::BindOutcome LogListener::clearPath(const std::string& path, std::string& error)
{
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0) {
        return BindOutcome::Bound;
    }
    if (!S_ISSOCK(status.st_mode)) {
        error = "path exists and is not a socket: " + path;
        return BindOutcome::Refused;
    }
    // Connecting succeeds only while some process has the path bound; a socket
    // file whose owner is gone refuses. A stream server there is just as live.
    const int probe = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (probe < 0) {
        error = std::string("cannot create a socket: ") + std::strerror(errno);
        return BindOutcome::Failed;
    }
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size());
    const int connected = connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
    const int connectError = errno;
    close(probe);
    if (connected == 0 || connectError == EPROTOTYPE) {
        error = "path in use by another listener: " + path;
        return BindOutcome::Refused;
    }
    if (connectError != ECONNREFUSED) {
        error = "cannot check " + path + ": " + std::strerror(connectError);
        return BindOutcome::Refused;
    }
    if (unlink(path.c_str()) != 0) {
        error = "cannot remove the stale socket " + path + ": " + std::strerror(errno);
        return BindOutcome::Refused;
    }
    return BindOutcome::Bound;
}

LogListener::Outcome LogListener::receive(std::vector<uint8_t>& datagram, size_t& size, std::string& error)
{
    datagram.resize(receiveBufferSize);
    pollfd entry = {_fd, POLLIN, 0};
    while (!_signals.stopRequested()) {
        if (ppoll(&entry, 1, nullptr, _signals.waitMask()) < 0) {
            if (errno == EINTR) {
                continue;
            }
            error = std::string("cannot wait for records: ") + std::strerror(errno);
            return Outcome::Failed;
        }
        const ssize_t received = recv(_fd, datagram.data(), datagram.size(), MSG_TRUNC | MSG_DONTWAIT);
        if (received < 0) {
            if (errno == EAGAIN || errno == EINTR) {
                continue;
            }
            error = std::string("cannot receive: ") + std::strerror(errno);
            return Outcome::Failed;
        }
        size = static_cast<size_t>(received);
        if (size > datagram.size()) {
            return Outcome::Oversized;
        }
        datagram.resize(size);
        return Outcome::Datagram;
    }
    return Outcome::Stopped;
}

} // namespace logcat
} // namespace kvo
} // namespace velmo
