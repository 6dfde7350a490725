#include "ProgramRun.h"
#include "ResultTexts.h"
#include "Simulator.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

using namespace akvo::test;

namespace {

const std::string nobodyListens = "/tmp/akvo-cli-nobody-listens";

ProgramOutput cli(const std::vector<std::string>& arguments, const std::string& input = "")
{
    std::vector<std::string> command{AKVO_CLI_PATH};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runProgram(command, input);
}

struct CommandCase
{
    const char* name;
    std::vector<std::string> simulatorArgs;
    std::vector<std::string> arguments;
    int exitStatus;
    std::string output;
};

class OneShotCommand : public ::testing::TestWithParam<CommandCase>
{
};

TEST_P(OneShotCommand, PrintsTheResultAndExitsWithItsClass)
{
    SimulatorProcess simulator(GetParam().simulatorArgs);
    std::vector<std::string> arguments{"--socket", simulator.socketPath()};
    arguments.insert(arguments.end(), GetParam().arguments.begin(), GetParam().arguments.end());
    const ProgramOutput run = cli(arguments);
    EXPECT_EQ(GetParam().exitStatus, run.exitStatus) << run.standardError;
    EXPECT_EQ(GetParam().output, run.standardOutput);
}

INSTANTIATE_TEST_SUITE_P(
    Cli, OneShotCommand,
    ::testing::Values(
        CommandCase{
            "SetMarginIsDecimal", {}, {"set-margin", "040"}, 0, "set-margin 40: Success delayMs=40\n"},
        CommandCase{"VideoTimestampsAtTheLargestNumber",
                    {},
                    {"video-ts", "18446744073709551615", "0", "0", "18446744073709551615"},
                    0,
                    "video-ts: Success\n"},
        CommandCase{"NotInCall",
                    {"--idle"},
                    {"set-margin", "20"},
                    8,
                    "set-margin 20: " + std::string(notInCallText) + "\n"},
        CommandCase{
            "ServerError",
            {"--fault", "1:error:1001:broken"},
            {"timestamps"},
            7,
            "timestamps: The lipsync server returned an error (Code 1006): {Unknown error (Code 1001): "
            "broken}\n"},
        CommandCase{"JsonTimestampsAreStringsOfDigits",
                    {"--fixed"},
                    {"--json", "timestamps"},
                    0,
                    "{\"command\":\"timestamps\",\"code\":1000,\"result\":\"Success\",\"capture\":"
                    "\"16045690984833536\",\"rendering\":\"16045690985263104\",\"receiving\":"
                    "\"16045690984404992\",\"jitterBufferDepth\":40,\"audioLatencyMs\":0.100,"
                    "\"networkDelayMs\":0.100}\n"},
        CommandCase{"Csv",
                    {"--fixed"},
                    {"timestamps", "--csv", "--count", "2", "--interval-ms", "0"},
                    0,
                    "capture,rendering,receiving,jitterBufferDepth,audioLatencyMs,networkDelayMs\n"
                    "16045690984833536,16045690985263104,16045690984404992,40,0.100,0.100\n"
                    "16045690984833536,16045690985263104,16045690984404992,40,0.100,0.100\n"},
        CommandCase{"CsvWithJsonIsAUsageError",
                    {},
                    {"--json", "timestamps", "--csv"},
                    2,
                    "{\"command\":\"timestamps\",\"code\":2,\"result\":\"--csv and --json exclude each "
                    "other\"}\n"},
        CommandCase{
            "JsonRefusal",
            {},
            {"--json", "set-margin", "101"},
            4,
            "{\"command\":\"set-margin\",\"code\":1002,\"result\":\"Invalid Param (Code 1002):  audio "
            "delay margin 101 is not in range [0..100]\",\"delayMs\":101}\n"}),
    [](const ::testing::TestParamInfo<CommandCase>& info) { return std::string(info.param.name); });

TEST(Cli, CannotConnectIsItsOwnClass)
{
    const std::string failure = "connect: " + cannotConnectText(nobodyListens, ENOENT);
    const ProgramOutput run = cli({"--socket", nobodyListens, "caps"});
    EXPECT_EQ(3, run.exitStatus);
    EXPECT_EQ(0u, run.standardOutput.find(failure)) << run.standardOutput;
}

TEST(Cli, UsageErrorsExitWithTwo)
{
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{}, {"frobnicate"}, {"set-margin"}, {"video-ts", "1", "2"}}) {
        EXPECT_EQ(2, cli(arguments).exitStatus);
    }
    EXPECT_EQ(0, cli({"--help"}).exitStatus);
    EXPECT_EQ(0, cli({"timestamps", "--help"}).exitStatus);
}

const std::string notConnectedMargin = "get-margin: " + std::string(notConnectedText) + "\n";

struct BadNumberCase
{
    std::vector<std::string> arguments;
    const char* error;
};

// strtoull, under the option parser, would take a sign or an overflow for a number.
const BadNumberCase badNumbers[] = {
    {{"video-ts", "-1", "-1", "-1", "-1"}, "CAP: expected a number from 0 to 18446744073709551615, got -1"},
    {{"video-ts", "1", "2", "3", "+4"}, "DEPTH: expected a number from 0 to 18446744073709551615, got +4"},
    {{"set-margin", "18446744073709551616"},
     "MS: expected a number from 0 to 18446744073709551615, got 18446744073709551616"},
    {{"set-margin", "0x14"}, "MS: expected a number from 0 to 18446744073709551615, got 0x14"},
    {{"timestamps", "--count", "-4294967295"},
     "--count: expected a number from 0 to 4294967295, got -4294967295"},
    {{"timestamps", "--interval-ms", "4294967296"},
     "--interval-ms: expected a number from 0 to 4294967295, got 4294967296"}};

class BadNumber : public ::testing::TestWithParam<BadNumberCase>
{
};

TEST_P(BadNumber, IsAUsageError)
{
    std::vector<std::string> arguments{"--socket", nobodyListens};
    arguments.insert(arguments.end(), GetParam().arguments.begin(), GetParam().arguments.end());
    const ProgramOutput run = cli(arguments);
    EXPECT_EQ(2, run.exitStatus);
    EXPECT_EQ("", run.standardOutput);
    EXPECT_EQ(std::string("akvo-lipsync: ") + GetParam().error + "\nRun with --help for more information.\n",
              run.standardError);
}

INSTANTIATE_TEST_SUITE_P(Cli, BadNumber, ::testing::ValuesIn(badNumbers));

TEST(Cli, ShellReportsBadNumbersAndGoesOn)
{
    std::string input;
    std::string output;
    for (const BadNumberCase& bad : badNumbers) {
        std::string line;
        for (const std::string& argument : bad.arguments) {
            line += (line.empty() ? "" : " ") + argument;
        }
        input += line + "\n";
        output += line + ": " + bad.error + "\n";
    }
    const ProgramOutput run = cli({"--socket", nobodyListens, "shell"}, input + "get-margin\n");
    EXPECT_EQ(5, run.exitStatus);
    EXPECT_EQ(output + notConnectedMargin, run.standardOutput);
}

// The limit is 64 KiB with the line feed; millions of words are not split first.
TEST(Cli, ShellSkipsLinesLongerThan64KiB)
{
    std::string words;
    for (int i = 0; i < 3000000; ++i) {
        words += "x ";
    }
    const std::string skipped = "shell: line longer than 65536 bytes, skipped\n";
    const ProgramOutput run = cli({"--socket", nobodyListens, "shell"},
                                  "caps" + std::string(65532, ' ') + "\ncaps" + std::string(65533, ' ') +
                                      "\ncaps " + words + "\nget-margin\n");
    EXPECT_EQ(5, run.exitStatus);
    EXPECT_EQ("caps: " + std::string(notConnectedText) + "\n" + skipped + skipped + notConnectedMargin,
              run.standardOutput);
}

TEST(Cli, ShellKeepsOneServiceAcrossCommands)
{
    SimulatorProcess simulator;
    const ProgramOutput run = cli({"--socket", simulator.socketPath(), "shell"}, "connect\n"
                                                                                 "set-margin 60\n"
                                                                                 "get-margin\n"
                                                                                 "# a comment\n"
                                                                                 "\n"
                                                                                 "set-margin 30\n"
                                                                                 "get-margin\n"
                                                                                 "disconnect\n"
                                                                                 "get-margin\n"
                                                                                 "connect\n"
                                                                                 "get-margin\n"
                                                                                 "disconnect\n");
    EXPECT_EQ(0, run.exitStatus);
    EXPECT_EQ("connect: Success socket=" + simulator.socketPath() +
                  "\n"
                  "set-margin 60: Success delayMs=60\n"
                  "get-margin: Success delayMs=60\n"
                  "set-margin 30: " +
                  marginNotAStepText(30) +
                  "\n"
                  "get-margin: Success delayMs=60\n"
                  "disconnect: Success\n" +
                  notConnectedMargin + "connect: Success socket=" + simulator.socketPath() +
                  "\n"
                  "get-margin: Success delayMs=60\n"
                  "disconnect: Success\n",
              run.standardOutput);
}

// Writing to an engine that hung up fails with EPIPE: the shell reports it
// and goes on instead of dying of SIGPIPE.
TEST(Cli, ShellGoesOnAfterTheEngineHangsUp)
{
    SimulatorProcess simulator({"--fault", "1:close"});
    const ProgramOutput run =
        cli({"--socket", simulator.socketPath(), "shell"}, "connect\ntimestamps\ntimestamps\ncaps\n");
    EXPECT_EQ(0, run.exitStatus) << run.standardError;
    const std::string hungUp = "timestamps: " + std::string(closedByDistantText) + "\n";
    EXPECT_EQ("connect: Success socket=" + simulator.socketPath() + "\n" + hungUp + hungUp +
                  "caps: Success granularityMs=20 maxAudioDelayMargin=100\n",
              run.standardOutput);
}

// An engine that never answers: the call gives up (the option may follow the command).
TEST(Cli, TimeoutEndsACallThatTheEngineHolds)
{
    SimulatorProcess simulator({"--fault", "*:delay:100000"});
    const ProgramOutput run = cli({"--socket", simulator.socketPath(), "timestamps", "--timeout-ms", "50"});
    EXPECT_EQ(9, run.exitStatus);
    EXPECT_EQ(0u, run.standardOutput.find(
                      "timestamps: Deadline exceeded (Code 1100): No answer within 50 ms, disconnected {"))
        << run.standardOutput;
}

TEST(Cli, LibraryLogLinesGoToStandardError)
{
    SimulatorProcess simulator;
    const ProgramOutput run = cli({"--socket", simulator.socketPath(), "set-margin", "20"});
    EXPECT_EQ(0, run.exitStatus);
    EXPECT_NE(
        std::string::npos,
        run.standardError.find("I/AKVOLIPSYNCAPI Client is setting the audio delay margin with input params: "
                               "delayMs=20  with result: Success\n"))
        << run.standardError;
}

TEST(Cli, WatchCountsSamples)
{
    SimulatorProcess simulator({"--fixed"});
    const ProgramOutput run = cli(
        {"--socket", simulator.socketPath(), "timestamps", "--watch", "--count", "3", "--interval-ms", "1"});
    EXPECT_EQ(0, run.exitStatus);
    const std::string sample = "timestamps: Success capture=16045690984833536 rendering=16045690985263104 "
                               "receiving=16045690984404992 jitterBufferDepth=40 audioLatencyMs=0.100 "
                               "networkDelayMs=0.100\n";
    EXPECT_EQ(sample + sample + sample +
                  "timestamps statistics: Success samples=3 audioLatencyMinMs=0.100 audioLatencyMeanMs=0.100 "
                  "audioLatencyMaxMs=0.100 networkDelayMinMs=0.100 networkDelayMeanMs=0.100 "
                  "networkDelayMaxMs=0.100 jitterBufferDepthMin=40 jitterBufferDepthMean=40.000 "
                  "jitterBufferDepthMax=40\n",
              run.standardOutput);
}

// --watch samples until it is stopped, here by its reader going away: status
// 1 and a word on standard error.
TEST(Cli, WatchSamplesUntilItsOutputIsClosed)
{
    SimulatorProcess simulator({"--fixed"});
    int output[2];
    ASSERT_EQ(0, pipe2(output, O_CLOEXEC));
    const int error = memfd_create("stderr", MFD_CLOEXEC);
    const pid_t pid = akvo::test::startProgram(
        {AKVO_CLI_PATH, "--socket", simulator.socketPath(), "timestamps", "--watch", "--interval-ms", "1"},
        STDIN_FILENO, output[1], error);
    close(output[1]);
    std::FILE* lines = fdopen(output[0], "r");
    char line[512];
    for (int sample = 0; sample < 3 && std::fgets(line, sizeof(line), lines) != nullptr; ++sample) {
        EXPECT_EQ(0, std::strncmp(line, "timestamps: Success", 19)) << line;
    }
    std::fclose(lines);
    EXPECT_EQ(1, WEXITSTATUS(akvo::test::reapWithin(pid, 10000)));
    EXPECT_NE(std::string::npos, akvo::test::fileText(error).find(
                                     "akvo-lipsync: cannot write to standard output: Broken pipe\n"));
    close(error);
}

// A table on standard output takes no failure lines, the connection's no more
// than a sample's: they go to the same stream.
TEST(Cli, CsvEndsAtAFailureWhichGoesToStandardError)
{
    SimulatorProcess simulator({"--fixed", "--fault", "2:close"});
    const ProgramOutput run = cli(
        {"--socket", simulator.socketPath(), "timestamps", "--csv", "--count", "3", "--interval-ms", "0"});
    EXPECT_EQ(6, run.exitStatus);
    EXPECT_EQ("capture,rendering,receiving,jitterBufferDepth,audioLatencyMs,networkDelayMs\n"
              "16045690984833536,16045690985263104,16045690984404992,40,0.100,0.100\n",
              run.standardOutput);
    EXPECT_NE(std::string::npos,
              run.standardError.find("timestamps: An error has occured in the transport layer (Code 1005)"))
        << run.standardError;
}

TEST(Cli, ShellExitsWithTheStatusOfTheLastLineRun)
{
    const std::pair<const char*, int> runs[] = {{"", 0},
                                                {"# nothing\n\n", 0},
                                                {"bogus\n", 2},
                                                {"caps\n", 5},
                                                {"bogus\ncaps\n", 5},
                                                {"caps\nbogus\n", 2},
                                                {"caps\nquit\nbogus\n", 5},
                                                {"caps\nhelp\n", 0},
                                                {"connect\n", 3}};
    for (const auto& [input, exitStatus] : runs) {
        EXPECT_EQ(exitStatus, cli({"--socket", nobodyListens, "shell"}, input).exitStatus) << input;
    }
}

struct JsonShellCase
{
    const char* name;
    std::string input;
    std::string output;
};

class JsonShell : public ::testing::TestWithParam<JsonShellCase>
{
};

// Every line of the shell is an object of the same shape, in valid UTF-8.
TEST_P(JsonShell, PrintsObjectsWithACode)
{
    const ProgramOutput run = cli({"--json", "--socket", nobodyListens, "shell"}, GetParam().input);
    EXPECT_EQ(GetParam().output, run.standardOutput.substr(0, GetParam().output.size()));
}

INSTANTIATE_TEST_SUITE_P(
    Cli, JsonShell,
    ::testing::Values(
        JsonShellCase{"UnknownCommand", "bogus x\n",
                      "{\"command\":\"bogus x\",\"code\":2,\"result\":\"unknown command \\\"bogus\\\"; help "
                      "lists the commands\"}\n"},
        JsonShellCase{"UsageError", "caps extra\n",
                      "{\"command\":\"caps extra\",\"code\":2,\"result\":\"The following argument was not "
                      "expected: extra\"}\n"},
        JsonShellCase{"Help", "help\n", "{\"command\":\"help\",\"code\":0,\"result\":\"Shell commands\\n"}),
    [](const ::testing::TestParamInfo<JsonShellCase>& info) { return std::string(info.param.name); });

// Every kind of line the shell prints, read by a strict JSON and UTF-8 reader.
TEST(Cli, JsonOutputParsesAsJson)
{
    SimulatorProcess simulator;
    const ProgramOutput run =
        cli({"--json", "--socket", simulator.socketPath(), "shell"},
            "connect\nconnect\nset-margin 40\nset-margin 18446744073709551615\nget-margin\n"
            "timestamps --count 2 --interval-ms 0\ntimestamps --watch --count 2 --interval-ms 0\n"
            "video-ts 1 2 3 4\nhelp\ncaps --help\nbogus\n\xff\ndisconnect\nconnect /tmp/\xff\n");
    const ProgramOutput parsed = runProgram({"/usr/bin/python3", "-c",
                                             "import json, sys\n"
                                             "lines = sys.stdin.buffer.read().decode('utf-8').splitlines()\n"
                                             "assert len(lines) == 17, lines\n"
                                             "for line in lines:\n"
                                             "    assert isinstance(json.loads(line)['code'], int), line\n"},
                                            run.standardOutput);
    EXPECT_EQ(0, parsed.exitStatus) << run.standardOutput << parsed.standardError;
}

// On a terminal the shell reads with libedit: a prompt, the session's
// history (Ctrl-P brings back the line before), and Ctrl-C drops the line
// being typed for a new prompt, as shells do.
TEST(Cli, ShellOnATerminalHasAPromptAndHistory)
{
#ifndef AKVO_LINE_EDITING
    GTEST_SKIP() << "akvo-lipsync was built without libedit";
#endif
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_LE(0, terminal);
    ASSERT_EQ(0, grantpt(terminal));
    ASSERT_EQ(0, unlockpt(terminal));
    const int side = open(ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_LE(0, side);
    // In a session of its own with the terminal as its controlling one, so
    // that Ctrl-C signals the shell as it would at a user's terminal.
    const pid_t pid = akvo::test::startProgram(
        {"/usr/bin/setsid", "--ctty", AKVO_CLI_PATH, "--socket", nobodyListens, "shell"}, side, side, side);
    close(side);
    std::string screen;
    // The screen so far, once `text` has appeared `times` times or after 5 s.
    const auto until = [&](const std::string& text, size_t times) {
        const auto count = [&] {
            size_t seen = 0;
            for (size_t at = screen.find(text); at != std::string::npos; at = screen.find(text, at + 1)) {
                ++seen;
            }
            return seen;
        };
        char buffer[4096];
        pollfd entry = {terminal, POLLIN, 0};
        for (int step = 0; count() < times && step < 100 && poll(&entry, 1, 50) >= 0; ++step) {
            const ssize_t got = (entry.revents & POLLIN) != 0 ? read(terminal, buffer, sizeof(buffer)) : 0;
            screen.append(buffer, got > 0 ? static_cast<size_t>(got) : 0);
        }
        return count();
    };
    // Keys typed before libedit has put the terminal in raw mode would be
    // echoed and read by the line discipline instead.
    const auto type = [&](const char* keys) {
        termios mode{};
        for (int step = 0; step < 100 && tcgetattr(terminal, &mode) == 0 && (mode.c_lflag & ICANON) != 0;
             ++step) {
            usleep(50 * 1000);
        }
        return write(terminal, keys, std::strlen(keys));
    };
    const std::string answer = "get-margin: " + std::string(notConnectedText);
    EXPECT_EQ(1u, until("akvo> ", 1));
    EXPECT_EQ(4, type("caps"));
    EXPECT_EQ(1u, until("caps", 1));
    EXPECT_EQ(1, type("\x03"));
    EXPECT_EQ(2u, until("akvo> ", 2));
    EXPECT_NE(std::string::npos, screen.find("akvo> caps^C\r\nakvo> ")) << screen;
    EXPECT_EQ(11, type("get-margin\r"));
    EXPECT_EQ(3u, until("akvo> ", 3));
    EXPECT_EQ(2, type("\x10\r"));
    EXPECT_EQ(2u, until(answer, 2)) << screen;
    EXPECT_EQ(4u, until("akvo> ", 4));
    EXPECT_EQ(1, type("\x04"));
    const int status = akvo::test::reapWithin(pid, 5000);
    close(terminal);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(5, WEXITSTATUS(status)) << screen;
}

} // namespace
