#include "FreshProcess.h"
#include "LogReceiver.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using akvo::test::LogReceiver;
using akvo::test::passesInFreshProcess;
using namespace std::chrono_literals;

namespace {

// Each of these needs a process whose writer has not written yet; the parent
// tests below run them one by one in fresh processes.

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

// The socket file that a daemon leaves behind when it dies.
void leaveStaleSocketFile()
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, socketPath, sizeof(address.sun_path) - 1);
    const int fd = socket(AF_UNIX, SOCK_DGRAM, 0);
    ASSERT_EQ(0, bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)));
    close(fd);
}

TEST(InFreshProcess, DISABLED_RetriesTheConnectUntilTheDaemonIsThere)
{
    unlink(socketPath);
    EXPECT_EQ(-ENOENT, writeText("1"));
    leaveStaleSocketFile();
    EXPECT_EQ(-ECONNREFUSED, writeText("2"));
    LogReceiver receiver(socketPath);
    EXPECT_EQ(5, writeText("3"));
    expectReceived(receiver, "3");
}

// Linux reports a vanished peer once, as ECONNREFUSED, and only the records
// after that find the socket not connected and reconnect.
TEST(InFreshProcess, DISABLED_ReconnectsWhenTheDaemonComesBack)
{
    std::optional<LogReceiver> receiver(std::in_place, socketPath);
    EXPECT_EQ(5, writeText("1"));
    expectReceived(*receiver, "1");
    receiver.reset();
    EXPECT_EQ(-ECONNREFUSED, writeText("2"));
    receiver.emplace(socketPath);
    EXPECT_EQ(5, writeText("3"));
    expectReceived(*receiver, "3");
    EXPECT_EQ(5, writeText("4"));
    expectReceived(*receiver, "4");
}

// The resend after a reconnect carries every buffer of the record, even those
// that the payload limit left out of the first send.
TEST(InFreshProcess, DISABLED_ResendsEveryBufferAfterReconnecting)
{
    const std::string longTag(5000, 't');
    std::optional<LogReceiver> receiver(std::in_place, socketPath);
    EXPECT_EQ(4076, __android_log_write(4, longTag.c_str(), "m"));
    EXPECT_TRUE(receiver->nextDatagram());
    receiver.reset();
    EXPECT_EQ(-ECONNREFUSED, writeText("lost"));
    receiver.emplace(socketPath);

    EXPECT_EQ(4078, __android_log_write(4, longTag.c_str(), "m"));

    const auto datagram = receiver->nextDatagram();
    ASSERT_TRUE(datagram);
    const std::string payload(datagram->begin() + 11, datagram->end());
    EXPECT_EQ("\x04" + longTag.substr(0, 4075) + std::string("m\0", 2), payload);
}

TEST(InFreshProcess, DISABLED_StopsForGoodWhenTheReconnectFails)
{
    std::optional<LogReceiver> receiver(std::in_place, socketPath);
    EXPECT_EQ(5, writeText("1"));
    receiver.reset();
    EXPECT_EQ(-ECONNREFUSED, writeText("2"));
    EXPECT_EQ(-ENOENT, writeText("3"));
    receiver.emplace(socketPath);
    EXPECT_EQ(-EBADF, writeText("4"));
    EXPECT_EQ(-EBADF, writeText("5"));
    EXPECT_FALSE(receiver->nextDatagram(100ms));
}

TEST(InFreshProcess, DISABLED_LogsNothingMoreWhenNoSocketCanBeCreated)
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
    EXPECT_EQ(-1, writeText("3"));
    EXPECT_FALSE(receiver.nextDatagram(100ms));
}

// Root's user id 0 is read again on every record; the daemon's is kept.
TEST(InFreshProcess, DISABLED_DropsTheRecordsOfTheLogDaemonUser)
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

TEST(InFreshProcess, DISABLED_DeviceStaysAvailableOnceSeen)
{
    std::optional<LogReceiver> receiver(std::in_place, socketPath);
    EXPECT_EQ(1, __android_log_dev_available());
    receiver.reset();
    EXPECT_EQ(1, __android_log_dev_available());
}

TEST(InFreshProcess, DISABLED_DeviceStaysUnavailableOnceMissed)
{
    unlink(socketPath);
    EXPECT_EQ(0, __android_log_dev_available());
    LogReceiver receiver(socketPath);
    EXPECT_EQ(0, __android_log_dev_available());
}

class WriterLifecycle : public ::testing::TestWithParam<const char*>
{
};

TEST_P(WriterLifecycle, HoldsInAFreshProcess)
{
    EXPECT_TRUE(passesInFreshProcess(std::string("InFreshProcess.DISABLED_") + GetParam()));
}

INSTANTIATE_TEST_SUITE_P(
    Scenarios, WriterLifecycle,
    ::testing::Values("RetriesTheConnectUntilTheDaemonIsThere", "ReconnectsWhenTheDaemonComesBack",
                      "ResendsEveryBufferAfterReconnecting", "StopsForGoodWhenTheReconnectFails",
                      "LogsNothingMoreWhenNoSocketCanBeCreated", "DeviceStaysAvailableOnceSeen",
                      "DeviceStaysUnavailableOnceMissed"),
    [](const ::testing::TestParamInfo<const char*>& info) { return info.param; });

TEST(WriterLifecycle, DropsTheRecordsOfTheLogDaemonUser)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "switching to the log daemon's user id needs root";
    }
    EXPECT_TRUE(passesInFreshProcess("InFreshProcess.DISABLED_DropsTheRecordsOfTheLogDaemonUser"));
}

} // namespace
