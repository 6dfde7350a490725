#ifndef AKVO_TESTS_SUPPORT_LOGRECEIVER_H
#define AKVO_TESTS_SUPPORT_LOGRECEIVER_H

#include "RecordDecoder.h"
#include "UnixSocket.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace akvo {
namespace test {

using velmo::kvo::logcat::LogRecord;

// Stands in for the log daemon: a datagram socket bound at `path`, removed
// again on destruction. The log writer keeps the socket it connected first,
// so a receiver should be in place before the process writes its first record.
class LogReceiver
{
public:
    explicit LogReceiver(const std::string& path) : _path(path)
    {
        // What an earlier, interrupted run left there would make the bind fail.
        unlink(path.c_str());
        _fd = boundUnixSocket(SOCK_DGRAM, path);
        if (_fd < 0) {
            ADD_FAILURE() << "cannot bind a log receiver at " << path << ": " << std::strerror(errno);
        }
    }

    ~LogReceiver()
    {
        close(_fd);
        unlink(_path.c_str());
    }

    // The next datagram as it arrived, or nothing after `timeout`.
    std::optional<std::vector<uint8_t>>
    nextDatagram(std::chrono::milliseconds timeout = std::chrono::seconds(5))
    {
        pollfd entry = {_fd, POLLIN, 0};
        std::vector<uint8_t> datagram(65536);
        const ssize_t size = poll(&entry, 1, static_cast<int>(timeout.count())) == 1
                                 ? recv(_fd, datagram.data(), datagram.size(), MSG_DONTWAIT)
                                 : -1;
        if (size < 0) {
            return std::nullopt;
        }
        datagram.resize(static_cast<size_t>(size));
        return datagram;
    }

    // The next datagram decoded; a datagram that is not a record fails the test.
    std::optional<LogRecord> nextRecord(std::chrono::milliseconds timeout = std::chrono::seconds(5))
    {
        const std::optional<std::vector<uint8_t>> datagram = nextDatagram(timeout);
        LogRecord record;
        std::string error;
        if (!datagram) {
            return std::nullopt;
        }
        if (velmo::kvo::logcat::decodeRecord(datagram->data(), datagram->size(), record, error)) {
            return record;
        }
        ADD_FAILURE() << "the log receiver got a datagram that is not a record: " << error;
        return std::nullopt;
    }

    // Every record that has already arrived.
    std::vector<LogRecord> drain()
    {
        std::vector<LogRecord> records;
        while (std::optional<LogRecord> record = nextRecord(std::chrono::milliseconds(0))) {
            records.push_back(*record);
        }
        return records;
    }

    LogReceiver(const LogReceiver&) = delete;
    LogReceiver& operator=(const LogReceiver&) = delete;

private:
    std::string _path;
    int _fd;
};

// A datagram as the log writer sends it, from thread 77 at
// 1970-02-01 01:01:01.123456789 UTC, in log `logId`.
inline std::string recordDatagram(uint8_t logId, const std::string& payload)
{
    return std::string(1, static_cast<char>(logId)) +
           std::string("\x4d\x00\xcd\xec\x28\x00\x15\xcd\x5b\x07", 10) + payload;
}

#ifdef AKVO_TEST_LOGDW_PATH
// The receiver of the test binary's own log writer, bound on first use and
// kept for the life of the process, since the writer connects only once.
inline LogReceiver& processLogReceiver()
{
    static LogReceiver receiver(AKVO_TEST_LOGDW_PATH);
    return receiver;
}
#endif

} // namespace test
} // namespace akvo

#endif
