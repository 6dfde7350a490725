#ifndef VELMO_KVO_LIPSYNCAPI_DEADLINE_H
#define VELMO_KVO_LIPSYNCAPI_DEADLINE_H

#include "Turn.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// A handle's deadline for one call, counted from the call's start; 0 ms is
// no deadline. It also words the results of a call that it ended.
class Deadline
{
public:
    using Clock = std::chrono::steady_clock;

    explicit Deadline(uint32_t milliseconds)
        : _milliseconds(milliseconds), _at(Clock::now() + std::chrono::milliseconds(milliseconds))
    {
    }

    bool isSet() const { return _milliseconds != 0; }
    Clock::time_point at() const { return _at; }

    // The time left, at least 1 us, so that a wait that can end at once
    // still gets its chance.
    std::chrono::microseconds left() const
    {
        const auto left = std::chrono::ceil<std::chrono::microseconds>(_at - Clock::now());
        return left.count() > 0 ? left : std::chrono::microseconds(1);
    }

    // False when the deadline passed before the turn came.
    bool take(Turn& turn, HeldTurn& held) const
    {
        if (!isSet()) {
            turn.take();
        } else if (!turn.takeBefore(_at)) {
            return false;
        }
        held.hold(turn);
        return true;
    }

    std::string waitedTooLong() const
    {
        return "Deadline exceeded (Code 1100): Still waiting for another call after " +
               std::to_string(_milliseconds) + " ms, nothing done";
    }

    std::string cutShort(const std::string& serviceText) const
    {
        return "Deadline exceeded (Code 1100): No answer within " + std::to_string(_milliseconds) +
               " ms, disconnected {" + serviceText + "}";
    }

    std::string notAccepted(const std::string& serviceText) const
    {
        return "Deadline exceeded (Code 1100): Not accepted within " + std::to_string(_milliseconds) +
               " ms {" + serviceText + "}";
    }

private:
    uint32_t _milliseconds;
    Clock::time_point _at;
};

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
