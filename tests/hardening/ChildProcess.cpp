#include "ChildProcess.h"

#include "Sanitizers.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef AKVO_UNDER_ASAN
#include <sanitizer/lsan_interface.h>
#endif

namespace akvo {
namespace test {

namespace {

constexpr int guardMs = 20000;

void writeAll(int fd, const std::string& text)
{
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = write(fd, text.data() + done, text.size() - done);
        if (written < 0 && errno != EINTR) {
            return;
        }
        done += written > 0 ? static_cast<size_t>(written) : 0;
    }
}

std::string readAll(int fd)
{
    std::string text;
    char chunk[4096];
    ssize_t got;
    while ((got = read(fd, chunk, sizeof chunk)) > 0) {
        text.append(chunk, static_cast<size_t>(got));
    }
    return text;
}

// Reads the child's report until it exits; false if it outlives the guard.
bool readReport(int fd, std::string& report)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(guardMs);
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd entry = {fd, POLLIN, 0};
        if (left.count() <= 0 || poll(&entry, 1, static_cast<int>(left.count())) == 0) {
            return false;
        }
        char chunk[4096];
        const ssize_t got = read(fd, chunk, sizeof chunk);
        if (got == 0) {
            return true;
        }
        if (got > 0) {
            report.append(chunk, static_cast<size_t>(got));
        } else if (errno != EINTR) {
            return true;
        }
    }
}

} // namespace

bool ChildRun::exitedCleanly() const
{
    return started && !timedOut && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string ChildRun::describe() const
{
    std::string text;
    if (!started) {
        return "the child could not be started: " + errorOutput;
    }
    if (timedOut) {
        text = "the child hung and was killed";
    } else if (WIFSIGNALED(status)) {
        text = "the child died of signal " + std::to_string(WTERMSIG(status));
    } else {
        text = "the child exited with " + std::to_string(WEXITSTATUS(status));
    }
    return text + "; its standard error:\n" + errorOutput;
}

ChildRun runInChild(const std::function<std::string()>& body)
{
    ChildRun run;
    int reportPipe[2];
    if (pipe2(reportPipe, O_CLOEXEC) != 0) {
        run.errorOutput = "pipe2 failed";
        return run;
    }
    const int errorFd = memfd_create("akvo-child-stderr", MFD_CLOEXEC);
    std::fflush(stdout);
    std::fflush(stderr);
    const pid_t pid = fork();
    if (pid == 0) {
        close(reportPipe[0]);
        dup2(errorFd, STDERR_FILENO);
        writeAll(reportPipe[1], body());
#ifdef AKVO_UNDER_ASAN
        __lsan_do_leak_check();
#endif
        _exit(0);
    }
    close(reportPipe[1]);
    if (pid < 0) {
        run.errorOutput = "fork failed";
    } else {
        run.started = true;
        run.timedOut = !readReport(reportPipe[0], run.report);
        if (run.timedOut) {
            kill(pid, SIGKILL);
        }
        waitpid(pid, &run.status, 0);
    }
    close(reportPipe[0]);
    if (errorFd >= 0) {
        lseek(errorFd, 0, SEEK_SET);
        run.errorOutput += readAll(errorFd);
        close(errorFd);
    }
    return run;
}

} // namespace test
} // namespace akvo
