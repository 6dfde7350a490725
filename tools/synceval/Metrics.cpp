#include "Metrics.h"

#include "velmo/kvo/sync/Controller.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace velmo {
namespace kvo {
namespace synceval {

namespace {

using sync::tuning::windowHighMs;
using sync::tuning::windowLowMs;

bool inWindow(double skew)
{
    return skew >= windowLowMs && skew <= windowHighMs;
}

// The skew before any correction is beyond reach when even the largest margin
// leaves the audio early beyond the window.
bool beyondReach(const scenario::Scenario& scenario, double tMs)
{
    const double base = scenario.audio.baseAt(tMs) - scenario.video.baseAt(tMs);
    return base + scenario.marginGain * sync::tuning::maxMarginMs < windowLowMs;
}

bool atBestReachable(const Tick& tick)
{
    return tick.infeasible && tick.marginMs == sync::tuning::maxMarginMs && tick.videoDelayMs < 1;
}

std::vector<double> stepTimesMs(const scenario::Scenario& scenario)
{
    std::vector<double> times;
    for (const scenario::Track* track : {&scenario.audio, &scenario.video}) {
        for (const auto& step : track->steps) {
            times.push_back(step.first * 1000);
        }
    }
    for (double restart : scenario.engineRestarts) {
        times.push_back(restart * 1000);
    }
    std::sort(times.begin(), times.end());
    return times;
}

std::string percent(double value)
{
    std::ostringstream out;
    out.precision(1);
    out << std::fixed << value << "%";
    return out.str();
}

// The settle allowance of every step.
double allowanceMs(const scenario::Scenario& scenario)
{
    return 2000 + 2.0 * scenario.pollMs + scenario.marginLagMs;
}

} // namespace

Measures measure(const scenario::Scenario& scenario, const Trace& trace)
{
    const std::vector<double> steps = stepTimesMs(scenario);
    const double allowance = allowanceMs(scenario);
    auto counted = [&](double t) {
        return t >= warmUpMs && std::none_of(steps.begin(), steps.end(),
                                             [&](double step) { return t >= step && t < step + allowance; });
    };
    auto good = [&](std::size_t i) {
        const double t = static_cast<double>(i) * tickMs;
        return beyondReach(scenario, t) ? atBestReachable(trace.ticks[i]) : inWindow(trace.ticks[i].skewMs);
    };

    Measures m;
    unsigned withinReach = 0;
    unsigned in191 = 0;
    unsigned in1359 = 0;
    unsigned onTarget = 0;
    unsigned flagged = 0;
    for (std::size_t i = 0; i < trace.ticks.size(); ++i) {
        const double t = static_cast<double>(i) * tickMs;
        if (!counted(t)) {
            continue;
        }
        const Tick& tick = trace.ticks[i];
        onTarget += good(i);
        in191 += inWindow(tick.skewMs);
        in1359 +=
            tick.skewMs >= sync::tuning::detectableLowMs && tick.skewMs <= sync::tuning::detectableHighMs;
        if (beyondReach(scenario, t)) {
            ++m.beyondReachTicks;
        } else {
            ++withinReach;
            flagged += tick.infeasible;
        }
    }
    const unsigned total = withinReach + m.beyondReachTicks;
    m.is191 = total > 0 ? 100.0 * in191 / total : 0;
    m.bt1359 = total > 0 ? 100.0 * in1359 / total : 0;
    m.onTarget = total > 0 ? 100.0 * onTarget / total : 0;
    m.falselyInfeasible = withinReach > 0 ? 100.0 * flagged / withinReach : 0;

    const std::size_t settledTicks = static_cast<std::size_t>(settledForMs / tickMs);
    for (double step : steps) {
        std::size_t run = 0;
        double settle = -1;
        for (std::size_t i = static_cast<std::size_t>(step / tickMs); i < trace.ticks.size() && settle < 0;
             ++i) {
            run = good(i) ? run + 1 : 0;
            if (run > settledTicks) {
                settle = (static_cast<double>(i - settledTicks) * tickMs - step) / 1000;
            }
        }
        m.settleS.push_back(settle);
        m.settleMaxS = settle < 0 || m.settleMaxS < 0 ? -1 : std::max(m.settleMaxS, settle);
    }

    double lastCalmChange = -calmMarginMs;
    for (std::size_t i = 1; i < trace.polls.size(); ++i) {
        const PollRecord& poll = trace.polls[i];
        m.videoStepMaxMs =
            std::max(m.videoStepMaxMs, std::fabs(poll.videoDelayMs - trace.polls[i - 1].videoDelayMs));
        if (poll.marginMs == trace.polls[i - 1].marginMs) {
            continue;
        }
        ++m.marginChanges;
        if (counted(poll.atMs)) {
            m.restlessMarginChanges += poll.atMs - lastCalmChange < calmMarginMs;
            lastCalmChange = poll.atMs;
        }
    }
    return m;
}

std::vector<std::string> failures(const scenario::Scenario& scenario, const Measures& controller,
                                  const Measures& baseline)
{
    std::vector<std::string> why;
    if (scenario.feasible && controller.beyondReachTicks > 0) {
        why.push_back("the scenario says feasible, yet its skew goes beyond reach");
    }
    if (!scenario.feasible && controller.beyondReachTicks == 0) {
        why.push_back("the scenario says infeasible, yet its skew stays within reach");
    }
    const double allowance = allowanceMs(scenario) / 1000;
    for (std::size_t i = 0; i < controller.settleS.size(); ++i) {
        if (controller.settleS[i] < 0 || controller.settleS[i] > allowance) {
            why.push_back("step " + std::to_string(i + 1) + " not settled within its allowance");
        }
    }
    if (controller.restlessMarginChanges > 0) {
        why.push_back(std::to_string(controller.restlessMarginChanges) +
                      " margin changes within 10 s of another while nothing moved");
    }
    if (scenario.feasible) {
        if (controller.is191 < requiredShare) {
            why.push_back("is191 " + percent(controller.is191) + " under " + percent(requiredShare));
        }
        if (controller.is191 <= baseline.is191) {
            why.push_back("is191 does not beat the baseline's");
        }
        return why;
    }
    if (controller.onTarget < requiredShare) {
        why.push_back("in IS-191 within reach and flagged at the best reachable beyond it only " +
                      percent(controller.onTarget));
    }
    if (controller.falselyInfeasible > 100 - requiredShare) {
        why.push_back("within reach, flagged infeasible " + percent(controller.falselyInfeasible));
    }
    return why;
}

} // namespace synceval
} // namespace kvo
} // namespace velmo
