#include "ListeningSocket.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace sim {

namespace {

bool fillAddress(const std::string& path, sockaddr_un& address)
{
    address = sockaddr_un{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

std::string systemError(const std::string& what)
{
    return what + ": " + std::strerror(errno);
}

} // namespace

ListeningSocket::~ListeningSocket()
{
    if (_fd < 0) {
        return;
    }
    ::close(_fd);
    struct stat status
    {
    };
    if (::lstat(_path.c_str(), &status) == 0 && status.st_dev == _device && status.st_ino == _inode) {
        ::unlink(_path.c_str());
    }
}

ListeningSocket::Outcome ListeningSocket::open(const std::string& path, std::string& error)
{
    sockaddr_un address;
    if (!fillAddress(path, address)) {
        error = "socket path must be 1 to " + std::to_string(sizeof address.sun_path - 1) +
                " bytes long: " + path;
        return Outcome::BadPath;
    }
    _path = path;
    Outcome cleared = clearPath(error);
    if (cleared != Outcome::Listening) {
        return cleared;
    }
    int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        error = systemError("cannot create a socket");
        return Outcome::SystemFailure;
    }
    if (::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        error = systemError("cannot bind " + path);
        ::close(fd);
        return Outcome::BadPath;
    }
    struct stat status
    {
    };
    if (::listen(fd, SOMAXCONN) != 0 || ::lstat(path.c_str(), &status) != 0) {
        error = systemError("cannot listen on " + path);
        ::close(fd);
        ::unlink(path.c_str());
        return Outcome::SystemFailure;
    }
    _fd = fd;
    _device = status.st_dev;
    _inode = status.st_ino;
    return Outcome::Listening;
}

ListeningSocket::Outcome ListeningSocket::clearPath(std::string& error)
{
    struct stat status
    {
    };
    if (::lstat(_path.c_str(), &status) != 0) {
        return Outcome::Listening;
    }
    if (!S_ISSOCK(status.st_mode)) {
        error = "path exists and is not a socket: " + _path;
        return Outcome::BadPath;
    }
    // A socket file that nobody answers on is what a server that died leaves behind. The probe
    // does not block, so a live server with a full backlog (EAGAIN) counts as live.
    int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (probe < 0) {
        error = systemError("cannot create a socket");
        return Outcome::SystemFailure;
    }
    sockaddr_un address;
    fillAddress(_path, address);
    int connected = ::connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    int connectError = errno;
    ::close(probe);
    if (connected == 0 || connectError == EAGAIN) {
        error = "path in use: " + _path;
        return Outcome::BadPath;
    }
    if (connectError != ECONNREFUSED) {
        errno = connectError;
        error = systemError("cannot check " + _path);
        return Outcome::BadPath;
    }
    if (::unlink(_path.c_str()) != 0) {
        error = systemError("cannot remove the stale socket " + _path);
        return Outcome::BadPath;
    }
    return Outcome::Listening;
}

} // namespace sim
} // namespace kvo
} // namespace velmo
