#ifndef AKVO_TESTS_HARDENING_QUIETSTDERR_H
#define AKVO_TESTS_HARDENING_QUIETSTDERR_H

namespace akvo {
namespace test {

// Sends standard error to /dev/null for the object's lifetime. Every logged
// Service call also writes a line there, and loops of thousands of calls
// would otherwise fill the test log.
class QuietStderr
{
public:
    QuietStderr();
    ~QuietStderr();

    QuietStderr(const QuietStderr&) = delete;
    QuietStderr& operator=(const QuietStderr&) = delete;

private:
    int _savedFd;
};

} // namespace test
} // namespace akvo

#endif
