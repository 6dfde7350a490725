#ifndef VELMO_KVO_SIM_LISTENINGSOCKET_H
#define VELMO_KVO_SIM_LISTENINGSOCKET_H

#include "OwnedSocket.h"

#include <string>

namespace velmo {
namespace kvo {
namespace sim {

// The server's Unix stream socket.
class ListeningSocket
{
public:
    // On failure `error` holds a one-line reason.
    tools::OwnedSocket::Outcome open(const std::string& path, std::string& error);
    int fd() const { return _socket.fd(); }

private:
    tools::OwnedSocket _socket;
};

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
