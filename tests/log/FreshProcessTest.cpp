#include "ChildProcess.h"
#include "LogReceiver.h"
#include "ProgramRun.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <ostream>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>
#include <vector>

using akvo::test::LogReceiver;
using namespace std::chrono_literals;

namespace {

// The writer reads its environment when it is loaded, so a case that needs
// another value of `variable` (null: unset) is a disabled test of this
// binary that runs in a new process of its own.
void expectPassesWhenLoadedWith(const std::string& test, const char* variable, const char* value)
{
    if (value != nullptr) {
        setenv(variable, value, 1);
    } else {
        unsetenv(variable);
    }
    const akvo::test::ProgramOutput run = akvo::test::runProgram(
        {"/proc/self/exe", "--gtest_filter=" + test, "--gtest_also_run_disabled_tests"});
    unsetenv(variable);
    EXPECT_EQ(0, run.exitStatus);
    EXPECT_NE(std::string::npos, run.standardOutput.find("[  PASSED  ] 1 test.")) << run.standardOutput;
}

const char* const socketPath = AKVO_TEST_LOGDW_PATH;

int writeText(const char* message)
{
    return __android_log_write(4, "T", message);
}

void expectReceived(LogReceiver& receiver, const std::string& message)
{
    const auto record = receiver.nextRecord();
    ASSERT_TRUE(record) << "nothing received, expected " << message;
    EXPECT_EQ(message, record->message);
}

// Linux reports a vanished peer once, as ECONNREFUSED, and only the records
// after that find the socket not connected and reconnect.
void reconnectsWhenTheDaemonComesBack()
{
    std::optional<LogReceiver> receiver(std::in_place, socketPath);
    EXPECT_EQ(5, writeText("1"));
    expectReceived(*receiver, "1");
    receiver.reset();
    EXPECT_EQ(-ECONNREFUSED, writeText("2"));
    receiver.emplace(socketPath);
    EXPECT_EQ(5, writeText("3"));
    expectReceived(*receiver, "3");
}

// The resend after a reconnect carries every buffer of the record, even those
// that the payload limit left out of the first send.
void resendsEveryBufferAfterReconnecting()
{
    const std::string longTag(5000, 't');
    std::optional<LogReceiver> receiver(std::in_place, socketPath);
    EXPECT_EQ(4076, __android_log_write(4, longTag.c_str(), "m"));
    receiver.reset();
    EXPECT_EQ(-ECONNREFUSED, writeText("lost"));
    receiver.emplace(socketPath);
    EXPECT_EQ(4078, __android_log_write(4, longTag.c_str(), "m"));
    const auto datagram = receiver->nextDatagram();
    ASSERT_TRUE(datagram);
    EXPECT_EQ("\x04" + longTag.substr(0, 4075) + std::string("m\0", 2),
              std::string(datagram->begin() + 11, datagram->end()));
}

void stopsForGoodWhenTheReconnectFails()
{
    std::optional<LogReceiver> receiver(std::in_place, socketPath);
    EXPECT_EQ(5, writeText("1"));
    receiver.reset();
    EXPECT_EQ(-ECONNREFUSED, writeText("2"));
    EXPECT_EQ(-ENOENT, writeText("3"));
    receiver.emplace(socketPath);
    EXPECT_EQ(-EBADF, writeText("4"));
    EXPECT_FALSE(receiver->nextDatagram(100ms));
}

void logsNothingMoreWhenNoSocketCanBeCreated()
{
    rlimit saved;
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &saved));
    const rlimit noDescriptors = {0, saved.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &noDescriptors));
    const int first = writeText("1");
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &saved));
    EXPECT_EQ(-EMFILE, first);
    LogReceiver receiver(socketPath);
    EXPECT_EQ(-1, writeText("2"));
    EXPECT_FALSE(receiver.nextDatagram(100ms));
}

// Root's user id 0 is read again on every record; the daemon's is kept.
void dropsTheRecordsOfTheLogDaemonUser()
{
    LogReceiver receiver(socketPath);
    EXPECT_EQ(5, writeText("1"));
    expectReceived(receiver, "1");
    ASSERT_EQ(0, setresuid(1036, 1036, 0));
    EXPECT_EQ(0, writeText("2"));
    ASSERT_EQ(0, setresuid(0, 0, 0));
    EXPECT_EQ(0, writeText("3"));
    EXPECT_FALSE(receiver.nextDatagram(100ms));
}

void deviceAvailabilityIsDecidedOnce()
{
    unlink(socketPath);
    EXPECT_EQ(0, __android_log_dev_available());
    LogReceiver receiver(socketPath);
    EXPECT_EQ(0, __android_log_dev_available());
}

struct LifecycleCase
{
    const char* name;
    void (*run)();
};

void PrintTo(const LifecycleCase& c, std::ostream* os)
{
    *os << c.name;
}

class WriterLifecycle : public ::testing::TestWithParam<LifecycleCase>
{
};

// The writer keeps the socket it first connected for the life of the
// process; the parent never writes, so each child starts with none.
TEST_P(WriterLifecycle, HoldsInAFreshProcess)
{
    akvo::test::expectPassesInChild(GetParam().run);
}

INSTANTIATE_TEST_SUITE_P(
    Scenarios, WriterLifecycle,
    ::testing::Values(
        LifecycleCase{"ReconnectsWhenTheDaemonComesBack", reconnectsWhenTheDaemonComesBack},
        LifecycleCase{"ResendsEveryBufferAfterReconnecting", resendsEveryBufferAfterReconnecting},
        LifecycleCase{"StopsForGoodWhenTheReconnectFails", stopsForGoodWhenTheReconnectFails},
        LifecycleCase{"LogsNothingMoreWhenNoSocketCanBeCreated", logsNothingMoreWhenNoSocketCanBeCreated},
        LifecycleCase{"DeviceAvailabilityIsDecidedOnce", deviceAvailabilityIsDecidedOnce}),
    [](const ::testing::TestParamInfo<LifecycleCase>& info) { return std::string(info.param.name); });

struct LimitCase
{
    const char* name;
    // LIBLOG_THROUGHPUT_LIMIT, or null to leave it unset.
    const char* value;
    uint32_t threshold;
    uint32_t sleepUs;
    unsigned records;
    // The records sent after a pause.
    std::vector<unsigned> paused;
};

const LimitCase limitCases[] = {
    {"hundredPer10ms", "100/10", 100, 10000, 101, {100}},
    {"everyRecord", "0/5", 0, 5000, 3, {1, 2, 3}},
    {"noPause", "100/0", 100, 0, 3, {}},
    {"recordsOnly", "100", 0, 0, 3, {}},
    {"word", "fast", 0, 0, 3, {}},
    {"unset", nullptr, 0, 0, 3, {}},
    {"negativeWraps", "-5/10", 4294967291u, 10000, 3, {}},
    {"trailingText", "2/1ms", 2, 1000, 3, {2}},
    {"millisecondsWrap", "5/4294968", 5, 704, 5, {5}},
};

TEST(ThroughputInFreshProcess, DISABLED_FollowsItsEnvironment)
{
    const LimitCase& c = limitCases[std::strtoul(std::getenv("AKVO_LIMIT_CASE"), nullptr, 10)];
    EXPECT_EQ(0u, throughput_limit.count);
    EXPECT_EQ(c.threshold, throughput_limit.threshold);
    EXPECT_EQ(c.sleepUs, throughput_limit.sleep_us);

    LogReceiver receiver(socketPath);
    uint32_t sincePause = 0;
    for (unsigned record = 1; record <= c.records; ++record) {
        const auto start = std::chrono::steady_clock::now();
        writeText("m");
        const auto elapsed = std::chrono::steady_clock::now() - start;
        EXPECT_TRUE(receiver.nextDatagram());

        const bool paused = std::count(c.paused.begin(), c.paused.end(), record) != 0;
        sincePause = paused ? 0 : sincePause + 1;
        EXPECT_EQ(c.sleepUs == 0 ? 0 : sincePause, throughput_limit.count) << "after record " << record;
        if (paused) {
            EXPECT_GE(elapsed, std::chrono::microseconds(c.sleepUs)) << "record " << record;
        }
    }
}

TEST(WriterLifecycle, DropsTheRecordsOfTheLogDaemonUser)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "switching to the log daemon's user id needs root";
    }
    akvo::test::expectPassesInChild(dropsTheRecordsOfTheLogDaemonUser);
}

class ThroughputLimit : public ::testing::TestWithParam<size_t>
{
};

TEST_P(ThroughputLimit, IsReadFromTheEnvironmentAtLoadTime)
{
    setenv("AKVO_LIMIT_CASE", std::to_string(GetParam()).c_str(), 1);
    expectPassesWhenLoadedWith("ThroughputInFreshProcess.DISABLED_FollowsItsEnvironment",
                               "LIBLOG_THROUGHPUT_LIMIT", limitCases[GetParam()].value);
}

INSTANTIATE_TEST_SUITE_P(Values, ThroughputLimit, ::testing::Range<size_t>(0, std::size(limitCases)),
                         [](const ::testing::TestParamInfo<size_t>& info) {
                             return std::string(limitCases[info.param].name);
                         });

const std::string overridePath = socketPath + std::string(".override");

struct SocketPathCase
{
    const char* name;
    // AKVO_LOG_SOCKET, or null to leave it unset.
    const char* value;
    // Where the record arrives; null: nowhere.
    const char* receivedAt;
    int written;
};

const std::string tooLongPath = "/tmp/" + std::string(103, 'l');

const SocketPathCase socketPathCases[] = {
    {"unset", nullptr, socketPath, 5},
    {"empty", "", socketPath, 5},
    {"set", overridePath.c_str(), overridePath.c_str(), 5},
    {"tooLong", tooLongPath.c_str(), nullptr, -ENAMETOOLONG},
};

TEST(LogSocketInFreshProcess, DISABLED_FollowsItsEnvironment)
{
    const SocketPathCase& c = socketPathCases[std::strtoul(std::getenv("AKVO_SOCKET_CASE"), nullptr, 10)];
    LogReceiver builtIn(socketPath);
    LogReceiver overridden(overridePath);
    EXPECT_EQ(c.written, writeText("m"));
    EXPECT_EQ(c.written > 0 ? 1 : 0, __android_log_dev_available());
    // A datagram is in the receiver's queue once the send has returned.
    const std::pair<const char*, LogReceiver*> receivers[] = {{socketPath, &builtIn},
                                                              {overridePath.c_str(), &overridden}};
    for (const auto& [path, receiver] : receivers) {
        const bool expected = c.receivedAt != nullptr && std::string(c.receivedAt) == path;
        EXPECT_EQ(expected, receiver->nextDatagram(0ms).has_value()) << path;
    }
}

class LogSocketPath : public ::testing::TestWithParam<size_t>
{
};

TEST_P(LogSocketPath, IsReadFromTheEnvironmentAtLoadTime)
{
    setenv("AKVO_SOCKET_CASE", std::to_string(GetParam()).c_str(), 1);
    expectPassesWhenLoadedWith("LogSocketInFreshProcess.DISABLED_FollowsItsEnvironment", "AKVO_LOG_SOCKET",
                               socketPathCases[GetParam()].value);
}

INSTANTIATE_TEST_SUITE_P(Values, LogSocketPath, ::testing::Range<size_t>(0, std::size(socketPathCases)),
                         [](const ::testing::TestParamInfo<size_t>& info) {
                             return std::string(socketPathCases[info.param].name);
                         });

} // namespace
