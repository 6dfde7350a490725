#ifndef AKVO_TESTS_SUPPORT_UNIXSOCKET_H
#define AKVO_TESTS_SUPPORT_UNIXSOCKET_H

#include <cerrno>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace akvo {
namespace test {

// The address of the Unix-domain socket at `path`: its first 108 bytes, which
// fill the whole sun_path without a terminator when there are that many.
inline sockaddr_un unixAddress(const std::string& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path));
    return address;
}

// A new Unix-domain socket of `type` (SOCK_STREAM, SOCK_DGRAM) on which
// `operation`, bind or connect, succeeded for `path`; -1 with errno set when
// either step failed.
inline int unixSocket(int type, const std::string& path, int (*operation)(int, const sockaddr*, socklen_t))
{
    const int fd = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    const sockaddr_un address = unixAddress(path);
    if (fd >= 0 && operation(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        const int error = errno;
        close(fd);
        errno = error;
        return -1;
    }
    return fd;
}

// Bound, but not listening yet.
inline int boundUnixSocket(int type, const std::string& path)
{
    return unixSocket(type, path, ::bind);
}

inline int listeningUnixSocket(const std::string& path, int backlog = 128)
{
    const int fd = boundUnixSocket(SOCK_STREAM, path);
    if (fd >= 0 && listen(fd, backlog) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

inline int connectedUnixSocket(const std::string& path)
{
    return unixSocket(SOCK_STREAM, path, ::connect);
}

} // namespace test
} // namespace akvo

#endif
