#include "ListeningSocket.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>

namespace velmo {
namespace kvo {
namespace sim {

tools::OwnedSocket::Outcome ListeningSocket::open(const std::string& path, std::string& error)
{
    const tools::OwnedSocket::Outcome bound = _socket.bind(SOCK_STREAM, path, error);
    if (bound == tools::OwnedSocket::Outcome::Bound && listen(_socket.fd(), SOMAXCONN) != 0) {
        error = "cannot listen on " + path + ": " + std::strerror(errno);
        return tools::OwnedSocket::Outcome::Failed;
    }
    return bound;
}

} // namespace sim
} // namespace kvo
} // namespace velmo
