#ifndef VELMO_KVO_SYNCEVAL_METRICS_H
#define VELMO_KVO_SYNCEVAL_METRICS_H

#include "ClosedLoop.h"
#include "Scenario.h"

#include <string>
#include <vector>

namespace velmo {
namespace kvo {
namespace synceval {

// Ticks before this are left out: every strategy starts from nothing.
constexpr double warmUpMs = 2000;
// After a step the skew must be in the window and stay there this long to count as settled.
constexpr double settledForMs = 1000;
// When nothing moves, the margin changes at most once in this time.
constexpr double calmMarginMs = 10000;
// The share of counted ticks a passing controller keeps in IS-191 (or, beyond reach, at the best reachable).
constexpr double requiredShare = 99;

// How one strategy did in one scenario. Ticks are counted after the warm-up,
// outside each step's settle allowance (2 s + 2 polls + the margin lag after
// every step of either side and every engine restart).
struct Measures
{
    double is191 = 0; // % of counted ticks in IS-191
    double bt1359 = 0;
    // Per step: time until the skew entered IS-191 and stayed 1 s (or, when
    // the step left the skew beyond reach, until the strategy held the best
    // reachable and said so, for 1 s); negative when it never did.
    std::vector<double> settleS;
    double settleMaxS = 0; // negative when a step never settled
    unsigned marginChanges = 0;
    // Margin changes outside the allowances closer than calmMarginMs to the previous such change.
    unsigned restlessMarginChanges = 0;
    double videoStepMaxMs = 0;
    // Counted ticks whose skew is beyond reach.
    unsigned beyondReachTicks = 0;
    // % of counted ticks on target: in IS-191 within reach; beyond it, at the
    // best reachable (margin 100 in effect, no video delay) and flagged so.
    double onTarget = 0;
    // % of counted ticks within reach that are flagged as beyond it.
    double falselyInfeasible = 0;
};

Measures measure(const scenario::Scenario& scenario, const Trace& trace);

// Why the controller fails the scenario, compared with the baseline; empty when it passes.
std::vector<std::string> failures(const scenario::Scenario& scenario, const Measures& controller,
                                  const Measures& baseline);

} // namespace synceval
} // namespace kvo
} // namespace velmo

#endif
