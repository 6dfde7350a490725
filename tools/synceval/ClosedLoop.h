#ifndef VELMO_KVO_SYNCEVAL_CLOSEDLOOP_H
#define VELMO_KVO_SYNCEVAL_CLOSEDLOOP_H

#include "Scenario.h"
#include "Strategy.h"

#include <vector>

namespace velmo {
namespace kvo {
namespace synceval {

// Simulated time advances in ticks of this size.
constexpr double tickMs = 10;

// The state at one tick.
struct Tick
{
    double skewMs;       // true audio delay - true video delay
    double marginMs;     // the margin in effect in the engine
    double videoDelayMs; // the extra video delay applied
    bool infeasible;     // as the strategy last said
};

// One poll's decision.
struct PollRecord
{
    double atMs;
    unsigned marginMs;
    double videoDelayMs;
};

struct Trace
{
    std::vector<Tick> ticks; // ticks[i] is at i * tickMs
    std::vector<PollRecord> polls;
};

// Runs `strategy` against the scenario's engine and video in closed loop, as
// sync::Runner would drive it: connecting after every transport failure,
// sending the margin when asked, and applying the video delay at once. The
// timestamps are NTP times that start 16 s before the seconds field wraps,
// so every run crosses the wrap.
Trace runClosedLoop(const scenario::Scenario& scenario, Strategy& strategy);

} // namespace synceval
} // namespace kvo
} // namespace velmo

#endif
