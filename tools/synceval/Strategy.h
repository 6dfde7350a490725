#ifndef VELMO_KVO_SYNCEVAL_STRATEGY_H
#define VELMO_KVO_SYNCEVAL_STRATEGY_H

#include "velmo/kvo/sync/Controller.h"

#include <memory>

namespace velmo {
namespace kvo {
namespace synceval {

// What a strategy asks for after one poll.
struct Action
{
    unsigned marginMs = 0;
    bool applyMargin = false;
    double videoDelayMs = 0;
    bool infeasible = false;
};

// A way of keeping lip sync, fed as sync::Runner feeds its controller.
class Strategy
{
public:
    virtual ~Strategy() = default;
    virtual void reconnected() = 0;
    virtual Action update(const sync::Poll& poll) = 0;
    virtual void marginApplied(long long nowMs, unsigned marginMs, bool accepted) = 0;
};

// The library's controller.
std::unique_ptr<Strategy> makeController(unsigned pollIntervalMs);
// No control at all: margin 0, no video delay.
std::unique_ptr<Strategy> makeNoControl();

} // namespace synceval
} // namespace kvo
} // namespace velmo

#endif
