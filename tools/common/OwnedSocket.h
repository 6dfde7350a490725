#ifndef VELMO_KVO_TOOLS_OWNEDSOCKET_H
#define VELMO_KVO_TOOLS_OWNEDSOCKET_H

#include <string>
#include <sys/types.h>

namespace velmo {
namespace kvo {
namespace tools {

// A Unix-domain socket bound at a path that it owns while it lives. A socket
// file that nobody serves any more, what a program that died leaves behind, is
// replaced; a live one, or a file that is no socket, is left alone. On
// destruction the file is removed only if it is still the one bound here.
class OwnedSocket
{
public:
    enum class Outcome
    {
        Bound,
        Refused, // the user's path cannot be used
        Failed   // the system refused a socket
    };

    OwnedSocket() = default;
    ~OwnedSocket();
    OwnedSocket(const OwnedSocket&) = delete;
    OwnedSocket& operator=(const OwnedSocket&) = delete;

    // Binds a new non-blocking socket of `type` (SOCK_STREAM, SOCK_DGRAM) at
    // `path`, once. On failure `error` holds a one-line reason.
    Outcome bind(int type, const std::string& path, std::string& error);
    int fd() const { return _fd; }

private:
    int _fd = -1;
    std::string _path;
    dev_t _device = 0;
    ino_t _inode = 0;
};

} // namespace tools
} // namespace kvo
} // namespace velmo

#endif
