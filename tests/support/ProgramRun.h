#ifndef AKVO_TESTS_SUPPORT_PROGRAMRUN_H
#define AKVO_TESTS_SUPPORT_PROGRAMRUN_H

#include <string>
#include <vector>

namespace akvo {
namespace test {

struct ProgramOutput
{
    int exitStatus; // -1 when the program did not exit normally
    std::string standardOutput;
    std::string standardError;
};

// Runs a program to its end with `input` on its standard input and returns
// what it wrote and how it exited.
ProgramOutput runProgram(const std::vector<std::string>& arguments, const std::string& input = "");

} // namespace test
} // namespace akvo

#endif
