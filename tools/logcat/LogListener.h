#ifndef VELMO_KVO_LOGCAT_LOGLISTENER_H
#define VELMO_KVO_LOGCAT_LOGLISTENER_H

#include "StopSignals.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/types.h>
#include <vector>

namespace velmo {
namespace kvo {
namespace logcat {

// The datagram socket that stands in for the log daemon's. A socket file
// that nobody receives on any more is replaced at bind; a live one, or a file
// that is no socket, is left alone. On destruction the socket file is removed
// only if it is still the one this listener bound.
class LogListener
{
public:
    enum class BindOutcome
    {
        Bound,
        Refused, // the user's path cannot be used
        Failed   // the system refused a socket
    };

    enum class Outcome
    {
        Datagram,
        Oversized,
        Stopped,
        Failed
    };

    explicit LogListener(const StopSignals& signals);
    ~LogListener();

    // On failure `error` holds a one-line reason.
    BindOutcome bind(const std::string& path, std::string& error);

    // Waits for the next datagram or a stop signal. Oversized: the datagram
    // had `size` bytes, more than the buffer holds, and was dropped.
    Outcome receive(std::vector<uint8_t>& datagram, size_t& size, std::string& error);

    LogListener(const LogListener&) = delete;
    LogListener& operator=(const LogListener&) = delete;

private:
    BindOutcome clearPath(const std::string& path, std::string& error);

    const StopSignals& _signals;
    int _fd;
    std::string _path;
    dev_t _device = 0;
    ino_t _inode = 0;
};

} // namespace logcat
} // namespace kvo
} // namespace velmo

#endif
