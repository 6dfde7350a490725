#include "velmo/utilities/log/GenericLog.h"
#include "LogReceiver.h"
#include "StderrCapture.h"
#include "velmo/kvo/log/AndroidLog.h"
#include "velmo/utilities/log/Assertion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

using akvo::test::processLogReceiver;
using velmo::utilities::Level;
using velmo::utilities::Log;

namespace {

void expectRecord(int priority, const std::string& tag, const std::string& message)
{
    const auto record = processLogReceiver().nextRecord();
    ASSERT_TRUE(record);
    EXPECT_EQ(0, record->logId);
    EXPECT_EQ(priority, record->priority);
    EXPECT_EQ(tag, record->tag);
    EXPECT_EQ(message, record->message);
}

TEST(GenericLog, StreamedPercentDirectivesStayLiteralOnBothSinks)
{
    processLogReceiver();
    akvo::test::StderrCapture stderrCapture;
    Log::Stream<Level::Info>("AKVOLIPSYNCAPI") << "100%d %s";
    EXPECT_EQ("I/AKVOLIPSYNCAPI 100%d %s\n", stderrCapture.text());
    expectRecord(4, "AKVOLIPSYNCAPI", "100%d %s");
}

// The line is written whole from one buffer, or in pieces past 1024 bytes;
// a format other than "%s" is formatted on the stack, or in the heap when long.
TEST(GenericLog, FormatsTheStandardErrorLineAsPrintfDoes)
{
    const std::string longText(3000, 'l');
    const struct
    {
        std::function<void()> log;
        std::string line;
    } cases[] = {
        {[] { Log::log<Level::Info>("T", "%d-%s", 42, "x"); }, "I/T 42-x\n"},
        {[&longText] { Log::log<Level::Fatal>("VELMO", "%s", longText.c_str()); },
         "F/VELMO " + longText + "\n"},
        {[&longText] { Log::log<Level::Info>("T", "<%s>", longText.c_str()); }, "I/T <" + longText + ">\n"},
    };
    processLogReceiver();
    for (const auto& c : cases) {
        akvo::test::StderrCapture stderrCapture;
        c.log();
        EXPECT_EQ(c.line, stderrCapture.text());
    }
    processLogReceiver().drain();
}

TEST(GenericLog, EmptyStreamAndHoldingAssertionEmitNothing)
{
    processLogReceiver();
    akvo::test::StderrCapture stderrCapture;
    Log::Stream<Level::Info>("T");
    velmo::utilities::assertThat(true, "comms/src/Link:1: Assertion true failed: never");
    EXPECT_EQ("", stderrCapture.text());
    // Nothing may arrive before this marker.
    __android_log_write(4, "MARK", "after");
    expectRecord(4, "MARK", "after");
}

// Standard error goes to a pipe that is already full, so the logging thread
// blocks on its first write there: the Android record must have been sent by then.
TEST(GenericLog, WritesTheAndroidRecordBeforeTheStandardErrorLine)
{
    akvo::test::LogReceiver& receiver = processLogReceiver();
    int pipeFds[2];
    ASSERT_EQ(0, pipe2(pipeFds, O_CLOEXEC | O_NONBLOCK));
    std::string filler(static_cast<size_t>(fcntl(pipeFds[1], F_GETPIPE_SZ)), 'x');
    ASSERT_EQ(static_cast<ssize_t>(filler.size()), write(pipeFds[1], filler.data(), filler.size()));
    fcntl(pipeFds[1], F_SETFL, 0);
    const int savedStderr = dup(STDERR_FILENO);
    dup2(pipeFds[1], STDERR_FILENO);
    std::thread logging([] { Log::Stream<Level::Info>("T") << "order"; });

    const auto record = receiver.nextRecord();
    for (size_t drained = 0; drained < filler.size();) {
        drained +=
            static_cast<size_t>(std::max<ssize_t>(0, read(pipeFds[0], &filler[0], filler.size() - drained)));
    }
    logging.join();
    dup2(savedStderr, STDERR_FILENO);
    char line[64];
    const ssize_t size = read(pipeFds[0], line, sizeof(line));
    close(savedStderr);
    close(pipeFds[0]);
    close(pipeFds[1]);

    ASSERT_TRUE(record) << "no Android record while standard error was blocked";
    EXPECT_EQ("order", record->message);
    EXPECT_EQ("I/T order\n", std::string(line, static_cast<size_t>(std::max<ssize_t>(0, size))));
}

// Threads log at once into a pipe as standard error, which a reader drains:
// every line arrives whole, with nothing of another thread's line inside it.
// (A pipe keeps each write of up to 4096 bytes in one piece; the lines here
// are shorter.)
TEST(GenericLog, LinesOfConcurrentThreadsStayWhole)
{
    constexpr int threads = 4;
    constexpr int linesPerThread = 500;
    const auto message = [](int thread, int line) {
        return std::to_string(thread) + " " + std::to_string(line) + " " +
               std::string(static_cast<size_t>(line % 7) * 300, static_cast<char>('a' + thread));
    };
    processLogReceiver();
    int pipeFds[2];
    ASSERT_EQ(0, pipe2(pipeFds, O_CLOEXEC));
    std::string written;
    std::thread reader([&written, readEnd = pipeFds[0]] {
        char chunk[65536];
        ssize_t size;
        while ((size = read(readEnd, chunk, sizeof(chunk))) > 0) {
            written.append(chunk, static_cast<size_t>(size));
        }
    });
    const int savedStderr = dup(STDERR_FILENO);
    dup2(pipeFds[1], STDERR_FILENO);
    close(pipeFds[1]);
    std::vector<std::thread> loggers;
    for (int thread = 0; thread < threads; ++thread) {
        loggers.emplace_back([thread, &message] {
            for (int line = 0; line < linesPerThread; ++line) {
                Log::Stream<Level::Info>("T") << message(thread, line);
            }
        });
    }
    for (std::thread& logger : loggers) {
        logger.join();
    }
    dup2(savedStderr, STDERR_FILENO);
    close(savedStderr);
    reader.join();
    close(pipeFds[0]);
    processLogReceiver().drain();

    std::istringstream lines(written);
    std::vector<int> nextLine(threads, 0);
    std::string line;
    while (std::getline(lines, line)) {
        int thread = -1;
        ASSERT_EQ(1, std::sscanf(line.c_str(), "I/T %d ", &thread)) << line.substr(0, 80);
        ASSERT_TRUE(thread >= 0 && thread < threads) << line.substr(0, 80);
        ASSERT_EQ("I/T " + message(thread, nextLine[thread]), line);
        ++nextLine[thread];
    }
    EXPECT_EQ(std::vector<int>(threads, linesPerThread), nextLine);
}

TEST(Assertion, FailedLogsTheFatalLineThenAborts)
{
    // Bound before the child is forked, so the child's record comes here.
    processLogReceiver();
    GTEST_FLAG_SET(death_test_style, "fast");
    // Where 32-bit programs run under qemu, the emulator adds a line of its
    // own about the abort.
    EXPECT_EXIT(velmo::utilities::assertThat(
                    false, "comms/src/Link:42: Assertion fdLinkSocket > 0 failed: no socket"),
                ::testing::KilledBySignal(SIGABRT),
                "^F/VELMO comms/src/Link:42: Assertion fdLinkSocket > 0 failed: no socket\n"
                "(qemu: uncaught target signal 6 \\(Aborted\\) - core dumped\n)?$");
    expectRecord(7, "VELMO", "comms/src/Link:42: Assertion fdLinkSocket > 0 failed: no socket");
}

} // namespace
