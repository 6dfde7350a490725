#include "OwnedSocket.h"

#include <cerrno>
#include <cstring>
#include <optional>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace tools {

namespace {

using Outcome = OwnedSocket::Outcome;

std::string systemError(const std::string& what, int error)
{
    return what + ": " + std::strerror(error);
}

// Non-blocking, since the tools wait for their sockets in poll.
int newSocket(int type)
{
    return socket(AF_UNIX, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
}

// Why the path of `address` cannot be bound, or nothing once it is free.
std::optional<Outcome> clearPath(int type, const sockaddr_un& address, std::string& error)
{
    const std::string path = address.sun_path;
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    if (!S_ISSOCK(status.st_mode)) {
        error = "path exists and is not a socket: " + path;
        return Outcome::Refused;
    }
    // Connecting succeeds only while some process has the path bound; a socket
    // file whose owner is gone refuses. The probe must not block, so a stream
    // server with a full backlog (EAGAIN) counts as live, and so does a socket
    // of the other type (EPROTOTYPE).
    const int probe = newSocket(type);
    if (probe < 0) {
        error = systemError("cannot create a socket", errno);
        return Outcome::Failed;
    }
    const int connected = connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    const int connectError = errno;
    close(probe);
    if (connected == 0 || connectError == EAGAIN || connectError == EPROTOTYPE) {
        error = "path in use by another process: " + path;
        return Outcome::Refused;
    }
    if (connectError != ECONNREFUSED) {
        error = systemError("cannot check " + path, connectError);
        return Outcome::Refused;
    }
    if (unlink(path.c_str()) != 0) {
        error = systemError("cannot remove the stale socket " + path, errno);
        return Outcome::Refused;
    }
    return std::nullopt;
}

} // namespace

OwnedSocket::~OwnedSocket()
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

Outcome OwnedSocket::bind(int type, const std::string& path, std::string& error)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        error = "socket path must be 1 to " + std::to_string(sizeof address.sun_path - 1) +
                " bytes long: " + path;
        return Outcome::Refused;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size());
    if (const std::optional<Outcome> refused = clearPath(type, address, error)) {
        return *refused;
    }
    const int fd = newSocket(type);
    if (fd < 0) {
        error = systemError("cannot create a socket", errno);
        return Outcome::Failed;
    }
    // An owner that appeared since the probe makes bind fail with EADDRINUSE
    // rather than lose its path.
    struct stat status = {};
    if (::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        lstat(path.c_str(), &status) != 0) {
        error = systemError("cannot bind " + path, errno);
        close(fd);
        return Outcome::Refused;
    }
    _fd = fd;
    _path = path;
    _device = status.st_dev;
    _inode = status.st_ino;
    return Outcome::Bound;
}

} // namespace tools
} // namespace kvo
} // namespace velmo
