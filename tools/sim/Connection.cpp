#include "Connection.h"

#include "Log.h"

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace sim {

namespace {

constexpr std::size_t readSize = 4096;
// Bounds the time one busy client holds the loop before others get their turn.
constexpr int readsPerWakeUp = 16;

} // namespace

Connection::Connection(int fd, std::uint64_t number) : _fd(fd), _number(number) {}

Connection::~Connection()
{
    // Closing a Unix socket with unread input makes the client's next read fail
    // with ECONNRESET instead of seeing the end of the stream; read it away first.
    char discard[readSize];
    for (int i = 0; i < readsPerWakeUp; ++i) {
        if (::read(_fd, discard, sizeof discard) <= 0) {
            break;
        }
    }
    ::close(_fd);
}

Connection::Input Connection::read(std::vector<std::string>& messages)
{
    char buffer[readSize];
    for (int i = 0; i < readsPerWakeUp && wantsRead(); ++i) {
        ssize_t got = ::read(_fd, buffer, sizeof buffer);
        if (got > 0) {
            _input.append(buffer, static_cast<std::size_t>(got));
            continue;
        }
        if (got == 0) {
            _inputEnded = true;
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            break;
        } else if (errno != EINTR) {
            return Input::Failed;
        }
    }
    std::string message;
    while (_reading && _input.next(message)) {
        messages.push_back(message);
    }
    return _inputEnded ? Input::Ended : Input::Open;
}

void Connection::queue(Delivery delivery)
{
    _queuedBytes += delivery.bytes.size() - delivery.offset;
    _deliveries.push_back(std::move(delivery));
}

void Connection::advance(Clock::time_point now, const Log& log)
{
    while (!_deliveries.empty() && !_closeWhenFlushed) {
        Delivery& delivery = _deliveries.front();
        // Each piece of a split delivery must leave in a write of its own.
        if (now < delivery.due || (delivery.writeSize != 0 && !_output.empty())) {
            return;
        }
        if (!delivery.started) {
            delivery.started = true;
            if (!delivery.logLine.empty()) {
                log.verbose(delivery.logLine);
            }
        }
        std::size_t left = delivery.bytes.size() - delivery.offset;
        std::size_t size = delivery.writeSize == 0 ? left : std::min(left, delivery.writeSize);
        _output.append(delivery.bytes, delivery.offset, size);
        delivery.offset += size;
        _queuedBytes -= size;
        if (delivery.offset < delivery.bytes.size()) {
            delivery.due = now + delivery.pause;
            return;
        }
        _closeWhenFlushed = delivery.closeAfter;
        _deliveries.pop_front();
    }
}

bool Connection::flush()
{
    while (!_output.empty()) {
        ssize_t sent = ::send(_fd, _output.data(), _output.size(), MSG_NOSIGNAL);
        if (sent >= 0) {
            _output.erase(0, static_cast<std::size_t>(sent));
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            return true;
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

std::optional<Clock::time_point> Connection::nextDue() const
{
    if (_deliveries.empty() || _closeWhenFlushed || !_output.empty()) {
        return std::nullopt;
    }
    return _deliveries.front().due;
}

bool Connection::finished() const
{
    if (!_output.empty()) {
        return false;
    }
    return _closeWhenFlushed || (_inputEnded && _deliveries.empty());
}

} // namespace sim
} // namespace kvo
} // namespace velmo
