#include "Meters.h"

#include <algorithm>

namespace akvo {
namespace bench {

namespace {

double microseconds(int64_t ticks)
{
    return std::chrono::duration<double, std::micro>(RoundTripMeter::Clock::duration(ticks)).count();
}

std::vector<int64_t> reservedSamples(const benchmark::State& state)
{
    std::vector<int64_t> samples;
    samples.reserve(static_cast<size_t>(state.max_iterations));
    return samples;
}

double percentile(std::vector<int64_t>& samples, double fraction)
{
    if (samples.empty()) {
        return 0.0;
    }
    const auto position = samples.begin() + static_cast<std::ptrdiff_t>(fraction * (samples.size() - 1));
    std::nth_element(samples.begin(), position, samples.end());
    return microseconds(*position);
}

} // namespace

AllocationMeter::AllocationMeter(benchmark::State& state) : _state(state), _start(currentAllocationCount()) {}

void AllocationMeter::finish()
{
    const AllocationCount end = currentAllocationCount();
    const double calls = static_cast<double>(std::max<benchmark::IterationCount>(_state.iterations(), 1));
    _state.counters["allocs_per_call"] = static_cast<double>(end.allocations - _start.allocations) / calls;
}

RoundTripMeter::RoundTripMeter(benchmark::State& state)
    : _samples(reservedSamples(state)), _state(state), _allocations(state)
{
}

void RoundTripMeter::finish()
{
    _allocations.finish();
    _state.SetItemsProcessed(_state.iterations());
    _state.counters["median_us"] = percentile(_samples, 0.5);
    _state.counters["p99_us"] = percentile(_samples, 0.99);
}

} // namespace bench
} // namespace akvo
