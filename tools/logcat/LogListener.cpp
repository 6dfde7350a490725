#include "LogListener.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
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
    if (_fd >= 0) {
        close(_fd);
        unlink(_path.c_str());
    }
}

bool LogListener::bind(const std::string& path, std::string& error)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof(address.sun_path)) {
        error = "socket path must have 1 to " + std::to_string(sizeof(address.sun_path) - 1) + " characters";
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size());
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        error = std::string("cannot create a socket: ") + std::strerror(errno);
        return false;
    }
    unlink(path.c_str());
    if (::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) < 0) {
        error = "cannot bind " + path + ": " + std::strerror(errno);
        close(fd);
        return false;
    }
    _fd = fd;
    _path = path;
    return true;
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
