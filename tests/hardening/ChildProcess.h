#ifndef AKVO_TESTS_HARDENING_CHILDPROCESS_H
#define AKVO_TESTS_HARDENING_CHILDPROCESS_H

#include <functional>
#include <string>

namespace akvo {
namespace test {

struct ChildRun
{
    // False when the pipe or the fork failed; errorOutput then says which.
    bool started = false;
    // What the body returned.
    std::string report;
    // The wait status.
    int status = 0;
    bool timedOut = false;
    // What the child wrote on standard error.
    std::string errorOutput;

    bool exitedCleanly() const;
    // How the child ended, with its standard error, for a failure message.
    std::string describe() const;
};

// Runs `body` in a forked copy of this process, so that it starts from this
// process's state and whatever it changes (the log writer's socket and
// writer, the transport's receive buffer) is gone afterwards. The child ends
// with _exit, after a leak check when built with AddressSanitizer; a child
// that runs longer than 20 s is killed.
ChildRun runInChild(const std::function<std::string()>& body);

} // namespace test
} // namespace akvo

#endif
