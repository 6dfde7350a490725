#include "LogcatProcess.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace akvo {
namespace test {

LogcatProcess::LogcatProcess(const std::vector<std::string>& arguments) : _pid(-1)
{
    std::vector<std::string> argumentStrings = {AKVO_LOGCAT_PATH};
    argumentStrings.insert(argumentStrings.end(), arguments.begin(), arguments.end());
    std::vector<std::string> environmentStrings = {"TZ=UTC"};
    for (char** entry = environ; *entry != nullptr; ++entry) {
        if (std::strncmp(*entry, "TZ=", 3) != 0) {
            environmentStrings.push_back(*entry);
        }
    }
    std::vector<char*> argv;
    for (std::string& argument : argumentStrings) {
        argv.push_back(&argument[0]);
    }
    argv.push_back(nullptr);
    std::vector<char*> envp;
    for (std::string& entry : environmentStrings) {
        envp.push_back(&entry[0]);
    }
    envp.push_back(nullptr);

    int output[2];
    int error[2];
    if (pipe2(output, O_CLOEXEC) != 0 || pipe2(error, O_CLOEXEC) != 0) {
        ADD_FAILURE() << "pipe: " << std::strerror(errno);
        return;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, error[1], STDERR_FILENO);
    const int spawned = posix_spawn(&_pid, argv[0], &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    close(output[1]);
    close(error[1]);
    _output.fd = output[0];
    _error.fd = error[0];
    if (spawned != 0) {
        _pid = -1;
        ADD_FAILURE() << "cannot start " << AKVO_LOGCAT_PATH << ": " << std::strerror(spawned);
    }
}

LogcatProcess::~LogcatProcess()
{
    if (_pid > 0) {
        stop(SIGKILL);
    }
    close(_output.fd);
    close(_error.fd);
}

std::optional<std::string> LogcatProcess::outputLine(std::chrono::milliseconds timeout)
{
    return _output.next(timeout);
}

std::optional<std::string> LogcatProcess::errorLine(std::chrono::milliseconds timeout)
{
    return _error.next(timeout);
}

int LogcatProcess::stop(int signal)
{
    kill(_pid, signal);
    return wait();
}

int LogcatProcess::wait()
{
    int status = 0;
    waitpid(_pid, &status, 0);
    _pid = -1;
    return status;
}

std::optional<std::string> LogcatProcess::LineReader::next(std::chrono::milliseconds timeout)
{
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        const size_t end = pending.find('\n');
        if (end != std::string::npos) {
            std::string line = pending.substr(0, end);
            pending.erase(0, end + 1);
            return line;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd entry = {fd, POLLIN, 0};
        if (left.count() <= 0 || poll(&entry, 1, static_cast<int>(left.count())) != 1) {
            return std::nullopt;
        }
        char buffer[4096];
        const ssize_t count = read(fd, buffer, sizeof(buffer));
        if (count <= 0) {
            return std::nullopt;
        }
        pending.append(buffer, static_cast<size_t>(count));
    }
}

} // namespace test
} // namespace akvo
