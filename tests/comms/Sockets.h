#ifndef AKVO_TESTS_COMMS_SOCKETS_H
#define AKVO_TESTS_COMMS_SOCKETS_H

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <string>

namespace akvo {
namespace test {

// Closes the descriptor it holds unless release() handed it to a Link.
class UniqueFd
{
public:
    explicit UniqueFd(int fd = -1) : _fd(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : _fd(other.release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept;
    ~UniqueFd() { reset(); }

    int get() const { return _fd; }
    int release();
    void reset();

private:
    int _fd;
};

enum class Transport
{
    SocketPair,
    Unix,
    Tcp
};

const char* transportName(Transport transport);

struct ConnectedPair
{
    UniqueFd local;
    UniqueFd peer;
};

// `unixPath` is used only for Transport::Unix; the listener is gone once the
// pair is returned.
ConnectedPair connectedPair(Transport transport, const std::string& unixPath);

// Both bind with the whole sun_path filled from `path` (cut at 108 bytes; a
// name of exactly 108 bytes carries no terminator) and the full address size.
UniqueFd bindUnix(const std::string& path);
UniqueFd listenUnix(const std::string& path);
UniqueFd listenTcp(uint16_t& port);
// A bound TCP port that does not listen, so connecting to it is refused.
UniqueFd reservedTcpPort(uint16_t& port);
UniqueFd acceptOne(int listener);
UniqueFd unconnectedSocket(int domain);

void writeAll(int fd, const std::string& bytes);
std::string readExactly(int fd, std::size_t size);
// Bytes queued for reading on `fd`.
std::size_t pendingBytes(int fd);
// Waits up to five seconds for `fd` to become readable or to report an error.
bool waitReadable(int fd);
bool isOpen(int fd);

// Ignores SIGPIPE while alive, so that writes to a vanished peer fail with
// EPIPE instead of killing the test process.
class SigpipeIgnored
{
public:
    SigpipeIgnored();
    ~SigpipeIgnored();

    SigpipeIgnored(const SigpipeIgnored&) = delete;
    SigpipeIgnored& operator=(const SigpipeIgnored&) = delete;

private:
    struct sigaction _previous;
};

} // namespace test
} // namespace akvo

#endif
