#include "FreshProcess.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace akvo {
namespace test {

namespace {

std::vector<std::string> childEnvironment(const std::vector<std::string>& added)
{
    static const char limitVariable[] = "LIBLOG_THROUGHPUT_LIMIT=";
    std::vector<std::string> entries;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        if (std::strncmp(*entry, limitVariable, sizeof(limitVariable) - 1) != 0) {
            entries.push_back(*entry);
        }
    }
    entries.insert(entries.end(), added.begin(), added.end());
    return entries;
}

std::vector<char*> pointers(std::vector<std::string>& strings)
{
    std::vector<char*> result;
    for (std::string& text : strings) {
        result.push_back(&text[0]);
    }
    result.push_back(nullptr);
    return result;
}

} // namespace

::testing::AssertionResult passesInFreshProcess(const std::string& testName,
                                                const std::vector<std::string>& environment)
{
    std::vector<std::string> arguments = {"/proc/self/exe", "--gtest_filter=" + testName,
                                          "--gtest_also_run_disabled_tests"};
    std::vector<std::string> variables = childEnvironment(environment);
    std::vector<char*> argv = pointers(arguments);
    std::vector<char*> envp = pointers(variables);

    int output[2];
    if (pipe2(output, O_CLOEXEC) != 0) {
        return ::testing::AssertionFailure() << "pipe: " << std::strerror(errno);
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDERR_FILENO);
    pid_t pid = -1;
    const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    close(output[1]);
    if (spawned != 0) {
        close(output[0]);
        return ::testing::AssertionFailure() << "posix_spawn: " << std::strerror(spawned);
    }

    std::string text;
    char buffer[4096];
    ssize_t count;
    while ((count = read(output[0], buffer, sizeof(buffer))) > 0) {
        text.append(buffer, static_cast<size_t>(count));
    }
    close(output[0]);
    int status = 0;
    waitpid(pid, &status, 0);

    const bool passed = WIFEXITED(status) && WEXITSTATUS(status) == 0 &&
                        text.find("[  PASSED  ] 1 test.") != std::string::npos;
    if (!passed) {
        return ::testing::AssertionFailure() << testName << " failed in its own process:\n" << text;
    }
    return ::testing::AssertionSuccess();
}

} // namespace test
} // namespace akvo
