#include "ProgramRun.h"

#include <csignal>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace akvo {
namespace test {

std::string fileText(int fd)
{
    std::string text;
    char buffer[4096];
    ssize_t count;
    for (off_t at = 0; (count = pread(fd, buffer, sizeof(buffer), at)) > 0; at += count) {
        text.append(buffer, static_cast<size_t>(count));
    }
    return text;
}

pid_t startProgram(const std::vector<std::string>& arguments, int in, int out, int err)
{
    std::vector<char*> argv;
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(in, STDIN_FILENO);
        dup2(out, STDOUT_FILENO);
        dup2(err, STDERR_FILENO);
        // The program must not hold the test's own sockets open, whatever their flags.
        close_range(3, ~0U, 0);
        execv(argv[0], argv.data());
        _exit(127);
    }
    return pid;
}

int reapWithin(pid_t pid, int timeoutMs)
{
    int status = 0;
    for (int step = 0; waitpid(pid, &status, WNOHANG) == 0; ++step) {
        if (step == timeoutMs / 5) {
            kill(pid, SIGKILL);
        }
        usleep(5000);
    }
    return status;
}

ProgramOutput runProgram(const std::vector<std::string>& arguments, const std::string& input)
{
    // Memory files instead of pipes: nothing to feed or drain while the program runs.
    const int in = memfd_create("stdin", MFD_CLOEXEC);
    const int out = memfd_create("stdout", MFD_CLOEXEC);
    const int err = memfd_create("stderr", MFD_CLOEXEC);
    ProgramOutput output{-1, "", "cannot prepare the input"};
    if (pwrite(in, input.data(), input.size(), 0) == static_cast<ssize_t>(input.size())) {
        const int status = reapWithin(startProgram(arguments, in, out, err), 30000);
        output = {WIFEXITED(status) ? WEXITSTATUS(status) : -1, fileText(out), fileText(err)};
    }
    close(in);
    close(out);
    close(err);
    return output;
}

BackgroundProgram::BackgroundProgram(const std::vector<std::string>& arguments, bool mergeErrors)
    : _output(memfd_create("stdout", MFD_CLOEXEC)),
      _errors(mergeErrors ? _output : memfd_create("stderr", MFD_CLOEXEC)),
      _pid(startProgram(arguments, STDIN_FILENO, _output, _errors))
{
}

BackgroundProgram::~BackgroundProgram()
{
    stop();
    if (_errors != _output) {
        close(_errors);
    }
    close(_output);
}

std::string BackgroundProgram::outputUntil(const std::string& text) const
{
    std::string output;
    for (int waited = 0; (output = fileText(_output)).find(text) == std::string::npos && waited < 10000;
         waited += 5) {
        usleep(5000);
    }
    return output;
}

std::string BackgroundProgram::errorOutput() const
{
    return fileText(_errors);
}

int BackgroundProgram::stop(int signal)
{
    const int status = _pid > 0 && kill(_pid, signal) == 0 ? reapWithin(_pid, 10000) : 0;
    _pid = -1;
    return status;
}

} // namespace test
} // namespace akvo
