// One request and its answer against the canned server: first with bare
// system calls (the physical limit of this socket and this server), then
// through the public API, in each regime of the log writer.

#include "Benchmarks.h"
#include "Frames.h"
#include "LogDaemonStandIn.h"
#include "Meters.h"
#include "ReadFrame.h"
#include "StdErrToDevNull.h"
#include "UnixSocket.h"

#include "velmo/kvo/comms/TextProtocol.h"
#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/kvo/lipsync/SetAudioDelay.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <benchmark/benchmark.h>

#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace akvo {
namespace bench {

namespace {

using velmo::kvo::common::LipSyncNtpTimestamps;
using velmo::kvo::lipsync::LipSyncXmlSerializer;
using velmo::kvo::lipsyncapi::Service;

struct Exchange
{
    const char* name;
    std::string requestFrame;
    std::string answerFrame;
};

template <class Request>
std::string libraryFrame(const Request& request)
{
    std::string xml;
    LipSyncXmlSerializer().serialize(request, xml);
    return xml + velmo::kvo::comms::TextProtocol::endMessageMarker;
}

void rawRoundTrip(benchmark::State& state, const Exchange& exchange, const std::string& serverSocket)
{
    const int fd = akvo::test::connectedUnixSocket(serverSocket);
    if (fd < 0) {
        state.SkipWithError("cannot connect to the benchmark server");
        return;
    }
    static char answer[65536];
    const char* request = exchange.requestFrame.data();
    const size_t requestSize = exchange.requestFrame.size();
    RoundTripMeter meter(state);
    for (auto _ : state) {
        const auto start = meter.now();
        const bool sent = write(fd, request, requestSize) == static_cast<ssize_t>(requestSize);
        const size_t received = sent ? readFrame(fd, answer, sizeof(answer)) : 0;
        meter.record(start);
        if (received != exchange.answerFrame.size()) {
            state.SkipWithError("the server's answer is not the canned frame");
            break;
        }
    }
    meter.finish();
    close(fd);
}

// Only a failed call builds its text, so checking each result costs nothing
// on the measured path.
template <class Call>
void serviceRoundTrip(benchmark::State& state, const std::string& serverSocket, LogDaemon daemon, Call call)
{
    LogDaemonStandIn* standIn = nullptr;
    if (!enterLogRegime(state, daemon, standIn)) {
        return;
    }
    const StdErrToDevNull silence;
    Service service;
    if (service.connect(serverSocket).isFailure()) {
        state.SkipWithError("the Service cannot connect to the benchmark server");
        return;
    }
    // The first call builds the process-wide success results.
    if (call(service).isFailure()) {
        state.SkipWithError("the first call failed");
        return;
    }
    const uint64_t receivedBefore = standIn != nullptr ? standIn->receivedRecords() : 0;
    RoundTripMeter meter(state);
    for (auto _ : state) {
        const auto start = meter.now();
        const bool succeeded = call(service).isSuccess();
        meter.record(start);
        if (!succeeded) {
            state.SkipWithError("a call failed");
            break;
        }
    }
    meter.finish();
    if (standIn != nullptr) {
        standIn->settle();
        state.counters["log_records_per_call"] =
            static_cast<double>(standIn->receivedRecords() - receivedBefore) /
            static_cast<double>(state.iterations());
    }
    service.disconnect();
}

Service::ServiceResult getAudioTimestamps(const Service& service)
{
    LipSyncNtpTimestamps timestamps = {};
    Service::ServiceResult result = service.getAudioTimestamps(timestamps);
    if (result.isSuccess() && timestamps.tCap != cannedCaptureTimestamp) {
        return Service::ServiceResult(Service::UnknownError);
    }
    return result;
}

Service::ServiceResult setAudioDelayMargin(Service& service)
{
    return service.setAudioDelayMargin(setAudioDelayRequestMs);
}

} // namespace

void registerRawRoundTrips(const std::string& serverSocket)
{
    velmo::kvo::lipsync::SetAudioDelay::Request setAudioDelay;
    setAudioDelay.delayMs = setAudioDelayRequestMs;
    const Exchange exchanges[] = {
        {"GetAudioTs", getAudioTsRequestFrame, getAudioTsAnswerFrame},
        {"SetAudioDelay", setAudioDelayRequestFrame, setAudioDelayAnswerFrame},
    };
    const std::string libraryFrames[] = {libraryFrame(velmo::kvo::lipsync::GetAudioTs::Request()),
                                         libraryFrame(setAudioDelay)};
    for (size_t i = 0; i < 2; ++i) {
        const Exchange& exchange = exchanges[i];
        const std::string name = std::string("RawRoundTrip/") + exchange.name;
        // The raw client must send what the library sends, byte for byte.
        if (libraryFrames[i] != exchange.requestFrame) {
            benchmark::RegisterBenchmark(name.c_str(), [](benchmark::State& state) {
                state.SkipWithError("the library's request frame differs from the raw one");
            });
            continue;
        }
        benchmark::RegisterBenchmark(name.c_str(), rawRoundTrip, exchange, serverSocket)
            ->UseRealTime()
            ->Unit(benchmark::kMicrosecond);
    }
}

void registerServiceRoundTrips(const std::string& serverSocket, LogDaemon daemon)
{
    const std::string regime = regimeName(daemon);
    benchmark::RegisterBenchmark(("ServiceGetAudioTimestamps/" + regime).c_str(),
                                 [serverSocket, daemon](benchmark::State& state) {
                                     serviceRoundTrip(state, serverSocket, daemon, getAudioTimestamps);
                                 })
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark(("ServiceSetAudioDelayMargin/" + regime).c_str(),
                                 [serverSocket, daemon](benchmark::State& state) {
                                     serviceRoundTrip(state, serverSocket, daemon, setAudioDelayMargin);
                                 })
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
}

} // namespace bench
} // namespace akvo
