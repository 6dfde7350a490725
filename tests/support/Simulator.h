#ifndef AKVO_TESTS_SUPPORT_SIMULATOR_H
#define AKVO_TESTS_SUPPORT_SIMULATOR_H

#include <csignal>
#include <string>
#include <sys/types.h>
#include <vector>

namespace akvo {
namespace test {

// Path of the akvo-lipsync-sim executable built with the tests.
const char* simulatorExecutable();

// The engine simulator as a child process, serving on a socket in a fresh
// temporary folder. Construction returns once the simulator said it listens,
// and throws (failing the test) if it does not within 10 s; its standard
// error goes to a file in that folder (see errorOutput).
class SimulatorProcess
{
public:
    explicit SimulatorProcess(const std::vector<std::string>& extraArgs = {});
    // Serves on a path of the caller's choosing instead.
    SimulatorProcess(const std::string& socketPath, const std::vector<std::string>& extraArgs);
    // Stops the process with SIGTERM (SIGKILL if it lingers), then removes the folder.
    ~SimulatorProcess();
    SimulatorProcess(const SimulatorProcess&) = delete;
    SimulatorProcess& operator=(const SimulatorProcess&) = delete;

    const std::string& socketPath() const;
    pid_t pid() const;
    // Sends `signal`, waits for the process and returns its wait status; the destructor then only cleans up.
    int stop(int signal = SIGTERM);
    // What the simulator wrote on standard error so far.
    std::string errorOutput() const;

private:
    void start(const std::vector<std::string>& extraArgs);

    std::string _folder;
    std::string _socketPath;
    bool _ownSocketPath;
    pid_t _pid = -1;
};

// A plain client socket for talking bytes to a server, with guards (10 s)
// so that a server that never answers fails the test instead of hanging it.
class RawClient
{
public:
    explicit RawClient(const std::string& socketPath);
    ~RawClient();
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    bool connected() const { return _fd >= 0; }
    int fd() const { return _fd; }
    bool write(const std::string& bytes);
    // Reads until a whole message (the text before "\n\n") is there; false on end of stream or error.
    bool readMessage(std::string& message);
    // Reads until the server closes; returns what arrived besides the messages already read.
    std::string readUntilClosed();
    // True once the server was seen closing the connection.
    bool closedByPeer() const { return _closedByPeer; }
    void close();

private:
    bool readMore();

    int _fd = -1;
    std::string _buffer;
    bool _closedByPeer = false;
};

} // namespace test
} // namespace akvo

#endif
