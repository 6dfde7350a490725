#ifndef AKVO_TESTS_SUPPORT_SIMULATOR_H
#define AKVO_TESTS_SUPPORT_SIMULATOR_H

#include "ProgramRun.h"
#include "TempDir.h"

#include <csignal>
#include <string>
#include <sys/types.h>
#include <unistd.h>
#include <vector>

namespace akvo {
namespace test {

// Path of the akvo-lipsync-sim executable built with the tests.
const char* simulatorExecutable();

// The engine simulator as a child process, serving on a socket in a fresh
// temporary folder. Construction returns once the simulator said it listens,
// or fails the test after 10 s.
class SimulatorProcess
{
public:
    explicit SimulatorProcess(const std::vector<std::string>& extraArgs = {});

    const std::string& socketPath() const { return _socketPath; }
    pid_t pid() const { return _program.pid(); }
    // Sends `signal` (SIGKILL after 10 s) and returns the wait status.
    int stop(int signal = SIGTERM) { return _program.stop(signal); }
    // What the simulator wrote on standard error so far.
    std::string errorOutput() const { return _program.errorOutput(); }

private:
    TempDir _folder;
    std::string _socketPath;
    BackgroundProgram _program;
};

// A client socket for talking bytes to a server; each read waits at most 10 s.
class RawClient
{
public:
    explicit RawClient(const std::string& socketPath);
    ~RawClient() { close(_fd); }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    int fd() const { return _fd; }
    bool write(const std::string& bytes);
    // Reads until a whole message (the text before "\n\n") is there; false on end of stream or error.
    bool readMessage(std::string& message);
    // Reads until the server closes (failing the test if it does not); returns
    // what arrived besides the messages already read.
    std::string readUntilClosed();

private:
    bool readMore();

    int _fd;
    std::string _buffer;
    bool _closedByPeer = false;
};

// Sends `bytes` on a new connection, shuts its sending side and returns all
// that the server sent before it closed the connection.
std::string serverReply(const std::string& socketPath, const std::string& bytes);

} // namespace test
} // namespace akvo

#endif
