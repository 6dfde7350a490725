#ifndef VELMO_KVO_SIM_SCENARIOENGINE_H
#define VELMO_KVO_SIM_SCENARIOENGINE_H

#include "Connection.h"
#include "EngineModel.h"
#include "Scenario.h"

#include <cstddef>
#include <optional>

namespace velmo {
namespace kvo {
namespace sim {

// The engine of a scenario file on the host's clock: scenario time 0 is when
// the simulator starts. Its audio delay moves as the file says, a margin works
// the scenario's lag after it was accepted, polls in a lost interval cannot be
// read, and at each restart every connection drops and the margin is forgotten.
class ScenarioEngine
{
public:
    explicit ScenarioEngine(const scenario::Scenario& scenario);
    // The model refers to the scenario held here.
    ScenarioEngine(const ScenarioEngine&) = delete;
    ScenarioEngine& operator=(const ScenarioEngine&) = delete;

    // The audio delay a reading shows now: the true one plus the scenario's noise.
    double audioDelayReadingMs();
    void accept(unsigned marginMs);
    bool pollLost() const;
    // True once for each restart whose time has come: the caller drops every connection.
    bool restartDue(Clock::time_point now);
    std::optional<Clock::time_point> nextRestart() const;

private:
    double nowMs() const;

    scenario::Scenario _scenario;
    scenario::EngineModel _model;
    scenario::Noise _noise;
    Clock::time_point _start;
    std::size_t _restarts = 0;
};

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
