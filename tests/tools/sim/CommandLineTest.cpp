#include "ProtocolText.h"
#include "Simulator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace akvo {
namespace test {
namespace {

struct Outcome
{
    int status = -1;
    std::string out;
    std::string err;
};

// Runs the simulator to its end (killed after 10 s, which fails the exit checks).
Outcome runSimulator(const std::vector<std::string>& extraArgs)
{
    std::vector<std::string> args = {simulatorExecutable()};
    args.insert(args.end(), extraArgs.begin(), extraArgs.end());
    std::vector<char*> argv;
    for (std::string& arg : args) {
        argv.push_back(&arg[0]);
    }
    argv.push_back(nullptr);
    int out[2];
    int err[2];
    Outcome run;
    if (::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(err, O_CLOEXEC) != 0) {
        ADD_FAILURE() << "pipe: " << std::strerror(errno);
        return run;
    }
    pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(out[1], STDOUT_FILENO);
        ::dup2(err[1], STDERR_FILENO);
        ::close_range(3, ~0U, 0);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    ::close(out[1]);
    ::close(err[1]);
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    pollfd fds[2] = {{out[0], POLLIN, 0}, {err[0], POLLIN, 0}};
    std::string* texts[2] = {&run.out, &run.err};
    while ((fds[0].fd >= 0 || fds[1].fd >= 0) && std::chrono::steady_clock::now() < deadline) {
        if (::poll(fds, 2, 100) < 0) {
            break;
        }
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd >= 0 && fds[i].revents != 0) {
                char chunk[4096];
                ssize_t got = ::read(fds[i].fd, chunk, sizeof chunk);
                if (got <= 0) {
                    ::close(fds[i].fd);
                    fds[i].fd = -1;
                } else {
                    texts[i]->append(chunk, static_cast<std::size_t>(got));
                }
            }
        }
    }
    for (pollfd& fd : fds) {
        if (fd.fd >= 0) {
            ::close(fd.fd);
            ::kill(pid, SIGKILL);
        }
    }
    ::waitpid(pid, &run.status, 0);
    return run;
}

// A temporary folder for paths the simulator is pointed at, removed with what it holds.
class Folder
{
public:
    Folder()
    {
        char path[] = "/tmp/akvo-sim-cli-XXXXXX";
        if (::mkdtemp(path) == nullptr) {
            ADD_FAILURE() << "mkdtemp: " << std::strerror(errno);
        }
        _path = path;
    }
    ~Folder()
    {
        for (const std::string& file : _files) {
            ::unlink(file.c_str());
        }
        ::rmdir(_path.c_str());
    }
    const std::string& path() const { return _path; }
    std::string file(const std::string& name)
    {
        _files.push_back(_path + "/" + name);
        return _files.back();
    }

private:
    std::string _path;
    std::vector<std::string> _files;
};

void expectUsageError(const Outcome& run, const std::string& part)
{
    ASSERT_TRUE(WIFEXITED(run.status)) << "status " << run.status;
    EXPECT_EQ(2, WEXITSTATUS(run.status));
    EXPECT_EQ("", run.out);
    EXPECT_EQ(0u, run.err.find("akvo-lipsync-sim: ")) << run.err;
    EXPECT_EQ(1, std::count(run.err.begin(), run.err.end(), '\n')) << run.err;
    EXPECT_EQ('\n', run.err.empty() ? 0 : run.err.back()) << run.err;
    EXPECT_NE(std::string::npos, run.err.find(part)) << run.err << " should contain " << part;
}

struct BadCommandLine
{
    const char* name;
    std::vector<std::string> args; // "SOCKET" stands for a usable socket path
    const char* part;
};

class SimBadCommandLine : public ::testing::TestWithParam<BadCommandLine>
{
};

TEST_P(SimBadCommandLine, IsOneLineAndExitStatusTwo)
{
    Folder folder;
    std::string socket = folder.file("lipsync.sock");
    std::vector<std::string> args = GetParam().args;
    std::replace(args.begin(), args.end(), std::string("SOCKET"), socket);
    expectUsageError(runSimulator(args), GetParam().part);
    // Refused before binding: no socket was left behind.
    EXPECT_NE(0, ::access(socket.c_str(), F_OK));
}

std::vector<BadCommandLine> badCommandLines()
{
    std::vector<BadCommandLine> cases = {
        {"NoArguments", {}, "--socket"},
        {"SocketWithoutPath", {"--socket"}, "--socket"},
        {"UnknownOption", {"--socket", "SOCKET", "--bogus"}, "--bogus"},
        {"StrayArgument", {"--socket", "SOCKET", "stray"}, "stray"},
        {"EmptyPath", {"--socket", ""}, "socket path"},
        {"PathTooLong", {"--socket", "/tmp/" + std::string(103, 'p')}, "107"},
        {"MissingFolder", {"--socket", "/nonexistent-akvo-folder/lipsync.sock"}, "cannot bind"},
        {"FaultWithoutValue", {"--socket", "SOCKET", "--fault"}, "--fault"},
        {"FaultFileMissing",
         {"--socket", "SOCKET", "--fault-file", "/nonexistent-akvo-faults"},
         "nonexistent"},
        {"DuplicateFault", {"--socket", "SOCKET", "--fault", "3:close", "--fault", "3:double"}, "already"},
        {"DuplicateStar", {"--socket", "SOCKET", "--fault", "*:close", "--fault", "*:garbage"}, "already"},
    };
    for (const char* rule : {"",
                             "1",
                             "0:close",
                             "x:close",
                             "-1:close",
                             "1:",
                             "1:explode",
                             "1:close:now",
                             "1:double:2",
                             "1:garbage:x",
                             "1:close-after",
                             "1:close-after:",
                             "1:close-after:-1",
                             "1:close-after:ten",
                             "1:split",
                             "1:split:10",
                             "1:split:0:10",
                             "1:split:10:x",
                             "1:split:10:3600001",
                             "1:version",
                             "1:error",
                             "1:error:abc:msg",
                             "1:error:2147483648:big",
                             "1:delay",
                             "1:delay:-5",
                             "1:delay:1.5",
                             "1:delay:3600001",
                             "**:close"}) {
        cases.push_back({"", {"--socket", "SOCKET", "--fault", rule}, "bad fault"});
    }
    for (std::size_t i = 0; i < cases.size(); ++i) {
        if (cases[i].name[0] == '\0') {
            cases[i].name = "MalformedFault";
        }
    }
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Inputs, SimBadCommandLine, ::testing::ValuesIn(badCommandLines()),
                         [](const ::testing::TestParamInfo<BadCommandLine>& info) {
                             return std::string(info.param.name) + std::to_string(info.index);
                         });

TEST(SimCommandLine, BadLineInFaultFileNamesFileAndLine)
{
    Folder folder;
    std::string faults = folder.file("faults");
    std::ofstream(faults) << "# comment\n1:close\n2:teleport\n";
    expectUsageError(runSimulator({"--socket", folder.file("s"), "--fault-file", faults}),
                     faults + ":3: bad fault");
}

TEST(SimCommandLine, PathThatIsNotASocketIsRefusedAndKept)
{
    Folder folder;
    std::string path = folder.file("plain");
    std::ofstream(path) << "data";
    expectUsageError(runSimulator({"--socket", path}), "not a socket");
    EXPECT_EQ(0, ::access(path.c_str(), F_OK));
}

TEST(SimCommandLine, LongestPathThatFitsIsServed)
{
    Folder folder;
    std::string path = folder.file(std::string(107 - folder.path().size() - 1, 's'));
    ASSERT_EQ(107u, path.size());
    SimulatorProcess sim(path, {"--fixed"});
    RawClient client(path);
    ASSERT_TRUE(client.write(framed(getAudioTsRequest)));
    std::string answer;
    ASSERT_TRUE(client.readMessage(answer));
    EXPECT_EQ(fixedGetAudioTsAnswer, answer);
}

TEST(SimCommandLine, HelpDescribesEveryOptionAndFault)
{
    Outcome run = runSimulator({"--help"});
    ASSERT_TRUE(WIFEXITED(run.status));
    EXPECT_EQ(0, WEXITSTATUS(run.status));
    for (const char* part : {"--socket", "--verbose", "--idle", "--fixed", "--fault ", "--fault-file",
                             "WHICH:ACTION", "close ", "close-after:N", "split:SIZE:PAUSE_MS", "double",
                             "version:V", "error:CODE:MESSAGE", "garbage", "delay:MS"}) {
        EXPECT_NE(std::string::npos, run.out.find(part)) << part;
    }
    EXPECT_EQ("", run.err);
}

TEST(SimCommandLine, LivePathIsRefused)
{
    SimulatorProcess live({"--fixed"});
    expectUsageError(runSimulator({"--socket", live.socketPath()}), "path in use");
    // The live server lost nothing.
    RawClient client(live.socketPath());
    ASSERT_TRUE(client.write(framed(getAudioTsRequest)));
    std::string answer;
    ASSERT_TRUE(client.readMessage(answer));
    EXPECT_EQ(fixedGetAudioTsAnswer, answer);
}

TEST(SimCommandLine, StaleSocketFileIsReplaced)
{
    SimulatorProcess dead;
    int status = dead.stop(SIGKILL);
    ASSERT_TRUE(WIFSIGNALED(status));
    ASSERT_EQ(0, ::access(dead.socketPath().c_str(), F_OK)) << "a killed server leaves its socket file";
    SimulatorProcess successor(dead.socketPath(), {"--fixed"});
    RawClient client(successor.socketPath());
    ASSERT_TRUE(client.write(framed(getAudioTsRequest)));
    std::string answer;
    ASSERT_TRUE(client.readMessage(answer));
    EXPECT_EQ(fixedGetAudioTsAnswer, answer);
}

class SimStopSignal : public ::testing::TestWithParam<int>
{
};

TEST_P(SimStopSignal, EndsCleanlyAndRemovesTheSocketFile)
{
    SimulatorProcess sim({"--fault", "1:delay:600000"});
    // A client waiting for an answer does not hold the server up.
    RawClient client(sim.socketPath());
    ASSERT_TRUE(client.write(framed(getAudioTsRequest)));
    int status = sim.stop(GetParam());
    ASSERT_TRUE(WIFEXITED(status)) << "status " << status;
    EXPECT_EQ(0, WEXITSTATUS(status));
    EXPECT_NE(0, ::access(sim.socketPath().c_str(), F_OK));
    EXPECT_EQ("", client.readUntilClosed());
}

INSTANTIATE_TEST_SUITE_P(Signals, SimStopSignal, ::testing::Values(SIGTERM, SIGINT));

TEST(SimCommandLine, SocketFileOfASuccessorIsLeftAlone)
{
    SimulatorProcess sim;
    // Someone else took the path over while the simulator ran.
    ASSERT_EQ(0, ::unlink(sim.socketPath().c_str()));
    int other = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, sim.socketPath().c_str());
    ASSERT_EQ(0, ::bind(other, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    sim.stop();
    EXPECT_EQ(0, ::access(sim.socketPath().c_str(), F_OK));
    ::close(other);
    ::unlink(sim.socketPath().c_str());
}

TEST(SimCommandLine, VerboseLogsEachRequestAndAnswer)
{
    SimulatorProcess sim({"--fixed", "--verbose", "--fault", "2:split:100:0"});
    {
        RawClient client(sim.socketPath());
        ASSERT_TRUE(
            client.write(framed(getAudioTsRequest) + framed(setAudioDelayRequest("30")) + framed("junk")));
        EXPECT_EQ(framed(fixedGetAudioTsAnswer) + framed(delayRefused), client.readUntilClosed());
    }
    sim.stop();
    std::string log = sim.errorOutput();
    for (const char* line :
         {"akvo-lipsync-sim: client 1 connected\n",
          "akvo-lipsync-sim: client 1 request 1: GetAudioTs_Request\n",
          "akvo-lipsync-sim: client 1 request 1: GetAudioTs_Answer 1000\n",
          "akvo-lipsync-sim: client 1 request 2: SetAudioDelay_Request 30\n",
          "akvo-lipsync-sim: client 1 request 2: SetAudioDelay_Answer 1002 (fault 2:split:100:0)\n",
          "akvo-lipsync-sim: client 1 request 3: bad request ("}) {
        EXPECT_NE(std::string::npos, log.find(line)) << line << "missing from:\n" << log;
    }
}

} // namespace
} // namespace test
} // namespace akvo
