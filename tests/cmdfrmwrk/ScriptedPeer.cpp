#include "ScriptedPeer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>

namespace akvo {
namespace test {

ScriptedPeer::ScriptedPeer(const std::vector<std::string>& replies) : _clientFd(-1), _peerFd(-1)
{
    int fds[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, fds) != 0) {
        ADD_FAILURE() << "socketpair failed, errno " << errno;
        return;
    }
    _clientFd = fds[0];
    _peerFd = fds[1];
    _thread = std::thread(&ScriptedPeer::run, this, replies);
}

ScriptedPeer::~ScriptedPeer()
{
    if (_thread.joinable()) {
        _thread.join();
    }
}

std::string ScriptedPeer::received()
{
    if (_thread.joinable()) {
        _thread.join();
    }
    return _received;
}

void ScriptedPeer::run(std::vector<std::string> replies)
{
    for (const std::string& reply : replies) {
        if (!readFrame()) {
            break;
        }
        std::string::size_type written = 0;
        while (written < reply.size()) {
            const ssize_t count =
                ::send(_peerFd, reply.data() + written, reply.size() - written, MSG_NOSIGNAL);
            if (count <= 0) {
                break;
            }
            written += static_cast<std::string::size_type>(count);
        }
    }
    ::close(_peerFd);
}

// Reads until the bytes received so far end with a frame marker, or the
// client hangs up.
bool ScriptedPeer::readFrame()
{
    char chunk[256];
    do {
        const ssize_t count = ::read(_peerFd, chunk, sizeof(chunk));
        if (count <= 0) {
            return false;
        }
        _received.append(chunk, static_cast<std::string::size_type>(count));
    } while (_received.size() < 2 || _received.compare(_received.size() - 2, 2, "\n\n") != 0);
    return true;
}

} // namespace test
} // namespace akvo
