#ifndef AKVO_TESTS_TOOLS_LOGCAT_LOGCATPROCESS_H
#define AKVO_TESTS_TOOLS_LOGCAT_LOGCATPROCESS_H

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace akvo {
namespace test {

// akvo-logcat running with the given arguments and TZ=UTC, its standard
// output and error read line by line. Killed on destruction if still running.
class LogcatProcess
{
public:
    explicit LogcatProcess(const std::vector<std::string>& arguments);
    ~LogcatProcess();

    std::optional<std::string> outputLine(std::chrono::milliseconds timeout = std::chrono::seconds(5));
    std::optional<std::string> errorLine(std::chrono::milliseconds timeout = std::chrono::seconds(5));

    // Sends `signal` and returns the wait status.
    int stop(int signal);
    // Waits for the process to end on its own and returns the wait status.
    int wait();

    LogcatProcess(const LogcatProcess&) = delete;
    LogcatProcess& operator=(const LogcatProcess&) = delete;

private:
    struct LineReader
    {
        int fd = -1;
        std::string pending;
        std::optional<std::string> next(std::chrono::milliseconds timeout);
    };

    pid_t _pid;
    LineReader _output;
    LineReader _error;
};

} // namespace test
} // namespace akvo

#endif
