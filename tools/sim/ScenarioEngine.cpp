#include "ScenarioEngine.h"

#include <chrono>

namespace velmo {
namespace kvo {
namespace sim {

ScenarioEngine::ScenarioEngine(const scenario::Scenario& scenario)
    : _scenario(scenario), _model(_scenario), _noise(scenario.seed), _start(Clock::now())
{
}

double ScenarioEngine::nowMs() const
{
    return std::chrono::duration<double, std::milli>(Clock::now() - _start).count();
}

double ScenarioEngine::audioDelayReadingMs()
{
    return _model.audioDelay(nowMs()) + _noise.next(_scenario.audio.noiseMs);
}

void ScenarioEngine::accept(unsigned marginMs)
{
    _model.accept(nowMs(), marginMs);
}

bool ScenarioEngine::pollLost() const
{
    return _scenario.pollLostAt(nowMs());
}

bool ScenarioEngine::restartDue(Clock::time_point now)
{
    const std::optional<Clock::time_point> due = nextRestart();
    if (!due || *due > now) {
        return false;
    }
    ++_restarts;
    _model.restart();
    return true;
}

std::optional<Clock::time_point> ScenarioEngine::nextRestart() const
{
    if (_restarts >= _scenario.engineRestarts.size()) {
        return std::nullopt;
    }
    return _start + std::chrono::duration_cast<Clock::duration>(
                        std::chrono::duration<double>(_scenario.engineRestarts[_restarts]));
}

} // namespace sim
} // namespace kvo
} // namespace velmo
