// The library's getAudioTimestamps beside the floor client, in turns of ten
// calls each on two connections to the same server, so that both meet the
// same load. Each turn is timed, and the rates come from the median turn of
// each: a turn that another process's time slice cut into is an outlier
// that the median leaves out, so the ratio of the rates says what this run
// can say about the library on a busy machine too.

#include "Benchmarks.h"
#include "FloorClient.h"
#include "Frames.h"
#include "LogDaemonStandIn.h"
#include "StdErrToDevNull.h"

#include "velmo/kvo/lipsyncapi/Service.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <unistd.h>
#include <vector>

namespace akvo {
namespace bench {

namespace {

using velmo::kvo::lipsyncapi::Service;
using Clock = std::chrono::steady_clock;

constexpr int callsPerTurn = 10;

// While it lives, a process started as root runs under an application's
// user id, as every caller of the library on the device does. The log
// writer of a root process reads its user id again on every record (the
// process may have become the log daemon's user since), which no
// application pays. The saved user id stays root, so that the benchmarks
// after this one run as they started; the sockets are connected before.
class ApplicationUser
{
public:
    ApplicationUser()
        : _switched(geteuid() == 0 && setresuid(firstApplicationUid, firstApplicationUid, 0) == 0)
    {
    }
    ~ApplicationUser()
    {
        if (_switched) {
            setresuid(0, 0, 0);
        }
    }
    ApplicationUser(const ApplicationUser&) = delete;
    ApplicationUser& operator=(const ApplicationUser&) = delete;

private:
    // The first user id that Android gives an application.
    static constexpr uid_t firstApplicationUid = 10000;
    const bool _switched;
};

double medianSeconds(std::vector<Clock::duration>& turns)
{
    const auto middle = turns.begin() + static_cast<std::ptrdiff_t>(turns.size() / 2);
    std::nth_element(turns.begin(), middle, turns.end());
    return std::chrono::duration<double>(*middle).count();
}

bool floorTurn(FloorClient& floor)
{
    bool succeeded = true;
    for (int call = 0; call < callsPerTurn; ++call) {
        uint64_t capture = 0;
        succeeded = floor.getAudioTimestamps(capture) && capture == cannedCaptureTimestamp && succeeded;
    }
    return succeeded;
}

bool libraryTurn(const Service& service)
{
    bool succeeded = true;
    for (int call = 0; call < callsPerTurn; ++call) {
        velmo::kvo::common::LipSyncNtpTimestamps timestamps = {};
        succeeded = service.getAudioTimestamps(timestamps).isSuccess() &&
                    timestamps.tCap == cannedCaptureTimestamp && succeeded;
    }
    return succeeded;
}

void floorAndLibrary(benchmark::State& state, const std::string& serverSocket, LogDaemon daemon)
{
    LogDaemonStandIn* standIn = nullptr;
    if (!enterLogRegime(state, daemon, standIn)) {
        return;
    }
    const StdErrToDevNull silence;
    FloorClient floor(serverSocket, AKVO_BENCH_LOGDW_PATH);
    Service service;
    if (!floor.isConnected() || service.connect(serverSocket).isFailure()) {
        state.SkipWithError("cannot connect to the benchmark server");
        return;
    }
    // The first turns connect the log sockets and build the success results.
    if (!floorTurn(floor) || !libraryTurn(service)) {
        state.SkipWithError("the first calls failed");
        return;
    }
    const ApplicationUser applicationUser;
    std::vector<Clock::duration> floorTurns;
    std::vector<Clock::duration> libraryTurns;
    floorTurns.reserve(static_cast<size_t>(state.max_iterations));
    libraryTurns.reserve(static_cast<size_t>(state.max_iterations));
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        const bool floorDone = floorTurn(floor);
        const Clock::time_point between = Clock::now();
        const bool libraryDone = libraryTurn(service);
        libraryTurns.push_back(Clock::now() - between);
        floorTurns.push_back(between - start);
        if (!floorDone || !libraryDone) {
            state.SkipWithError("a call failed");
            break;
        }
    }
    const double floorRate = callsPerTurn / medianSeconds(floorTurns);
    const double libraryRate = callsPerTurn / medianSeconds(libraryTurns);
    state.counters["floor_calls_per_s"] = floorRate;
    state.counters["library_calls_per_s"] = libraryRate;
    state.counters["library_per_floor"] = libraryRate / floorRate;
    service.disconnect();
}

} // namespace

void registerFloorComparison(const std::string& serverSocket, LogDaemon daemon)
{
    benchmark::RegisterBenchmark((std::string("FloorAndLibrary/") + regimeName(daemon)).c_str(),
                                 floorAndLibrary, serverSocket, daemon)
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
}

} // namespace bench
} // namespace akvo
