// One million getAudioTimestamps calls on one connection, without a log
// daemon: the heap must end where it started.

#include "AllocationCounter.h"
#include "Benchmarks.h"
#include "LogDaemonStandIn.h"
#include "StdErrToDevNull.h"

#include "velmo/kvo/lipsyncapi/Service.h"

#include <benchmark/benchmark.h>

#include <malloc.h>

namespace akvo {
namespace bench {

namespace {

using velmo::kvo::common::LipSyncNtpTimestamps;
using velmo::kvo::lipsyncapi::Service;

const benchmark::IterationCount millionCalls = 1000000;
const int warmUpCalls = 1000;

int64_t liveAllocations()
{
    const AllocationCount count = currentAllocationCount();
    return static_cast<int64_t>(count.allocations - count.releases);
}

int64_t heapBytesInUse()
{
    return static_cast<int64_t>(mallinfo2().uordblks);
}

void heapGrowth(benchmark::State& state, const std::string& serverSocket)
{
    if (LogDaemonStandIn::wasStarted()) {
        state.SkipWithError("a log receiver was bound earlier in this process");
        return;
    }
    const StdErrToDevNull silence;
    Service service;
    LipSyncNtpTimestamps timestamps = {};
    if (service.connect(serverSocket).isFailure()) {
        state.SkipWithError("the Service cannot connect to the benchmark server");
        return;
    }
    for (int i = 0; i < warmUpCalls; ++i) {
        service.getAudioTimestamps(timestamps);
    }
    const int64_t liveBefore = liveAllocations();
    const int64_t bytesBefore = heapBytesInUse();
    for (auto _ : state) {
        if (service.getAudioTimestamps(timestamps).isFailure()) {
            state.SkipWithError("a call failed");
            break;
        }
    }
    const int64_t liveAfter = liveAllocations();
    const int64_t bytesAfter = heapBytesInUse();
    state.SetItemsProcessed(state.iterations());
    state.counters["live_allocs_growth"] = static_cast<double>(liveAfter - liveBefore);
    state.counters["heap_bytes_growth"] = static_cast<double>(bytesAfter - bytesBefore);
    service.disconnect();
}

} // namespace

void registerHeapGrowthCheck(const std::string& serverSocket)
{
    benchmark::RegisterBenchmark("ServiceGetAudioTimestamps/MillionCalls", heapGrowth, serverSocket)
        ->Iterations(millionCalls)
        ->Repetitions(1)
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
}

} // namespace bench
} // namespace akvo
