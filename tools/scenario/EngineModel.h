#ifndef VELMO_KVO_SCENARIO_ENGINEMODEL_H
#define VELMO_KVO_SCENARIO_ENGINEMODEL_H

#include "Scenario.h"

#include <cstdint>
#include <vector>

namespace velmo {
namespace kvo {
namespace scenario {

// Uniform noise from a seed, the same on every platform (the standard
// distributions are not).
class Noise
{
public:
    explicit Noise(std::uint64_t seed) : _state(seed) {}
    // Uniform in [-amplitude, +amplitude].
    double next(double amplitude);

private:
    std::uint64_t _state;
};

// The audio engine of a scenario: its true audio delay at a time (in ms from
// the scenario's start), with the margin taking effect marginLagMs after the
// engine accepted it and a restart forgetting it.
class EngineModel
{
public:
    explicit EngineModel(const Scenario& scenario) : _scenario(scenario) {}

    void accept(double tMs, unsigned marginMs);
    void restart();
    double marginInEffect(double tMs) const;
    double audioDelay(double tMs) const;

private:
    struct Acceptance
    {
        double atMs;
        unsigned marginMs;
    };

    const Scenario& _scenario;
    // Since the last restart, in time order.
    std::vector<Acceptance> _accepted;
};

} // namespace scenario
} // namespace kvo
} // namespace velmo

#endif
