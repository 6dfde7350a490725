#ifndef VELMO_KVO_SIM_CONNECTION_H
#define VELMO_KVO_SIM_CONNECTION_H

#include "FrameBuffer.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace velmo {
namespace kvo {
namespace sim {

class Log;

using Clock = std::chrono::steady_clock;

// What goes back to a client for one request: bytes, when and how to write
// them, and whether the connection ends after them.
struct Delivery
{
    std::string bytes;
    Clock::time_point due;
    std::size_t writeSize = 0; // 0: all at once; otherwise one write of this size per `pause`
    Clock::duration pause{};
    bool closeAfter = false;
    std::string logLine; // verbose line printed when the delivery starts
    std::size_t offset = 0;
    bool started = false;
};

// One client socket (non-blocking) with its input and output buffers and
// the deliveries waiting their turn. Deliveries leave in the order their
// requests arrived, whatever their delays, as a client expects.
class Connection
{
public:
    enum class Input
    {
        Open,
        Ended, // the client shut its side down; what is queued is still sent
        Failed
    };

    Connection(int fd, std::uint64_t number);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    int fd() const { return _fd; }
    std::uint64_t number() const { return _number; }

    // Reads what has arrived and appends the whole messages to `messages`.
    Input read(std::vector<std::string>& messages);
    std::size_t bufferedInput() const { return _input.size(); }
    // After a close is queued nothing more is read or answered.
    void stopReading() { _reading = false; }
    void queue(Delivery delivery);
    // Moves the bytes whose time has come to the output buffer.
    void advance(Clock::time_point now, const Log& log);
    // Writes as much output as the socket takes; false when the client is gone.
    bool flush();

    // A client that sends requests without reading the answers would make them
    // pile up here without end; its requests wait in the socket instead.
    bool wantsRead() const { return _reading && !_inputEnded && unsentBytes() < maxUnsentBytes; }
    bool wantsWrite() const { return !_output.empty(); }
    // When advance has something to do next, if it waits for a time rather than for the socket.
    std::optional<Clock::time_point> nextDue() const;
    bool finished() const;

private:
    static constexpr std::size_t maxUnsentBytes = 1 << 20;

    std::size_t unsentBytes() const { return _output.size() + _queuedBytes; }

    int _fd;
    std::uint64_t _number;
    FrameBuffer _input;
    std::string _output;
    std::deque<Delivery> _deliveries;
    // The bytes of `_deliveries` not yet moved to `_output`.
    std::size_t _queuedBytes = 0;
    bool _reading = true;
    bool _inputEnded = false;
    bool _closeWhenFlushed = false;
};

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
