#ifndef AKVO_TESTS_SUPPORT_LOGRECEIVER_H
#define AKVO_TESTS_SUPPORT_LOGRECEIVER_H

#include "LogRecord.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace akvo {
namespace test {

using velmo::kvo::logcat::LogRecord;

// Stands in for the log daemon: a datagram socket bound at `path` (normally
// AKVO_TEST_LOGDW_PATH), removed again on destruction. The log writer keeps
// the socket it connected first, so a receiver should be in place before the
// process writes its first record.
class LogReceiver
{
public:
    explicit LogReceiver(const std::string& path);
    ~LogReceiver();

    // The next datagram as it arrived, or nothing after `timeout`.
    std::optional<std::vector<uint8_t>>
    nextDatagram(std::chrono::milliseconds timeout = std::chrono::seconds(5));

    // The next datagram decoded; a datagram that is not a record fails the test.
    std::optional<LogRecord> nextRecord(std::chrono::milliseconds timeout = std::chrono::seconds(5));

    // Every record that has already arrived.
    std::vector<LogRecord> drain();

    LogReceiver(const LogReceiver&) = delete;
    LogReceiver& operator=(const LogReceiver&) = delete;

private:
    std::string _path;
    int _fd;
};

#ifdef AKVO_TEST_LOGDW_PATH
// The receiver of the test binary's own log writer: bound on first use and
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
