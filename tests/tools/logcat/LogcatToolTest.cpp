#include "ProgramRun.h"
#include "UnixSocket.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace std::string_literals;
using akvo::test::fileText;

namespace {

// akvo-logcat listening on `path`, its standard output and error gathered in
// one memory file; the socket file is removed in the end whatever happened.
class Logcat
{
public:
    Logcat(const std::vector<std::string>& options, const std::string& path)
        : _path(path), _output(memfd_create("logcat", MFD_CLOEXEC))
    {
        std::vector<std::string> command = {AKVO_LOGCAT_PATH, "--socket", path};
        command.insert(command.end(), options.begin(), options.end());
        _pid = akvo::test::startProgram(command, STDIN_FILENO, _output, _output);
    }

    ~Logcat()
    {
        stop(SIGKILL);
        close(_output);
        unlink(_path.c_str());
    }

    // All the output so far, once it holds `text` or after 5 s.
    std::string outputUntil(const std::string& text) const
    {
        std::string output;
        for (int step = 0; (output = fileText(_output)).find(text) == std::string::npos && step < 1000;
             ++step) {
            usleep(5000);
        }
        return output;
    }

    // Sends `signal` and returns the wait status.
    int stop(int signal)
    {
        const int status = _pid > 0 && kill(_pid, signal) == 0 ? akvo::test::reapWithin(_pid, 5000) : 0;
        _pid = -1;
        return status;
    }

private:
    std::string _path;
    int _output;
    pid_t _pid;
};

// The real-time stamps "MM-DD HH:MM:SS.mmm" that begin the lines after the first, zeroed.
std::string withTimesZeroed(std::string text)
{
    for (size_t line = text.find('\n'); line != std::string::npos && line + 19 < text.size();
         line = text.find('\n', line + 1)) {
        for (size_t at = line + 1; at < line + 19; ++at) {
            text[at] = std::isdigit(static_cast<unsigned char>(text[at])) ? '0' : text[at];
        }
    }
    return text;
}

// The test binary's own log writer sends to AKVO_TEST_LOGDW_PATH, where
// akvo-logcat stands in for the daemon.
TEST(Logcat, ShowsTheRecordsThatAProgramWritesUntilSigterm)
{
    Logcat logcat({}, AKVO_TEST_LOGDW_PATH);
    const std::string listening = "akvo-logcat: listening on "s + AKVO_TEST_LOGDW_PATH + "\n";
    ASSERT_EQ(listening, logcat.outputUntil("\n"));

    EXPECT_EQ(24, __android_log_write(4, "AKVO", "hello from a test"));
    EXPECT_EQ(12, __android_log_bswrite(7, "abc"));

    const std::string thread = std::to_string(gettid() & 0xffff);
    EXPECT_EQ(listening + "00-00 00:00:00.000 " + thread + " I/AKVO: hello from a test\n" +
                  "00-00 00:00:00.000 " + thread + " event 7 (string): abc\n",
              withTimesZeroed(logcat.outputUntil("abc\n")));
    EXPECT_EQ(0, logcat.stop(SIGTERM)) << "not a clean exit";
    EXPECT_NE(0, access(AKVO_TEST_LOGDW_PATH, F_OK));
}

void sendDatagram(const std::string& path, const std::string& bytes)
{
    const sockaddr_un address = akvo::test::unixAddress(path);
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()),
              sendto(fd, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&address),
                     sizeof(address)));
    close(fd);
}

// The JSON members that the kernel's credentials give for the records that
// this process sends.
std::string sender()
{
    return R"("pid":)" + std::to_string(getpid()) + R"(,"uid":)" + std::to_string(getuid());
}

// Thread 77, 1970-02-01 01:01:01.123456789 UTC.
std::string datagram(uint8_t logId, const std::string& payload)
{
    return std::string(1, static_cast<char>(logId)) + "\x4d\x00\xcd\xec\x28\x00\x15\xcd\x5b\x07"s + payload;
}

TEST(Logcat, WarnsAboutMalformedDatagramsAndGoesOn)
{
    const std::string path = "/tmp/akvo-logcat-" + std::to_string(getpid()) + ".sock";
    Logcat logcat({"--json"}, path);
    ASSERT_EQ("akvo-logcat: listening on " + path + "\n", logcat.outputUntil("\n"));

    sendDatagram(path, "short");
    sendDatagram(path, datagram(1, "\x04RILJ\0m\0"s));
    sendDatagram(path, datagram(2, "\x2a\0\0\0\x02\x09\0\0\0"
                                   "abc"s));
    sendDatagram(path, datagram(2, "\x2a\0\0\0\x01\xaa\xbb"s));

    EXPECT_EQ(
        "akvo-logcat: listening on " + path + "\n" +
            "akvo-logcat: skipped malformed record: datagram of 5 bytes, shorter than the 11-byte record "
            "header\n"
            R"({"id":1,)" +
            sender() +
            R"(,"tid":77,"sec":2682061,"nsec":123456789,"kind":"text","priority":4,)"
            R"("level":"I","tag":"RILJ","message":"m"})"
            "\nakvo-logcat: skipped malformed record: string event declares 9 bytes but carries 3\n"
            R"({"id":2,)" +
            sender() +
            R"(,"tid":77,"sec":2682061,"nsec":123456789,"kind":"binary","event":42,)"
            R"("type":1,"payload":"aabb"})"
            "\n",
        logcat.outputUntil("aabb\"}\n"));
    EXPECT_EQ(0, logcat.stop(SIGTERM)) << "not a clean exit";
}

struct ShownCase
{
    const char* name;
    std::vector<std::string> options;
    std::string shown;
};

class LogcatShows : public ::testing::TestWithParam<ShownCase>
{
};

// Each case also shows END, sent last, so that its line tells that every
// record before it was taken.
TEST_P(LogcatShows, TheRecordsItsFiltersLetThroughInItsFormat)
{
    const std::string path = "/tmp/akvo-logcat-" + std::to_string(getpid()) + "-" + GetParam().name;
    std::vector<std::string> options = GetParam().options;
    options.push_back("END:F");
    Logcat logcat(options, path);
    ASSERT_EQ("akvo-logcat: listening on " + path + "\n", logcat.outputUntil("\n"));
    for (const std::string& payload : {"\x04"
                                       "AKVO\0one\0"s,
                                       "\x05"
                                       "AKVO\0two\0"s,
                                       "\x06"
                                       "RILJ\0three\0"s,
                                       "\x07"
                                       "END\0end\0"s}) {
        sendDatagram(path, datagram(0, payload));
    }
    EXPECT_EQ("akvo-logcat: listening on " + path + "\n" + GetParam().shown,
              logcat.outputUntil(GetParam().shown[0] == '{' ? "end\"}\n" : "end\n"));
    EXPECT_EQ(0, logcat.stop(SIGTERM)) << "not a clean exit";
}

INSTANTIATE_TEST_SUITE_P(
    Filters, LogcatShows,
    ::testing::Values(ShownCase{"brief",
                                {"-v", "brief"},
                                "I/AKVO(77): one\nW/AKVO(77): two\nE/RILJ(77): three\nF/END(77): end\n"},
                      ShownCase{"tag",
                                {"--format", "brief", "AKVO:W"},
                                "W/AKVO(77): two\nE/RILJ(77): three\nF/END(77): end\n"},
                      ShownCase{"silent",
                                {"-v", "brief", "AKVO:I", "*:S"},
                                "I/AKVO(77): one\nW/AKVO(77): two\nF/END(77): end\n"},
                      ShownCase{"json",
                                {"-v", "json", "RILJ:E", "*:S"},
                                R"({"id":0,)" + sender() +
                                    R"(,"tid":77,"sec":2682061,"nsec":123456789,"kind":"text",)"
                                    R"("priority":6,"level":"E","tag":"RILJ","message":"three"})"
                                    "\n"
                                    R"({"id":0,)" +
                                    sender() +
                                    R"(,"tid":77,"sec":2682061,"nsec":123456789,"kind":"text",)"
                                    R"("priority":7,"level":"F","tag":"END","message":"end"})"
                                    "\n"}),
    [](const ::testing::TestParamInfo<ShownCase>& info) { return std::string(info.param.name); });

std::string tempPath(const std::string& name)
{
    return "/tmp/akvo-logcat-" + std::to_string(getpid()) + "-" + name;
}

akvo::test::ProgramOutput runLogcat(const std::vector<std::string>& arguments)
{
    std::vector<std::string> command = {AKVO_LOGCAT_PATH};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return akvo::test::runProgram(command);
}

struct UsageCase
{
    std::vector<std::string> arguments;
    const char* part;
};

class LogcatUsage : public ::testing::TestWithParam<UsageCase>
{
};

TEST_P(LogcatUsage, ExitsWithStatusTwo)
{
    const akvo::test::ProgramOutput run = runLogcat(GetParam().arguments);
    const std::string& error = run.standardError;
    const size_t lineEnd = std::min(error.find('\n'), error.size());
    EXPECT_EQ(2, run.exitStatus);
    EXPECT_EQ(0u, error.find("akvo-logcat: ")) << error;
    EXPECT_NE(std::string::npos, error.substr(0, lineEnd).find(GetParam().part)) << error;
    EXPECT_EQ("\nRun with --help for more information.\n", error.substr(lineEnd));
    EXPECT_NE(0, access(tempPath("usage").c_str(), F_OK));
}

// Each names a free path, so that a command line taken by mistake cannot bind a real one.
INSTANTIATE_TEST_SUITE_P(Arguments, LogcatUsage,
                         ::testing::Values(UsageCase{{"--socket", tempPath("usage"), "--bogus"}, "--bogus"},
                                           UsageCase{{"--socket", tempPath("usage"), "stray:Q"}, "stray:Q"},
                                           UsageCase{{"--socket", tempPath("usage"), "-v", "long"}, "long"},
                                           UsageCase{{"--socket", tempPath("usage"), "--pid", "-5"}, "-5"},
                                           UsageCase{{"--socket", tempPath("usage"), "--json", "-v", "brief"},
                                                     "--json"}));

TEST(LogcatUsage, HelpAndVersionExitWithZero)
{
    for (const auto& [option, shown] :
         {std::pair{"--help", "\nUsage: akvo-logcat [OPTIONS]"}, std::pair{"--version", "akvo-logcat "}}) {
        const akvo::test::ProgramOutput run = runLogcat({option});
        EXPECT_EQ(0, run.exitStatus);
        EXPECT_NE(std::string::npos, run.standardOutput.find(shown)) << run.standardOutput;
    }
}

// akvo-logcat owns its path as OwnedSocket does: a live socket there is
// refused, and the file it leaves once closed is replaced.
TEST(Logcat, RefusesALiveSocketPathAndReplacesAStaleOne)
{
    const std::string path = tempPath("owned");
    const int live = akvo::test::boundUnixSocket(SOCK_DGRAM, path);
    ASSERT_LE(0, live);
    const akvo::test::ProgramOutput refused = runLogcat({"--socket", path});
    close(live);
    EXPECT_EQ(2, refused.exitStatus);
    EXPECT_EQ("akvo-logcat: path in use by another process: " + path + "\n", refused.standardError);

    Logcat logcat({}, path);
    ASSERT_EQ("akvo-logcat: listening on " + path + "\n", logcat.outputUntil("\n"));
    sendDatagram(path, datagram(0, "\x04T\0after\0"s));
    EXPECT_NE(std::string::npos, logcat.outputUntil("after\n").find("I/T: after\n"));
    EXPECT_EQ(0, logcat.stop(SIGTERM)) << "not a clean exit";
    EXPECT_NE(0, access(path.c_str(), F_OK));
}

#ifdef AKVO_CLI_PATH
// Records of unrelated processes on one socket: a CLI call logs there through
// AKVO_LOG_SOCKET, then this process sends END. The kernel's credentials tell
// the two apart, and --pid keeps this process's record alone.
TEST(Logcat, TellsTheLibrarysRecordsApartByTheirProcess)
{
    for (const bool onlyThisProcess : {false, true}) {
        const std::string path = tempPath(onlyThisProcess ? "one-sender" : "senders");
        Logcat logcat(onlyThisProcess
                          ? std::vector<std::string>{"-v", "brief", "--pid", std::to_string(getpid())}
                          : std::vector<std::string>{"-v", "threadtime"},
                      path);
        ASSERT_EQ("akvo-logcat: listening on " + path + "\n", logcat.outputUntil("\n"));
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        const pid_t cli = akvo::test::startProgram({"/usr/bin/env", "AKVO_LOG_SOCKET=" + path, AKVO_CLI_PATH,
                                                    "--socket", "/tmp/akvo-logcat-nobody-listens", "caps"},
                                                   STDIN_FILENO, nowhere, nowhere);
        close(nowhere);
        EXPECT_EQ(3, WEXITSTATUS(akvo::test::reapWithin(cli, 10000)));
        sendDatagram(path, datagram(0, "\x07"
                                       "END\0end\0"s));
        const std::string shown = logcat.outputUntil("end\n");
        char sender[64];
        std::snprintf(sender, sizeof(sender), " %5d %5d I AKVOLIPSYNCAPI: Client is connecting ", cli,
                      cli & 0xffff);
        EXPECT_EQ(!onlyThisProcess, shown.find(sender) != std::string::npos) << shown;
        EXPECT_EQ(onlyThisProcess, shown.find("\nF/END(77): end\n") == shown.find('\n')) << shown;
    }
}
#endif

} // namespace
