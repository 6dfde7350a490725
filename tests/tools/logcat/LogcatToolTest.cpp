#include "LogcatProcess.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <cctype>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace std::string_literals;
using akvo::test::LogcatProcess;

namespace {

// A socket path in a directory of its own, both removed afterwards.
class TempSocketPath
{
public:
    TempSocketPath()
    {
        char directory[] = "/tmp/akvo-logcat-XXXXXX";
        EXPECT_NE(nullptr, mkdtemp(directory));
        _directory = directory;
        path = _directory + "/logdw";
    }

    ~TempSocketPath()
    {
        unlink(path.c_str());
        rmdir(_directory.c_str());
    }

    std::string path;

private:
    std::string _directory;
};

void sendDatagram(const std::string& path, const std::string& bytes)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    const int fd = socket(AF_UNIX, SOCK_DGRAM, 0);
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()),
              sendto(fd, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&address),
                     sizeof(address)));
    close(fd);
}

// Thread 77, 1970-02-01 01:01:01.123456789 UTC.
std::string datagram(uint8_t logId, const std::string& payload)
{
    return std::string(1, static_cast<char>(logId)) + "\x4d\x00\xcd\xec\x28\x00\x15\xcd\x5b\x07"s + payload;
}

bool exitedCleanly(int status)
{
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// What follows the "MM-DD HH:MM:SS.mmm " of a line, or the line itself
// marked as having no such timestamp.
std::string afterTimestamp(const std::string& line)
{
    const std::string shape = "00-00 00:00:00.000 ";
    for (size_t i = 0; i < shape.size(); ++i) {
        const bool matches =
            i < line.size() &&
            (shape[i] == '0' ? std::isdigit(static_cast<unsigned char>(line[i])) : line[i] == shape[i]);
        if (!matches) {
            return "no timestamp: " + line;
        }
    }
    return line.substr(shape.size());
}

bool exists(const std::string& path)
{
    return access(path.c_str(), F_OK) == 0;
}

// The test binary's own log writer sends to AKVO_TEST_LOGDW_PATH, where
// akvo-logcat stands in for the daemon.
TEST(Logcat, ShowsTheRecordsThatAProgramWrites)
{
    LogcatProcess logcat({"--socket", AKVO_TEST_LOGDW_PATH});
    ASSERT_EQ("akvo-logcat: listening on "s + AKVO_TEST_LOGDW_PATH, logcat.errorLine());

    EXPECT_EQ(24, __android_log_write(4, "AKVO", "hello from a test"));
    EXPECT_EQ(12, __android_log_bswrite(7, "abc"));

    const std::string thread = std::to_string(gettid() & 0xffff);
    const auto text = logcat.outputLine();
    ASSERT_TRUE(text);
    EXPECT_EQ(thread + " I/AKVO: hello from a test", afterTimestamp(*text));
    const auto event = logcat.outputLine();
    ASSERT_TRUE(event);
    EXPECT_EQ(thread + " event 7 (string): abc", afterTimestamp(*event));

    EXPECT_TRUE(exitedCleanly(logcat.stop(SIGTERM)));
    EXPECT_FALSE(exists(AKVO_TEST_LOGDW_PATH));
}

TEST(Logcat, PrintsJsonLines)
{
    TempSocketPath socket;
    LogcatProcess logcat({"--json", "--socket", socket.path});
    ASSERT_TRUE(logcat.errorLine());

    sendDatagram(socket.path, datagram(1, "\x04RILJ\0m\0"s));
    sendDatagram(socket.path, datagram(2, "\x2a\0\0\0\x01\xaa\xbb"s));

    EXPECT_EQ(R"({"id":1,"tid":77,"sec":2682061,"nsec":123456789,"kind":"text","priority":4,"tag":"RILJ",)"
              R"("message":"m"})",
              logcat.outputLine());
    EXPECT_EQ(R"({"id":2,"tid":77,"sec":2682061,"nsec":123456789,"kind":"binary","event":42,"type":1,)"
              R"("payload":"aabb"})",
              logcat.outputLine());
    EXPECT_TRUE(exitedCleanly(logcat.stop(SIGINT)));
    EXPECT_FALSE(exists(socket.path));
}

TEST(Logcat, WarnsAboutMalformedDatagramsAndGoesOn)
{
    TempSocketPath socket;
    LogcatProcess logcat({"--socket", socket.path});
    ASSERT_TRUE(logcat.errorLine());

    sendDatagram(socket.path, "short");
    sendDatagram(socket.path, datagram(0, "\x04TAG"));
    sendDatagram(socket.path, datagram(2, "\x2a\0\0\0\x02\x09\0\0\0"
                                          "abc"s));
    sendDatagram(socket.path, datagram(0, "\x06T\0still here\0"s));

    EXPECT_EQ(
        "akvo-logcat: skipped malformed record: datagram of 5 bytes, shorter than the 11-byte record header",
        logcat.errorLine());
    EXPECT_EQ("akvo-logcat: skipped malformed record: text record without a NUL after the tag",
              logcat.errorLine());
    EXPECT_EQ("akvo-logcat: skipped malformed record: string event declares 9 bytes but carries 3",
              logcat.errorLine());
    EXPECT_EQ("02-01 01:01:01.123 77 E/T: still here", logcat.outputLine());
    EXPECT_TRUE(exitedCleanly(logcat.stop(SIGTERM)));
}

TEST(Logcat, ReplacesAStaleSocketFile)
{
    TempSocketPath socket;
    std::ofstream(socket.path) << "left over";
    LogcatProcess logcat({"--socket", socket.path});
    ASSERT_EQ("akvo-logcat: listening on " + socket.path, logcat.errorLine());

    sendDatagram(socket.path, datagram(0, "\x04T\0m\0"s));
    EXPECT_EQ("02-01 01:01:01.123 77 I/T: m", logcat.outputLine());
    EXPECT_TRUE(exitedCleanly(logcat.stop(SIGTERM)));
}

TEST(Logcat, FailsClearlyWhenItCannotBind)
{
    LogcatProcess logcat({"--socket", "/nonexistent-akvo-directory/logdw"});
    EXPECT_EQ("akvo-logcat: cannot bind /nonexistent-akvo-directory/logdw: No such file or directory",
              logcat.errorLine());
    const int status = logcat.wait();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1);
}

} // namespace
