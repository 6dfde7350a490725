#include "EngineModel.h"

#include <cstddef>

namespace velmo {
namespace kvo {
namespace scenario {

double Noise::next(double amplitude)
{
    // splitmix64
    std::uint64_t z = (_state += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    z ^= z >> 31;
    const double unit = static_cast<double>(z >> 11) / 9007199254740992.0;
    return amplitude * (2 * unit - 1);
}

void EngineModel::accept(double tMs, unsigned marginMs)
{
    // What came to effect before the last acceptance already in effect no longer matters.
    std::size_t first = 0;
    for (std::size_t i = 0; i < _accepted.size(); ++i) {
        if (_accepted[i].atMs + _scenario.marginLagMs <= tMs) {
            first = i;
        }
    }
    _accepted.erase(_accepted.begin(), _accepted.begin() + static_cast<std::ptrdiff_t>(first));
    _accepted.push_back({tMs, marginMs});
}

void EngineModel::restart()
{
    _accepted.clear();
}

double EngineModel::marginInEffect(double tMs) const
{
    double margin = 0;
    for (const Acceptance& acceptance : _accepted) {
        if (acceptance.atMs + _scenario.marginLagMs <= tMs) {
            margin = acceptance.marginMs;
        }
    }
    return margin;
}

double EngineModel::audioDelay(double tMs) const
{
    return _scenario.audio.baseAt(tMs) + _scenario.marginGain * marginInEffect(tMs);
}

} // namespace scenario
} // namespace kvo
} // namespace velmo
