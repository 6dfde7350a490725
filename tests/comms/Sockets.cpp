#include "Sockets.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

namespace akvo {
namespace test {

namespace {

void require(bool condition, const char* what)
{
    if (!condition) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

sockaddr_in loopback(uint16_t port)
{
    sockaddr_in address;
    std::memset(&address, 0, sizeof(address));
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

sockaddr_un unixAddress(const std::string& path)
{
    sockaddr_un address;
    std::memset(&address, 0, sizeof(address));
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), std::min(path.size(), sizeof(address.sun_path)));
    return address;
}

UniqueFd boundTcpSocket(uint16_t& port)
{
    UniqueFd fd(socket(AF_INET, SOCK_STREAM, 0));
    require(fd.get() >= 0, "socket");
    sockaddr_in address = loopback(0);
    require(bind(fd.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0, "bind");
    socklen_t length = sizeof(address);
    require(getsockname(fd.get(), reinterpret_cast<sockaddr*>(&address), &length) == 0, "getsockname");
    port = ntohs(address.sin_port);
    return fd;
}

} // namespace

UniqueFd& UniqueFd::operator=(UniqueFd&& other) noexcept
{
    if (this != &other) {
        reset();
        _fd = other.release();
    }
    return *this;
}

int UniqueFd::release()
{
    const int fd = _fd;
    _fd = -1;
    return fd;
}

void UniqueFd::reset()
{
    if (_fd >= 0) {
        close(_fd);
        _fd = -1;
    }
}

const char* transportName(Transport transport)
{
    switch (transport) {
    case Transport::SocketPair:
        return "SocketPair";
    case Transport::Unix:
        return "Unix";
    case Transport::Tcp:
        return "Tcp";
    }
    return "Unknown";
}

ConnectedPair connectedPair(Transport transport, const std::string& unixPath)
{
    ConnectedPair pair;
    if (transport == Transport::SocketPair) {
        int fds[2];
        require(socketpair(AF_UNIX, SOCK_STREAM, 0, fds) == 0, "socketpair");
        pair.local = UniqueFd(fds[0]);
        pair.peer = UniqueFd(fds[1]);
        return pair;
    }
    if (transport == Transport::Unix) {
        UniqueFd listener = listenUnix(unixPath);
        pair.local = UniqueFd(socket(AF_UNIX, SOCK_STREAM, 0));
        require(pair.local.get() >= 0, "socket");
        sockaddr_un address = unixAddress(unixPath);
        require(connect(pair.local.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0,
                "connect");
        pair.peer = acceptOne(listener.get());
        unlink(unixPath.c_str());
        return pair;
    }
    uint16_t port = 0;
    UniqueFd listener = listenTcp(port);
    pair.local = UniqueFd(socket(AF_INET, SOCK_STREAM, 0));
    require(pair.local.get() >= 0, "socket");
    sockaddr_in address = loopback(port);
    require(connect(pair.local.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0,
            "connect");
    pair.peer = acceptOne(listener.get());
    return pair;
}

UniqueFd bindUnix(const std::string& path)
{
    UniqueFd fd(socket(AF_UNIX, SOCK_STREAM, 0));
    require(fd.get() >= 0, "socket");
    sockaddr_un address = unixAddress(path);
    require(bind(fd.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0, "bind");
    return fd;
}

UniqueFd listenUnix(const std::string& path)
{
    UniqueFd fd = bindUnix(path);
    require(listen(fd.get(), 128) == 0, "listen");
    return fd;
}

UniqueFd listenTcp(uint16_t& port)
{
    UniqueFd fd = boundTcpSocket(port);
    require(listen(fd.get(), 128) == 0, "listen");
    return fd;
}

UniqueFd reservedTcpPort(uint16_t& port)
{
    return boundTcpSocket(port);
}

UniqueFd acceptOne(int listener)
{
    UniqueFd fd(accept(listener, nullptr, nullptr));
    require(fd.get() >= 0, "accept");
    return fd;
}

UniqueFd unconnectedSocket(int domain)
{
    UniqueFd fd(socket(domain, SOCK_STREAM, 0));
    require(fd.get() >= 0, "socket");
    return fd;
}

void writeAll(int fd, const std::string& bytes)
{
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = write(fd, bytes.data() + written, bytes.size() - written);
        require(count >= 0 || errno == EINTR, "write");
        if (count > 0) {
            written += static_cast<std::size_t>(count);
        }
    }
}

std::string readExactly(int fd, std::size_t size)
{
    std::string bytes(size, '\0');
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = read(fd, &bytes[done], size - done);
        require(count >= 0 || errno == EINTR, "read");
        if (count == 0) {
            bytes.resize(done);
            break;
        }
        if (count > 0) {
            done += static_cast<std::size_t>(count);
        }
    }
    return bytes;
}

std::size_t pendingBytes(int fd)
{
    int count = 0;
    require(ioctl(fd, FIONREAD, &count) == 0, "ioctl(FIONREAD)");
    return static_cast<std::size_t>(count);
}

bool waitReadable(int fd)
{
    pollfd entry = {fd, POLLIN, 0};
    return poll(&entry, 1, 5000) == 1;
}

bool isOpen(int fd)
{
    return fcntl(fd, F_GETFD) != -1;
}

SigpipeIgnored::SigpipeIgnored()
{
    struct sigaction ignore;
    std::memset(&ignore, 0, sizeof(ignore));
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignore, &_previous);
}

SigpipeIgnored::~SigpipeIgnored()
{
    sigaction(SIGPIPE, &_previous, nullptr);
}

} // namespace test
} // namespace akvo
