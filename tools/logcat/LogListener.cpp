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

// One datagram into `datagram` without waiting, and its sender, zeros where
// the kernel gave no credentials. Returns the datagram's whole size, even
// beyond the buffer, or -1.
ssize_t receiveWithSender(int fd, std::vector<uint8_t>& datagram, ucred& sender)
{
    iovec buffer = {datagram.data(), datagram.size()};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred))];
    msghdr message = {};
    message.msg_iov = &buffer;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof(control);
    const ssize_t received = recvmsg(fd, &message, MSG_TRUNC | MSG_DONTWAIT);
    sender = ucred{0, 0, 0};
    const cmsghdr* header = received < 0 ? nullptr : CMSG_FIRSTHDR(&message);
    if (header != nullptr && header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_CREDENTIALS) {
        std::memcpy(&sender, CMSG_DATA(header), sizeof(sender));
    }
    return received;
}

} // namespace

tools::OwnedSocket::Outcome LogListener::bind(const std::string& path, std::string& error)
{
    const tools::OwnedSocket::Outcome outcome = _socket.bind(SOCK_DGRAM, path, error);
    const int on = 1;
    // Records of several processes arrive on one socket, and only the kernel
    // can tell who sent each.
    if (outcome == tools::OwnedSocket::Outcome::Bound &&
        setsockopt(_socket.fd(), SOL_SOCKET, SO_PASSCRED, &on, sizeof(on)) != 0) {
        error = std::string("cannot ask for the senders' credentials: ") + std::strerror(errno);
        return tools::OwnedSocket::Outcome::Failed;
    }
    return outcome;
}

LogListener::Outcome LogListener::receive(std::vector<uint8_t>& datagram, size_t& size, ucred& sender,
                                          std::string& error)
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
        const ssize_t received = receiveWithSender(_socket.fd(), datagram, sender);
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
