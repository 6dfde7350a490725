#ifndef VELMO_KVO_SIM_LISTENINGSOCKET_H
#define VELMO_KVO_SIM_LISTENINGSOCKET_H

#include <string>
#include <sys/types.h>

namespace velmo {
namespace kvo {
namespace sim {

// The server's Unix stream socket. A socket file left behind by a server
// that died is replaced; one that a live server answers on is not.
class ListeningSocket
{
public:
    ListeningSocket() = default;
    // Closes the socket and removes its file, unless another server has put its own there since.
    ~ListeningSocket();
    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;

    enum class Outcome
    {
        Listening,
        BadPath,      // the user's path cannot be used
        SystemFailure // the system refused a socket
    };
    // On failure `error` holds a one-line reason.
    Outcome open(const std::string& path, std::string& error);
    int fd() const { return _fd; }

private:
    Outcome clearPath(std::string& error);

    std::string _path;
    int _fd = -1;
    dev_t _device = 0;
    ino_t _inode = 0;
};

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
