#include "velmo/kvo/comms/Client.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace comms {

using velmo::utilities::result::ErrnoTrait;
using velmo::utilities::result::Result;

const char* Client::ResultTrait::toString(ResultCode code)
{
    switch (code) {
    case Success:
        return "Success";
    case UnknownError:
        return "Unknown error";
    case ConnectionFailed:
        return "Connection has failed";
    }
    return "Invalid error (Unreachable)";
}

Client::ClientResult Client::connectUnixServer(const char* path, Link*& link)
{
    link = nullptr;
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (fd < 0) {
        return ClientResult(ConnectionFailed) << Result<ErrnoTrait>(errno);
    }
    sockaddr_un address;
    address.sun_family = AF_UNIX;
    // A path of sizeof(sun_path) characters or more is cut without a
    // terminator, and the full structure size is passed: both are intended.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wstringop-truncation"
#endif
    std::strncpy(address.sun_path, path, sizeof(address.sun_path));
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        ::close(fd);
        const int error = errno;
        return ClientResult(ConnectionFailed) << "Unable to connect to " << path << Result<ErrnoTrait>(error);
    }
    link = new Link(fd);
    return ClientResult::success();
}

Client::ClientResult Client::connectTcpServer(const char* ip, int port, Link*& link)
{
    link = nullptr;
    // Zero-filled so that an ip that inet_pton does not parse (it returns 0,
    // which is not treated as a failure) leaves a defined address.
    sockaddr_in address;
    std::memset(&address, 0, sizeof(address));
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    if (::inet_pton(AF_INET, ip, &address.sin_addr) < 0) {
        return ClientResult(ConnectionFailed) << "Bad server IP";
    }
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0) {
        return ClientResult(ConnectionFailed)
               << "Unable to create socket to " << ip << ":" << port << Result<ErrnoTrait>(errno);
    }
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        ::close(fd);
        const int error = errno;
        return ClientResult(ConnectionFailed)
               << "Unable to connect to " << ip << ":" << port << Result<ErrnoTrait>(error);
    }
    link = new Link(fd);
    return ClientResult::success();
}

} // namespace comms
} // namespace kvo
} // namespace velmo
