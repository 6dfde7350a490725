#ifndef AKVO_TESTS_SUPPORT_STDERRCAPTURE_H
#define AKVO_TESTS_SUPPORT_STDERRCAPTURE_H

#include "ProgramRun.h"

#include <cstdio>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace akvo {
namespace test {

// Sends the process's standard error to a memory file from construction
// until text() is called, which restores it and returns what was written.
class StderrCapture
{
public:
    StderrCapture() : _savedFd(dup(STDERR_FILENO)), _fileFd(memfd_create("stderr", MFD_CLOEXEC))
    {
        std::fflush(stderr);
        dup2(_fileFd, STDERR_FILENO);
    }

    ~StderrCapture()
    {
        text();
        close(_fileFd);
    }

    std::string text()
    {
        // A second call finds nothing to restore.
        dup2(_savedFd, STDERR_FILENO);
        close(_savedFd);
        _savedFd = -1;
        return fileText(_fileFd);
    }

    StderrCapture(const StderrCapture&) = delete;
    StderrCapture& operator=(const StderrCapture&) = delete;

private:
    int _savedFd;
    int _fileFd;
};

} // namespace test
} // namespace akvo

#endif
