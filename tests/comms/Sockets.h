#ifndef AKVO_TESTS_COMMS_SOCKETS_H
#define AKVO_TESTS_COMMS_SOCKETS_H

#include "ResultTexts.h"
#include "TempDir.h"
#include "UnixSocket.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace akvo {
namespace test {

// Closes its descriptor unless release() handed it to a Link.
struct UniqueFd
{
    explicit UniqueFd(int value = -1) : fd(value) {}
    UniqueFd(UniqueFd&& other) noexcept : fd(other.release()) {}
    ~UniqueFd() { reset(); }

    int get() const { return fd; }
    int release() { return std::exchange(fd, -1); }
    void reset()
    {
        if (fd >= 0) {
            ::close(release());
        }
    }

    int fd;
};

// A new socket connected to the address `listener` is bound to.
inline UniqueFd connectTo(int listener)
{
    sockaddr_storage address{};
    socklen_t length = sizeof(address);
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
    UniqueFd fd(socket(address.ss_family, SOCK_STREAM, 0));
    connect(fd.get(), reinterpret_cast<sockaddr*>(&address), length);
    return fd;
}

// A loopback port of the system's choice; one that is bound but not listening refuses connections.
inline UniqueFd tcpPort(uint16_t& port, bool listening)
{
    UniqueFd fd(socket(AF_INET, SOCK_STREAM, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    bind(fd.get(), reinterpret_cast<sockaddr*>(&address), length);
    getsockname(fd.get(), reinterpret_cast<sockaddr*>(&address), &length);
    if (listening) {
        listen(fd.get(), 128);
    }
    port = ntohs(address.sin_port);
    return fd;
}

inline UniqueFd acceptOne(int listener)
{
    return UniqueFd(accept(listener, nullptr, nullptr));
}

struct ConnectedPair
{
    UniqueFd local;
    UniqueFd peer;
};

// `kind` is "SocketPair", "Unix" (listening at `unixPath`) or "Tcp".
inline ConnectedPair connectedPair(const std::string& kind, const std::string& unixPath = "")
{
    if (kind == "SocketPair") {
        int fds[2];
        socketpair(AF_UNIX, SOCK_STREAM, 0, fds);
        return {UniqueFd(fds[0]), UniqueFd(fds[1])};
    }
    uint16_t port = 0;
    UniqueFd listener(kind == "Unix" ? listeningUnixSocket(unixPath) : tcpPort(port, true).release());
    UniqueFd local = connectTo(listener.get());
    return {std::move(local), acceptOne(listener.get())};
}

// A blocking stream socket takes the whole buffer in one call.
inline void writeAll(int fd, const std::string& bytes)
{
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()), write(fd, bytes.data(), bytes.size()));
}

// Stops early at the end of the stream.
inline std::string readExactly(int fd, std::size_t size)
{
    std::string bytes(size, '\0');
    std::size_t done = 0;
    for (ssize_t count = 1; done < size && count > 0; done += static_cast<std::size_t>(count)) {
        count = std::max<ssize_t>(0, read(fd, &bytes[done], size - done));
    }
    bytes.resize(done);
    return bytes;
}

// Bytes queued for reading on `fd`.
inline std::size_t pendingBytes(int fd)
{
    int count = 0;
    ioctl(fd, FIONREAD, &count);
    return static_cast<std::size_t>(count);
}

// Text made of letters in an order that shifts, so that lost or repeated pieces show.
inline std::string letters(std::size_t size)
{
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        text[i] = static_cast<char>('a' + (i * 7 + i / 26) % 26);
    }
    return text;
}

} // namespace test
} // namespace akvo

#endif
