#include "ProgramRun.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace akvo {
namespace test {

ProgramOutput runProgram(const std::vector<std::string>& arguments, const std::string& input)
{
    int in[2];
    int out[2];
    int err[2];
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
        return ProgramOutput{-1, "", "pipe failed"};
    }
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(in[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        std::vector<char*> argv;
        for (const std::string& argument : arguments) {
            argv.push_back(const_cast<char*>(argument.c_str()));
        }
        argv.push_back(nullptr);
        execv(argv[0], argv.data());
        _exit(127);
    }
    close(in[0]);
    close(out[1]);
    close(err[1]);

    // Feeding the input and draining both outputs together keeps a chatty
    // program from blocking on a full pipe.
    size_t written = 0;
    int inFd = in[1];
    if (input.empty()) {
        close(inFd);
        inFd = -1;
    }
    ProgramOutput result{-1, "", ""};
    // A program that exits before reading all its input must not take the
    // test down with SIGPIPE.
    void (*previousSigpipe)(int) = std::signal(SIGPIPE, SIG_IGN);
    struct pollfd fds[3] = {{out[0], POLLIN, 0}, {err[0], POLLIN, 0}, {inFd, POLLOUT, 0}};
    while (fds[0].fd >= 0 || fds[1].fd >= 0) {
        if (poll(fds, 3, 30000) <= 0) {
            break;
        }
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd >= 0 && (fds[i].revents & (POLLIN | POLLHUP)) != 0) {
                char buffer[4096];
                const ssize_t count = read(fds[i].fd, buffer, sizeof(buffer));
                if (count > 0) {
                    (i == 0 ? result.standardOutput : result.standardError)
                        .append(buffer, static_cast<size_t>(count));
                } else {
                    close(fds[i].fd);
                    fds[i].fd = -1;
                }
            }
        }
        if (fds[2].fd >= 0 && (fds[2].revents & (POLLOUT | POLLERR)) != 0) {
            const ssize_t count = write(fds[2].fd, input.data() + written, input.size() - written);
            written += count > 0 ? static_cast<size_t>(count) : input.size();
            if (written >= input.size()) {
                close(fds[2].fd);
                fds[2].fd = -1;
            }
        }
    }
    for (int i = 0; i < 3; ++i) {
        if (fds[i].fd >= 0) {
            close(fds[i].fd);
        }
    }
    std::signal(SIGPIPE, previousSigpipe);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

} // namespace test
} // namespace akvo
