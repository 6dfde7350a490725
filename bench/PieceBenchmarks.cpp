// The pieces of one getAudioTimestamps call, each priced on its own.

#include "Benchmarks.h"
#include "Frames.h"
#include "LogDaemonStandIn.h"
#include "Meters.h"
#include "StdErrToDevNull.h"

#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/kvo/lipsyncapi/Service.h"
#include "velmo/kvo/lipsyncapi/TimestampsLine.h"
#include "velmo/kvo/log/AndroidLog.h"
#include "velmo/utilities/log/GenericLog.h"

#include <benchmark/benchmark.h>

#include <cstdarg>
#include <string>

namespace akvo {
namespace bench {

namespace {

using velmo::kvo::lipsync::GetAudioTs;
using velmo::kvo::lipsync::LipSyncXmlSerializer;
using velmo::kvo::lipsyncapi::Service;
using velmo::utilities::Level;

const char apiLogTag[] = "AKVOLIPSYNCAPI";

// The line that a successful getAudioTimestamps against the canned server logs.
const char apiLogLine[] =
    "Client is requesting the NTP timestamp with output params: audioCaptureTimestamp=16045690984833536 "
    "audioRenderingTimestamp=16045690985263104 audioReceivingTimestamp=16045690984404992 jbmCurrentDepth=40  "
    "with result: Success";

// A sink that drops the line, so that only the collector and the log stream
// are priced.
struct DiscardLogTrait
{
    template <Level::Enum L>
    static void valog(const char*, const char*, va_list)
    {
    }
};

struct DiscardingLogger
{
    using Log = velmo::utilities::GenericLog<velmo::utilities::TypeListOf<DiscardLogTrait>>;
    static constexpr const char* tag = apiLogTag;
};

void stdErrLine(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    velmo::utilities::StdIoLogTrait::valog<Level::Info>(apiLogTag, format, args);
    va_end(args);
}

// As the command client does it: a fresh serializer and a fresh string.
void requestSerialization(benchmark::State& state)
{
    const GetAudioTs::Request request;
    AllocationMeter allocations(state);
    for (auto _ : state) {
        std::string xml;
        const LipSyncXmlSerializer serializer;
        const auto result = serializer.serialize(request, xml);
        benchmark::DoNotOptimize(result.isSuccess());
        benchmark::DoNotOptimize(xml.data());
    }
    allocations.finish();
}

void answerDeserialization(benchmark::State& state)
{
    const std::string answerText(getAudioTsAnswerFrame, sizeof(getAudioTsAnswerFrame) - 3);
    AllocationMeter allocations(state);
    for (auto _ : state) {
        GetAudioTs::Answer answer;
        const LipSyncXmlSerializer serializer;
        const auto result = serializer.deserialize(answerText, answer);
        if (result.isFailure() || answer.timestamps.tCap != cannedCaptureTimestamp) {
            state.SkipWithError("the canned answer does not deserialize");
            break;
        }
    }
    allocations.finish();
}

// The line of getAudioTimestamps, composed as the Service composes it.
void apiLogComposition(benchmark::State& state)
{
    const Service::ServiceResult result = Service::ServiceResult::success();
    const velmo::kvo::common::LipSyncNtpTimestamps timestamps = {16045690984833536ULL, 16045690985263104ULL,
                                                                 16045690984404992ULL, 40};
    AllocationMeter allocations(state);
    for (auto _ : state) {
        velmo::kvo::lipsyncapi::logTimestampsRequest<DiscardingLogger>(timestamps, result);
    }
    allocations.finish();
}

void stdErrLineToDevNull(benchmark::State& state)
{
    const StdErrToDevNull silence;
    AllocationMeter allocations(state);
    for (auto _ : state) {
        stdErrLine("%s", apiLogLine);
    }
    allocations.finish();
}

void androidLogRecord(benchmark::State& state, LogDaemon daemon)
{
    LogDaemonStandIn* standIn = nullptr;
    if (!enterLogRegime(state, daemon, standIn)) {
        return;
    }
    const uint64_t receivedBefore = standIn != nullptr ? standIn->receivedRecords() : 0;
    uint64_t failedWrites = 0;
    AllocationMeter allocations(state);
    for (auto _ : state) {
        if (__android_log_print(AKVO_LOG_INFO, apiLogTag, "%s", apiLogLine) < 0) {
            ++failedWrites;
        }
    }
    allocations.finish();
    const double calls = static_cast<double>(state.iterations());
    state.counters["failed_writes_per_call"] = static_cast<double>(failedWrites) / calls;
    if (standIn != nullptr) {
        standIn->settle();
        state.counters["records_received_per_call"] =
            static_cast<double>(standIn->receivedRecords() - receivedBefore) / calls;
    }
}

} // namespace

void registerPieceBenchmarks()
{
    benchmark::RegisterBenchmark("RequestSerialization", requestSerialization)->UseRealTime();
    benchmark::RegisterBenchmark("AnswerDeserialization", answerDeserialization)->UseRealTime();
    benchmark::RegisterBenchmark("ApiLogComposition", apiLogComposition)->UseRealTime();
    benchmark::RegisterBenchmark("StdErrLine/DevNull", stdErrLineToDevNull)->UseRealTime();
}

void registerLogRecordBenchmark(LogDaemon daemon)
{
    const std::string name =
        std::string("AndroidLogRecord/") + (daemon == LogDaemon::Absent ? "AbsentSocket" : "Receiver");
    benchmark::RegisterBenchmark(name.c_str(), androidLogRecord, daemon)->UseRealTime();
}

} // namespace bench
} // namespace akvo
