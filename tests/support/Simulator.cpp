#include "Simulator.h"

#include "ProgramRun.h"
#include "UnixSocket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace akvo {
namespace test {

static constexpr int guardMs = 10000;

const char* simulatorExecutable()
{
    return AKVO_SIM_PATH;
}

namespace {

std::vector<std::string> simulatorCommand(const std::string& socketPath,
                                          const std::vector<std::string>& extraArgs)
{
    std::vector<std::string> command = {simulatorExecutable(), "--socket", socketPath};
    command.insert(command.end(), extraArgs.begin(), extraArgs.end());
    return command;
}

} // namespace

SimulatorProcess::SimulatorProcess(const std::vector<std::string>& extraArgs)
    : _socketPath(_folder.file("lipsync.sock")), _program(simulatorCommand(_socketPath, extraArgs))
{
    EXPECT_EQ("akvo-lipsync-sim: listening on " + _socketPath + "\n", _program.outputUntil("\n"))
        << "akvo-lipsync-sim did not start; its standard error: " << errorOutput();
}

RawClient::RawClient(const std::string& socketPath) : _fd(connectedUnixSocket(socketPath)) {}

bool RawClient::write(const std::string& bytes)
{
    return send(_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

bool RawClient::readMore()
{
    pollfd entry = {_fd, POLLIN, 0};
    char chunk[4096];
    const ssize_t count =
        !_closedByPeer && poll(&entry, 1, guardMs) == 1 ? read(_fd, chunk, sizeof(chunk)) : -1;
    _closedByPeer = _closedByPeer || count == 0;
    _buffer.append(chunk, static_cast<size_t>(std::max<ssize_t>(count, 0)));
    return count > 0;
}

bool RawClient::readMessage(std::string& message)
{
    size_t end;
    while ((end = _buffer.find("\n\n")) == std::string::npos) {
        if (!readMore()) {
            return false;
        }
    }
    message = _buffer.substr(0, end);
    _buffer.erase(0, end + 2);
    return true;
}

std::string serverReply(const std::string& socketPath, const std::string& bytes)
{
    RawClient client(socketPath);
    EXPECT_TRUE(client.write(bytes));
    shutdown(client.fd(), SHUT_WR);
    return client.readUntilClosed();
}

std::string RawClient::readUntilClosed()
{
    while (readMore()) {
    }
    EXPECT_TRUE(_closedByPeer) << "the server kept the connection open";
    std::string rest;
    rest.swap(_buffer);
    return rest;
}

} // namespace test
} // namespace akvo
