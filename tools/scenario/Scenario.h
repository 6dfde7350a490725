#ifndef VELMO_KVO_SCENARIO_SCENARIO_H
#define VELMO_KVO_SCENARIO_SCENARIO_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace velmo {
namespace kvo {
namespace scenario {

// One side's end-to-end delay before any correction.
struct Track
{
    double latencyMs = 0;
    // (time in s, latency in ms from then on), in time order.
    std::vector<std::pair<double, double>> steps;
    double driftMsPerMin = 0;
    // Readings are the true delay plus uniform noise in [-noiseMs, +noiseMs].
    double noiseMs = 0;

    // The delay at `tMs` without the margin or the video delay.
    double baseAt(double tMs) const;
};

// A scenario file: how the engine's audio delay and the video's move, and
// what goes wrong, over simulated (or, in the simulator, real) time.
struct Scenario
{
    std::string name;
    double durationS = 0;
    unsigned pollMs = 200;
    std::uint64_t seed = 1;
    // A margin is in effect this long after the engine accepted it.
    double marginLagMs = 0;
    // What one millisecond of margin adds to the audio delay.
    double marginGain = 1;
    Track audio;
    Track video;
    // [from, to) in s: the timestamps call fails with 1005.
    std::vector<std::pair<double, double>> lostPolls;
    // In s: the engine drops its connections and forgets the margin.
    std::vector<double> engineRestarts;
    bool feasible = true;

    bool pollLostAt(double tMs) const;
};

// Reads a scenario from JSON text. On failure returns false and sets `error`
// to a one-line reason that names the field.
bool parseScenario(const std::string& text, Scenario& scenario, std::string& error);
// Reads a scenario file; the error starts with the path.
bool loadScenario(const std::string& path, Scenario& scenario, std::string& error);

} // namespace scenario
} // namespace kvo
} // namespace velmo

#endif
