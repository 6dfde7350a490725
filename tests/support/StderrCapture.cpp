#include "StderrCapture.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace akvo {
namespace test {

StderrCapture::StderrCapture() : _savedFd(dup(STDERR_FILENO)), _fileFd(-1)
{
    char path[] = "/tmp/akvo-stderr-XXXXXX";
    _fileFd = mkstemp(path);
    unlink(path);
    std::fflush(stderr);
    dup2(_fileFd, STDERR_FILENO);
}

StderrCapture::~StderrCapture()
{
    restore();
    if (_fileFd >= 0) {
        close(_fileFd);
    }
}

void StderrCapture::restore()
{
    if (_savedFd < 0) {
        return;
    }
    std::fflush(stderr);
    dup2(_savedFd, STDERR_FILENO);
    close(_savedFd);
    _savedFd = -1;
}

std::string StderrCapture::text()
{
    restore();
    std::string captured;
    if (_fileFd < 0) {
        return captured;
    }
    lseek(_fileFd, 0, SEEK_SET);
    char buffer[4096];
    ssize_t count;
    while ((count = read(_fileFd, buffer, sizeof(buffer))) > 0) {
        captured.append(buffer, static_cast<size_t>(count));
    }
    close(_fileFd);
    _fileFd = -1;
    return captured;
}

} // namespace test
} // namespace akvo
