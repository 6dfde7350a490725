#ifndef AKVO_BENCH_METERS_H
#define AKVO_BENCH_METERS_H

#include "AllocationCounter.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <vector>

namespace akvo {
namespace bench {

// Counts the heap allocations made between construction and finish(), and
// reports them per iteration as the counter "allocs_per_call". Construct it
// right before the timed loop and finish it right after.
class AllocationMeter
{
public:
    explicit AllocationMeter(benchmark::State& state);
    void finish();

private:
    benchmark::State& _state;
    AllocationCount _start;
};

// Times every call on its own, so that the median and the 99th percentile of
// one round trip can be reported ("median_us", "p99_us") besides the mean
// that the framework gives; also counts allocations and sets the calls per
// second ("items_per_second"). The samples are reserved before the
// allocation count starts.
class RoundTripMeter
{
public:
    using Clock = std::chrono::steady_clock;

    explicit RoundTripMeter(benchmark::State& state);

    static Clock::time_point now() { return Clock::now(); }
    void record(Clock::time_point start) { _samples.push_back((Clock::now() - start).count()); }
    void finish();

private:
    std::vector<int64_t> _samples;
    benchmark::State& _state;
    AllocationMeter _allocations;
};

} // namespace bench
} // namespace akvo

#endif
