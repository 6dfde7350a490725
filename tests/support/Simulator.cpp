#include "Simulator.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace akvo {
namespace test {

namespace {

constexpr std::chrono::seconds guard{10};

int remainingMs(std::chrono::steady_clock::time_point deadline)
{
    auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

// Waits for the child within the guard; kills it if it does not end. Returns the wait status.
int reap(pid_t pid)
{
    auto deadline = std::chrono::steady_clock::now() + guard;
    int status = 0;
    while (::waitpid(pid, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, &status, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return status;
}

} // namespace

const char* simulatorExecutable()
{
    return AKVO_SIM_PATH;
}

SimulatorProcess::SimulatorProcess(const std::vector<std::string>& extraArgs) : _ownSocketPath(true)
{
    start(extraArgs);
}

SimulatorProcess::SimulatorProcess(const std::string& socketPath, const std::vector<std::string>& extraArgs)
    : _socketPath(socketPath), _ownSocketPath(false)
{
    start(extraArgs);
}

void SimulatorProcess::start(const std::vector<std::string>& extraArgs)
{
    char folder[] = "/tmp/akvo-sim-XXXXXX";
    if (::mkdtemp(folder) == nullptr) {
        throw std::runtime_error(std::string("mkdtemp: ") + std::strerror(errno));
    }
    _folder = folder;
    if (_ownSocketPath) {
        _socketPath = _folder + "/lipsync.sock";
    }
    std::string errorPath = _folder + "/stderr.log";

    std::vector<std::string> args = {simulatorExecutable(), "--socket", _socketPath};
    args.insert(args.end(), extraArgs.begin(), extraArgs.end());
    std::vector<char*> argv;
    for (std::string& arg : args) {
        argv.push_back(&arg[0]);
    }
    argv.push_back(nullptr);

    int ready[2] = {-1, -1};
    int errorFd = ::open(errorPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (errorFd >= 0 && ::pipe2(ready, O_CLOEXEC) == 0) {
        _pid = ::fork();
    }
    if (_pid == 0) {
        ::dup2(ready[1], STDOUT_FILENO);
        ::dup2(errorFd, STDERR_FILENO);
        // The simulator must not hold the test's own sockets open, whatever their flags.
        ::close_range(3, ~0U, 0);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    int setupError = errno;
    ::close(ready[1]);
    ::close(errorFd);
    if (_pid < 0) {
        ::close(ready[0]);
        ::unlink(errorPath.c_str());
        ::rmdir(_folder.c_str());
        throw std::runtime_error(std::string("cannot start akvo-lipsync-sim: ") + std::strerror(setupError));
    }

    std::string expected = "akvo-lipsync-sim: listening on " + _socketPath + "\n";
    std::string received;
    auto deadline = std::chrono::steady_clock::now() + guard;
    while (received.find('\n') == std::string::npos) {
        pollfd pfd{ready[0], POLLIN, 0};
        if (::poll(&pfd, 1, remainingMs(deadline)) <= 0) {
            break;
        }
        char chunk[256];
        ssize_t got = ::read(ready[0], chunk, sizeof chunk);
        if (got <= 0) {
            break;
        }
        received.append(chunk, static_cast<std::size_t>(got));
    }
    ::close(ready[0]);
    if (received == expected) {
        return;
    }
    std::string failure =
        "akvo-lipsync-sim did not start: stdout '" + received + "', stderr '" + errorOutput() + "'";
    ::kill(_pid, SIGKILL);
    reap(_pid);
    _pid = -1;
    if (_ownSocketPath) {
        ::unlink(_socketPath.c_str());
    }
    ::unlink(errorPath.c_str());
    ::rmdir(_folder.c_str());
    throw std::runtime_error(failure);
}

SimulatorProcess::~SimulatorProcess()
{
    stop();
    if (_ownSocketPath) {
        ::unlink(_socketPath.c_str());
    }
    ::unlink((_folder + "/stderr.log").c_str());
    ::rmdir(_folder.c_str());
}

const std::string& SimulatorProcess::socketPath() const
{
    return _socketPath;
}

pid_t SimulatorProcess::pid() const
{
    return _pid;
}

int SimulatorProcess::stop(int signal)
{
    if (_pid <= 0) {
        return 0;
    }
    ::kill(_pid, signal);
    int status = reap(_pid);
    _pid = -1;
    return status;
}

std::string SimulatorProcess::errorOutput() const
{
    std::ifstream file(_folder + "/stderr.log");
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

RawClient::RawClient(const std::string& socketPath)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socketPath.size() >= sizeof address.sun_path) {
        return;
    }
    std::memcpy(address.sun_path, socketPath.c_str(), socketPath.size() + 1);
    _fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (_fd >= 0 && ::connect(_fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        close();
    }
}

RawClient::~RawClient()
{
    close();
}

bool RawClient::write(const std::string& bytes)
{
    std::size_t done = 0;
    while (_fd >= 0 && done < bytes.size()) {
        ssize_t sent = ::send(_fd, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
        if (sent < 0 && errno != EINTR) {
            return false;
        }
        done += sent > 0 ? static_cast<std::size_t>(sent) : 0;
    }
    return _fd >= 0;
}

bool RawClient::readMore()
{
    if (_fd < 0 || _closedByPeer) {
        return false;
    }
    pollfd pfd{_fd, POLLIN, 0};
    if (::poll(&pfd, 1, static_cast<int>(std::chrono::milliseconds(guard).count())) <= 0) {
        return false;
    }
    char chunk[4096];
    ssize_t got = ::read(_fd, chunk, sizeof chunk);
    if (got <= 0) {
        _closedByPeer = got == 0;
        return false;
    }
    _buffer.append(chunk, static_cast<std::size_t>(got));
    return true;
}

bool RawClient::readMessage(std::string& message)
{
    std::size_t end;
    while ((end = _buffer.find("\n\n")) == std::string::npos) {
        if (!readMore()) {
            return false;
        }
    }
    message = _buffer.substr(0, end);
    _buffer.erase(0, end + 2);
    return true;
}

std::string RawClient::readUntilClosed()
{
    while (readMore()) {
    }
    std::string rest;
    rest.swap(_buffer);
    return rest;
}

void RawClient::close()
{
    if (_fd >= 0) {
        ::close(_fd);
        _fd = -1;
    }
}

} // namespace test
} // namespace akvo
