#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace akvo {
namespace test {

namespace {

// A test result records failures and skips; only the failures count here.
int failedParts()
{
    const ::testing::TestResult& result = *::testing::UnitTest::GetInstance()->current_test_info()->result();
    int failed = 0;
    for (int part = 0; part < result.total_part_count(); ++part) {
        failed += result.GetTestPartResult(part).failed() ? 1 : 0;
    }
    return failed;
}

} // namespace

ProgramOutput runInChild(const std::function<int()>& body, int timeoutMs)
{
    const int out = memfd_create("stdout", MFD_CLOEXEC);
    const int err = memfd_create("stderr", MFD_CLOEXEC);
    // Whatever the parent buffered would otherwise be written twice.
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(out, STDOUT_FILENO);
        dup2(err, STDERR_FILENO);
        const int status = body();
        std::fflush(nullptr);
        if (__lsan_do_leak_check) {
            __lsan_do_leak_check();
        }
        _exit(status);
    }
    const int status = pid > 0 ? reapWithin(pid, timeoutMs) : -1;
    ProgramOutput output{WIFEXITED(status) ? WEXITSTATUS(status) : -1, fileText(out), fileText(err)};
    close(out);
    close(err);
    return output;
}

void expectPassesInChild(const std::function<void()>& body)
{
    const ProgramOutput run = runInChild([&] {
        const int before = failedParts();
        body();
        return failedParts() == before ? 0 : 1;
    });
    EXPECT_EQ(0, run.exitStatus) << run.standardOutput << run.standardError;
}

} // namespace test
} // namespace akvo
