#ifndef AKVO_TESTS_SUPPORT_PROGRAMRUN_H
#define AKVO_TESTS_SUPPORT_PROGRAMRUN_H

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

} // namespace test
} // namespace akvo

#endif
