#include "LogReceiver.h"

#include "RecordDecoder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace akvo {
namespace test {

LogReceiver::LogReceiver(const std::string& path)
    : _path(path), _fd(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    unlink(path.c_str());
    if (_fd < 0 || bind(_fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) < 0) {
        ADD_FAILURE() << "cannot bind a log receiver at " << path << ": " << std::strerror(errno);
    }
}

LogReceiver::~LogReceiver()
{
    if (_fd >= 0) {
        close(_fd);
    }
    unlink(_path.c_str());
}

std::optional<std::vector<uint8_t>> LogReceiver::nextDatagram(std::chrono::milliseconds timeout)
{
    pollfd entry = {_fd, POLLIN, 0};
    if (poll(&entry, 1, static_cast<int>(timeout.count())) != 1) {
        return std::nullopt;
    }
    std::vector<uint8_t> datagram(65536);
    const ssize_t size = recv(_fd, datagram.data(), datagram.size(), MSG_DONTWAIT);
    if (size < 0) {
        return std::nullopt;
    }
    datagram.resize(static_cast<size_t>(size));
    return datagram;
}

std::optional<LogRecord> LogReceiver::nextRecord(std::chrono::milliseconds timeout)
{
    const std::optional<std::vector<uint8_t>> datagram = nextDatagram(timeout);
    if (!datagram) {
        return std::nullopt;
    }
    LogRecord record;
    std::string error;
    if (!velmo::kvo::logcat::decodeRecord(datagram->data(), datagram->size(), record, error)) {
        ADD_FAILURE() << "the log receiver got a datagram that is not a record: " << error;
        return std::nullopt;
    }
    return record;
}

std::vector<LogRecord> LogReceiver::drain()
{
    std::vector<LogRecord> records;
    while (std::optional<LogRecord> record = nextRecord(std::chrono::milliseconds(0))) {
        records.push_back(*record);
    }
    return records;
}

} // namespace test
} // namespace akvo
