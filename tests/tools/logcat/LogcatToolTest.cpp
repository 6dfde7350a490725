#include "LogReceiver.h"
#include "ProgramRun.h"
#include "TempDir.h"
#include "UnixSocket.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace akvo::test;
using namespace std::string_literals;

namespace {

// akvo-logcat listening on `path`; its standard output and error go together.
std::vector<std::string> logcatCommand(const std::string& path, const std::vector<std::string>& options = {})
{
    std::vector<std::string> command = {AKVO_LOGCAT_PATH, "--socket", path};
    command.insert(command.end(), options.begin(), options.end());
    return command;
}

std::string listening(const std::string& path)
{
    return "akvo-logcat: listening on " + path + "\n";
}

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
    BackgroundProgram logcat(logcatCommand(AKVO_TEST_LOGDW_PATH), true);
    ASSERT_EQ(listening(AKVO_TEST_LOGDW_PATH), logcat.outputUntil("\n"));

    EXPECT_EQ(24, __android_log_write(4, "AKVO", "hello from a test"));
    EXPECT_EQ(12, __android_log_bswrite(7, "abc"));

    const std::string thread = std::to_string(gettid() & 0xffff);
    EXPECT_EQ(listening(AKVO_TEST_LOGDW_PATH) + "00-00 00:00:00.000 " + thread +
                  " I/AKVO: hello from a test\n" + "00-00 00:00:00.000 " + thread +
                  " event 7 (string): abc\n",
              withTimesZeroed(logcat.outputUntil("abc\n")));
    EXPECT_EQ(0, logcat.stop(SIGTERM)) << "not a clean exit";
    EXPECT_NE(0, access(AKVO_TEST_LOGDW_PATH, F_OK));
}

void sendDatagram(const std::string& path, const std::string& bytes)
{
    const sockaddr_un address = unixAddress(path);
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()),
              sendto(fd, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&address),
                     sizeof(address)));
    close(fd);
}

TEST(Logcat, WarnsAboutAMalformedDatagramAndGoesOn)
{
    const TempDir folder;
    const std::string path = folder.file("logdw");
    BackgroundProgram logcat(logcatCommand(path, {"-v", "brief"}), true);
    ASSERT_EQ(listening(path), logcat.outputUntil("\n"));
    sendDatagram(path, "short");
    sendDatagram(path, recordDatagram(0, "\x04T\0after\0"s));
    EXPECT_EQ(
        listening(path) +
            "akvo-logcat: skipped malformed record: datagram of 5 bytes, shorter than the 11-byte record "
            "header\nI/T(77): after\n",
        logcat.outputUntil("after\n"));
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

// The JSON members that the kernel's credentials give for the records that
// this process sends.
std::string sender()
{
    return R"("pid":)" + std::to_string(getpid()) + R"(,"uid":)" + std::to_string(getuid());
}

// Each case also shows END, sent last, so that its line tells that every
// record before it was taken.
TEST_P(LogcatShows, TheRecordsItsFiltersLetThroughInItsFormat)
{
    const TempDir folder;
    const std::string path = folder.file("logdw");
    std::vector<std::string> options = GetParam().options;
    options.push_back("END:F");
    BackgroundProgram logcat(logcatCommand(path, options), true);
    ASSERT_EQ(listening(path), logcat.outputUntil("\n"));
    for (const std::string& payload : {"\x04"
                                       "AKVO\0one\0"s,
                                       "\x05"
                                       "AKVO\0two\0"s,
                                       "\x06"
                                       "RILJ\0three\0"s,
                                       "\x07"
                                       "END\0end\0"s}) {
        sendDatagram(path, recordDatagram(0, payload));
    }
    EXPECT_EQ(listening(path) + GetParam().shown,
              logcat.outputUntil(GetParam().shown[0] == '{' ? "end\"}\n" : "end\n"));
}

INSTANTIATE_TEST_SUITE_P(
    Filters, LogcatShows,
    ::testing::Values(ShownCase{"tag",
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

ProgramOutput runLogcat(const std::vector<std::string>& arguments)
{
    std::vector<std::string> command = {AKVO_LOGCAT_PATH};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runProgram(command);
}

// A free path, so that a command line taken by mistake cannot bind a real one.
const std::string unusedPath = "/tmp/akvo-logcat-" + std::to_string(getpid()) + "-unused";

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
    const ProgramOutput run = runLogcat(GetParam().arguments);
    const std::string& error = run.standardError;
    const size_t lineEnd = std::min(error.find('\n'), error.size());
    EXPECT_EQ(2, run.exitStatus);
    EXPECT_EQ(0u, error.find("akvo-logcat: ")) << error;
    EXPECT_NE(std::string::npos, error.substr(0, lineEnd).find(GetParam().part)) << error;
    EXPECT_EQ("\nRun with --help for more information.\n", error.substr(lineEnd));
    EXPECT_NE(0, access(unusedPath.c_str(), F_OK));
}

INSTANTIATE_TEST_SUITE_P(Arguments, LogcatUsage,
                         ::testing::Values(UsageCase{{"--socket", unusedPath, "--bogus"}, "--bogus"},
                                           UsageCase{{"--socket", unusedPath, "stray:Q"}, "stray:Q"},
                                           UsageCase{{"--socket", unusedPath, "-v", "long"}, "long"},
                                           UsageCase{{"--socket", unusedPath, "--pid", "-5"}, "-5"},
                                           UsageCase{{"--socket", unusedPath, "--json", "-v", "brief"},
                                                     "--json"}));

TEST(LogcatUsage, HelpAndVersionExitWithZero)
{
    for (const auto& [option, shown] :
         {std::pair{"--help", "\nUsage: akvo-logcat [OPTIONS]"}, std::pair{"--version", "akvo-logcat "}}) {
        const ProgramOutput run = runLogcat({option});
        EXPECT_EQ(0, run.exitStatus);
        EXPECT_NE(std::string::npos, run.standardOutput.find(shown)) << run.standardOutput;
    }
}

// akvo-logcat owns its path as OwnedSocket does: a live socket there is refused.
TEST(Logcat, RefusesALiveSocketPath)
{
    const TempDir folder;
    const std::string path = folder.file("taken");
    const int live = boundUnixSocket(SOCK_DGRAM, path);
    ASSERT_LE(0, live);
    const ProgramOutput refused = runLogcat({"--socket", path});
    close(live);
    EXPECT_EQ(2, refused.exitStatus);
    EXPECT_EQ("akvo-logcat: path in use by another process: " + path + "\n", refused.standardError);
}

#ifdef AKVO_CLI_PATH
// Records of unrelated processes on one socket: a CLI call logs there through
// AKVO_LOG_SOCKET, then this process sends END. The kernel's credentials tell
// the two apart, and --pid keeps this process's record alone.
TEST(Logcat, TellsTheLibrarysRecordsApartByTheirProcess)
{
    for (const bool onlyThisProcess : {false, true}) {
        const TempDir folder;
        const std::string path = folder.file("logdw");
        BackgroundProgram logcat(logcatCommand(path, onlyThisProcess
                                                         ? std::vector<std::string>{"-v", "brief", "--pid",
                                                                                    std::to_string(getpid())}
                                                         : std::vector<std::string>{"-v", "threadtime"}),
                                 true);
        ASSERT_EQ(listening(path), logcat.outputUntil("\n"));
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        const pid_t cli = startProgram({"/usr/bin/env", "AKVO_LOG_SOCKET=" + path, AKVO_CLI_PATH, "--socket",
                                        "/tmp/akvo-logcat-nobody-listens", "caps"},
                                       STDIN_FILENO, nowhere, nowhere);
        close(nowhere);
        EXPECT_EQ(3, WEXITSTATUS(reapWithin(cli, 10000)));
        sendDatagram(path, recordDatagram(0, "\x07"
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
