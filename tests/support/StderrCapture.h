#ifndef AKVO_TESTS_SUPPORT_STDERRCAPTURE_H
#define AKVO_TESTS_SUPPORT_STDERRCAPTURE_H

#include <string>

namespace akvo {
namespace test {

// Sends the process's standard error to a temporary file from construction
// until text() is called, which restores it and returns what was written.
class StderrCapture
{
public:
    StderrCapture();
    ~StderrCapture();

    std::string text();

    StderrCapture(const StderrCapture&) = delete;
    StderrCapture& operator=(const StderrCapture&) = delete;

private:
    void restore();

    int _savedFd;
    int _fileFd;
};

} // namespace test
} // namespace akvo

#endif
