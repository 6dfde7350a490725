#include "velmo/utilities/log/GenericLog.h"
#include "LogReceiver.h"
#include "StderrCapture.h"
#include "velmo/utilities/log/Assertion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <thread>
#include <unistd.h>

using akvo::test::LogReceiver;
using akvo::test::processLogReceiver;
using akvo::test::StderrCapture;
using velmo::utilities::Log;
using velmo::utilities::details::Level;

namespace {

void expectRecord(LogReceiver& receiver, int priority, const std::string& tag, const std::string& message)
{
    const auto record = receiver.nextRecord();
    ASSERT_TRUE(record);
    EXPECT_EQ(0, record->logId);
    EXPECT_EQ(priority, record->priority);
    EXPECT_EQ(tag, record->tag);
    EXPECT_EQ(message, record->message);
}

// Writes a marker record: the next record received after an action that
// should have logged nothing must be this one.
void expectNothingLoggedBefore(LogReceiver& receiver)
{
    __android_log_write(4, "MARK", "after");
    expectRecord(receiver, 4, "MARK", "after");
}

TEST(GenericLog, InfoGoesToTheAndroidLogAndStandardError)
{
    LogReceiver& receiver = processLogReceiver();
    StderrCapture stderrCapture;
    {
        Log::Stream<Level::Info> stream("AKVOLIPSYNCAPI");
        stream << "connect " << 3;
    }
    EXPECT_EQ("I/AKVOLIPSYNCAPI connect 3\n", stderrCapture.text());
    expectRecord(receiver, 4, "AKVOLIPSYNCAPI", "connect 3");
}

TEST(GenericLog, FatalUsesPriority7AndTheLetterF)
{
    LogReceiver& receiver = processLogReceiver();
    StderrCapture stderrCapture;
    {
        Log::Stream<Level::Fatal> stream("VELMO");
        stream << "bad";
    }
    EXPECT_EQ("F/VELMO bad\n", stderrCapture.text());
    expectRecord(receiver, 7, "VELMO", "bad");
}

TEST(GenericLog, LogFormatsLikePrintf)
{
    LogReceiver& receiver = processLogReceiver();
    StderrCapture stderrCapture;
    {
        Log::Stream<Level::Info> stream("T");
        stream.log("%d-%s", 5, "x");
    }
    EXPECT_EQ("I/T 5-x\n", stderrCapture.text());
    expectRecord(receiver, 4, "T", "5-x");
    expectNothingLoggedBefore(receiver);
}

TEST(GenericLog, StreamedPercentDirectivesStayLiteral)
{
    LogReceiver& receiver = processLogReceiver();
    StderrCapture stderrCapture;
    {
        Log::Stream<Level::Info> stream("T");
        stream << "100%d %s";
    }
    EXPECT_EQ("I/T 100%d %s\n", stderrCapture.text());
    expectRecord(receiver, 4, "T", "100%d %s");
}

TEST(GenericLog, EmptyStreamEmitsNothing)
{
    LogReceiver& receiver = processLogReceiver();
    StderrCapture stderrCapture;
    {
        Log::Stream<Level::Info> stream("T");
    }
    EXPECT_EQ("", stderrCapture.text());
    expectNothingLoggedBefore(receiver);
}

TEST(GenericLog, OnlyTheAndroidCopyIsCutToTheFormatBuffer)
{
    LogReceiver& receiver = processLogReceiver();
    const std::string text(2000, 'a');
    StderrCapture stderrCapture;
    {
        Log::Stream<Level::Info> stream("T");
        stream << text;
    }
    EXPECT_EQ("I/T " + text + "\n", stderrCapture.text());
    expectRecord(receiver, 4, "T", text.substr(0, 1023));
}

// Standard error goes to a pipe that is already full, so the logging thread
// blocks on its first write there; the Android record must have been sent
// by then.
class FullStderrPipe
{
public:
    FullStderrPipe() : _savedFd(dup(STDERR_FILENO))
    {
        EXPECT_EQ(0, pipe2(_pipe, O_CLOEXEC));
        fcntl(_pipe[1], F_SETFL, O_NONBLOCK);
        while (write(_pipe[1], "x", 1) == 1) {
            ++_fillerSize;
        }
        fcntl(_pipe[1], F_SETFL, 0);
        dup2(_pipe[1], STDERR_FILENO);
    }

    ~FullStderrPipe()
    {
        dup2(_savedFd, STDERR_FILENO);
        close(_savedFd);
        close(_pipe[0]);
        close(_pipe[1]);
    }

    // Empties the pipe until `done` is set, then returns what followed the filler.
    std::string drainUntil(const std::atomic<bool>& done)
    {
        std::string text;
        char buffer[4096];
        pollfd entry = {_pipe[0], POLLIN, 0};
        while (poll(&entry, 1, 10) == 1 || !done) {
            if (entry.revents & POLLIN) {
                const ssize_t count = read(_pipe[0], buffer, sizeof(buffer));
                text.append(buffer, static_cast<size_t>(count > 0 ? count : 0));
            }
        }
        return text.substr(std::min(text.size(), _fillerSize));
    }

private:
    int _savedFd;
    int _pipe[2];
    size_t _fillerSize = 0;
};

TEST(GenericLog, WritesTheAndroidRecordBeforeTheStandardErrorLine)
{
    LogReceiver& receiver = processLogReceiver();
    FullStderrPipe stderrPipe;
    std::atomic<bool> done{false};
    std::thread logging([&done] {
        {
            Log::Stream<Level::Info> stream("T");
            stream << "order";
        }
        done = true;
    });

    const auto record = receiver.nextRecord();
    const std::string line = stderrPipe.drainUntil(done);
    logging.join();

    ASSERT_TRUE(record) << "no Android record while standard error was blocked";
    EXPECT_EQ("order", record->message);
    EXPECT_EQ("I/T order\n", line);
}

TEST(Assertion, ThatHoldsLogsNothing)
{
    LogReceiver& receiver = processLogReceiver();
    StderrCapture stderrCapture;
    velmo::utilities::assertThat(true, "comms/src/Link:1: Assertion true failed: never");
    EXPECT_EQ("", stderrCapture.text());
    expectNothingLoggedBefore(receiver);
}

struct FailureCase
{
    const char* name;
    void (*fail)();
};

class FailedAssertion : public ::testing::TestWithParam<FailureCase>
{
};

TEST_P(FailedAssertion, LogsTheFatalLineThenAborts)
{
    // Bound before the child is forked, so the child's record comes here.
    LogReceiver& receiver = processLogReceiver();
    GTEST_FLAG_SET(death_test_style, "fast");

    EXPECT_EXIT(GetParam().fail(), ::testing::KilledBySignal(SIGABRT),
                "^F/VELMO comms/src/Link:42: Assertion fdLinkSocket > 0 failed: no socket\n$");
    expectRecord(receiver, 7, "VELMO", "comms/src/Link:42: Assertion fdLinkSocket > 0 failed: no socket");
}

INSTANTIATE_TEST_SUITE_P(
    Sites, FailedAssertion,
    ::testing::Values(FailureCase{"failAssertion",
                                  [] {
                                      velmo::utilities::failAssertion(
                                          "comms/src/Link:42: Assertion fdLinkSocket > 0 failed: no socket");
                                  }},
                      FailureCase{"assertThat",
                                  [] {
                                      velmo::utilities::assertThat(
                                          false,
                                          "comms/src/Link:42: Assertion fdLinkSocket > 0 failed: no socket");
                                  }}),
    [](const ::testing::TestParamInfo<FailureCase>& info) { return std::string(info.param.name); });

} // namespace
