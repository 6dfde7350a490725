#include "LogListener.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>

namespace velmo {
namespace kvo {
namespace logcat {

namespace {

// Far above the largest record a writer sends (11 + 4076 bytes, a little more
// on a resend after reconnecting).
constexpr size_t receiveBufferSize = 65536;

} // namespace

LogListener::Outcome LogListener::receive(std::vector<uint8_t>& datagram, size_t& size, std::string& error)
{
    datagram.resize(receiveBufferSize);
    pollfd entry = {_socket.fd(), POLLIN, 0};
    while (!_signals.stopRequested()) {
        if (ppoll(&entry, 1, nullptr, _signals.waitMask()) < 0) {
            if (errno == EINTR) {
                continue;
            }
            error = std::string("cannot wait for records: ") + std::strerror(errno);
            return Outcome::Failed;
        }
        const ssize_t received =
            recv(_socket.fd(), datagram.data(), datagram.size(), MSG_TRUNC | MSG_DONTWAIT);
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
