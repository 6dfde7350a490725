#ifndef AKVO_TESTS_SUPPORT_PROGRAMRUN_H
#define AKVO_TESTS_SUPPORT_PROGRAMRUN_H

#include <csignal>
#include <string>
#include <sys/types.h>
#include <vector>

namespace akvo {
namespace test {

struct ProgramOutput
{
    int exitStatus; // -1 when the program did not exit normally
    std::string standardOutput;
    std::string standardError;
};

// Runs a program to its end (killed after 30 s) with `input` on its standard
// input and returns what it wrote and how it exited.
ProgramOutput runProgram(const std::vector<std::string>& arguments, const std::string& input = "");

// Starts a program with `in`, `out` and `err` as its standard descriptors and
// none of the test's other descriptors.
pid_t startProgram(const std::vector<std::string>& arguments, int in, int out, int err);

// Waits for a child; kills it when it has not ended after `timeoutMs`. Returns the wait status.
int reapWithin(pid_t pid, int timeoutMs);

// Everything in the file behind `fd`, read from its start.
std::string fileText(int fd);

// A program that runs beside the test, such as a server, stopped at the
// latest when the object goes. What it writes is gathered in memory, its
// standard error with its standard output when `mergeErrors`.
class BackgroundProgram
{
public:
    explicit BackgroundProgram(const std::vector<std::string>& arguments, bool mergeErrors = false);
    ~BackgroundProgram();
    BackgroundProgram(const BackgroundProgram&) = delete;
    BackgroundProgram& operator=(const BackgroundProgram&) = delete;

    pid_t pid() const { return _pid; }
    // All the output so far, once it holds `text` or after 10 s.
    std::string outputUntil(const std::string& text) const;
    std::string errorOutput() const;
    // Sends `signal` (SIGKILL after 10 s) and returns the wait status; later calls do nothing.
    int stop(int signal = SIGTERM);

private:
    int _output;
    int _errors;
    pid_t _pid;
};

} // namespace test
} // namespace akvo

#endif
