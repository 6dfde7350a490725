#ifndef VELMO_KVO_LOGCAT_LOGLISTENER_H
#define VELMO_KVO_LOGCAT_LOGLISTENER_H

#include "StopSignals.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace velmo {
namespace kvo {
namespace logcat {

// The datagram socket that stands in for the log daemon's. Owns the socket
// file: a stale one is replaced at bind, and it is removed on destruction.
class LogListener
{
public:
    enum class Outcome
    {
        Datagram,
        Oversized,
        Stopped,
        Failed
    };

    explicit LogListener(const StopSignals& signals);
    ~LogListener();

    bool bind(const std::string& path, std::string& error);

    // Waits for the next datagram or a stop signal. Oversized: the datagram
    // had `size` bytes, more than the buffer holds, and was dropped.
    Outcome receive(std::vector<uint8_t>& datagram, size_t& size, std::string& error);

    LogListener(const LogListener&) = delete;
    LogListener& operator=(const LogListener&) = delete;

private:
    const StopSignals& _signals;
    int _fd;
    std::string _path;
};

} // namespace logcat
} // namespace kvo
} // namespace velmo

#endif
