#ifndef VELMO_KVO_SIM_FAULT_H
#define VELMO_KVO_SIM_FAULT_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace velmo {
namespace kvo {
namespace sim {

// One misbehaviour of the engine, applied to the answer of one request.
struct Fault
{
    enum class Action
    {
        Close,      // close the connection instead of answering
        CloseAfter, // send the first `bytes` bytes of the framed answer, then close
        Split,      // send the framed answer in writes of `bytes` bytes, `wait` apart
        Double,     // send the framed answer twice in one write
        Version,    // answer in envelope version `text`
        Error,      // answer with ErrorCode `code` and Message `text`, command not carried out
        Garbage,    // send a framed text that is not XML
        Delay       // answer after `wait`
    };

    Action action = Action::Close;
    std::size_t bytes = 0;
    std::chrono::milliseconds wait{0};
    int code = 0;
    std::string text;
    std::string rule; // as the user wrote it, for the verbose lines
};

// Request number that stands for "every request" (`*`); real numbers start at 1.
constexpr std::uint64_t everyRequest = 0;

// Reads WHICH:ACTION[:ARGS]. On failure returns false and sets `error` to a one-line reason.
bool parseFault(const std::string& rule, std::uint64_t& which, Fault& fault, std::string& error);

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
