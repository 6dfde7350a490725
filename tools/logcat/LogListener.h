#ifndef VELMO_KVO_LOGCAT_LOGLISTENER_H
#define VELMO_KVO_LOGCAT_LOGLISTENER_H

#include "OwnedSocket.h"
#include "StopSignals.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/socket.h>
#include <vector>

namespace velmo {
namespace kvo {
namespace logcat {

// The datagram socket that stands in for the log daemon's.
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

    explicit LogListener(const StopSignals& signals) : _signals(signals) {}

    // Binds the socket and asks for each sender's credentials. On failure
    // `error` holds a one-line reason.
    tools::OwnedSocket::Outcome bind(const std::string& path, std::string& error);

    // Waits for the next datagram or a stop signal; `sender` holds the pid and
    // the user id of the process that sent it. Oversized: the datagram had
    // `size` bytes, more than the buffer holds, and was dropped.
    Outcome receive(std::vector<uint8_t>& datagram, size_t& size, ucred& sender, std::string& error);

    LogListener(const LogListener&) = delete;
    LogListener& operator=(const LogListener&) = delete;

private:
    const StopSignals& _signals;
    tools::OwnedSocket _socket;
};

} // namespace logcat
} // namespace kvo
} // namespace velmo

#endif
