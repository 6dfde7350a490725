#include "SummaryReporter.h"

#include <cstdio>
#include <ostream>
#include <sched.h>

namespace akvo {
namespace bench {

namespace {

struct Pair
{
    const char* service;
    const char* raw;
};

const Pair roundTrips[] = {
    {nullptr, "RawRoundTrip/GetAudioTs"},
    {"ServiceGetAudioTimestamps/NoLogDaemon", "RawRoundTrip/GetAudioTs"},
    {"ServiceGetAudioTimestamps/LogReceiver", "RawRoundTrip/GetAudioTs"},
    {nullptr, "RawRoundTrip/SetAudioDelay"},
    {"ServiceSetAudioDelayMargin/NoLogDaemon", "RawRoundTrip/SetAudioDelay"},
    {"ServiceSetAudioDelayMargin/LogReceiver", "RawRoundTrip/SetAudioDelay"},
};

const char* const pieces[] = {
    "RequestSerialization", "AnswerDeserialization",         "ApiLogComposition",
    "StdErrLine/DevNull",   "AndroidLogRecord/AbsentSocket", "AndroidLogRecord/Receiver"};

struct FloorComparison
{
    const char* name;
    const char* regime;
};

const FloorComparison floorComparisons[] = {{"FloorAndLibrary/NoLogDaemon", "no log daemon"},
                                            {"FloorAndLibrary/LogReceiver", "log daemon listening"}};

const char* const heapCheck = "ServiceGetAudioTimestamps/MillionCalls";
// Against the least that a call must do (FloorClient.h), measured in turns
// with the library in the same benchmark.
const double minimumFloorRatio = 0.95;

std::string format(const char* pattern, double value)
{
    char text[64];
    std::snprintf(text, sizeof(text), pattern, value);
    return text;
}

std::string pinnedCpus()
{
    cpu_set_t set;
    CPU_ZERO(&set);
    if (sched_getaffinity(0, sizeof(set), &set) != 0) {
        return "unknown";
    }
    std::string cpus;
    for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
        if (CPU_ISSET(cpu, &set)) {
            cpus += (cpus.empty() ? "" : ",") + std::to_string(cpu);
        }
    }
    return cpus;
}

} // namespace

SummaryReporter::SummaryReporter() : benchmark::ConsoleReporter(OO_Tabular), _failed(false) {}

void SummaryReporter::ReportRuns(const std::vector<Run>& runs)
{
    benchmark::ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
        Figures& figures = _figures[run.run_name.function_name];
        if (run.error_occurred) {
            figures.error = run.error_message;
            _failed = true;
            continue;
        }
        // Aggregates follow the runs they sum up, so the median wins.
        const bool single = run.run_type == Run::RT_Iteration;
        if (single || run.aggregate_name == "median") {
            figures.meanUs =
                run.GetAdjustedRealTime() * 1e6 / benchmark::GetTimeUnitMultiplier(run.time_unit);
            figures.iterations = static_cast<double>(run.iterations);
            figures.counters.clear();
            for (const auto& entry : run.counters) {
                figures.counters[entry.first] = entry.second.value;
            }
        }
    }
}

const SummaryReporter::Figures* SummaryReporter::find(const std::string& name) const
{
    const auto entry = _figures.find(name);
    if (entry == _figures.end() || !entry->second.error.empty()) {
        return nullptr;
    }
    return &entry->second;
}

double SummaryReporter::counter(const Figures& figures, const char* name) const
{
    const auto entry = figures.counters.find(name);
    return entry == figures.counters.end() ? 0.0 : entry->second;
}

void SummaryReporter::printRoundTrips(std::ostream& out) const
{
    char line[256];
    std::snprintf(line, sizeof(line), "%-40s %10s %9s %9s %9s %11s %13s %12s\n", "Round trip", "calls/s",
                  "mean us", "median us", "p99 us", "allocs/call", "calls/s / raw", "median / raw");
    out << line;
    for (const Pair& pair : roundTrips) {
        const char* name = pair.service != nullptr ? pair.service : pair.raw;
        const Figures* figures = find(name);
        if (figures == nullptr) {
            out << "  " << name << ": not run\n";
            continue;
        }
        std::string throughputRatio = "";
        std::string medianRatio = "";
        const Figures* raw = pair.service != nullptr ? find(pair.raw) : nullptr;
        if (raw != nullptr) {
            throughputRatio =
                format("%.2f", counter(*figures, "items_per_second") / counter(*raw, "items_per_second"));
            medianRatio = format("%.2f", counter(*figures, "median_us") / counter(*raw, "median_us"));
        }
        std::snprintf(line, sizeof(line), "%-40s %10.0f %9.2f %9.2f %9.2f %11.1f %13s %12s\n", name,
                      counter(*figures, "items_per_second"), figures->meanUs, counter(*figures, "median_us"),
                      counter(*figures, "p99_us"), counter(*figures, "allocs_per_call"),
                      throughputRatio.c_str(), medianRatio.c_str());
        out << line;
    }
}

void SummaryReporter::printPieces(std::ostream& out) const
{
    char line[256];
    std::snprintf(line, sizeof(line), "%-40s %10s %11s\n", "Piece", "ns/call", "allocs/call");
    out << line;
    for (const char* name : pieces) {
        const Figures* figures = find(name);
        if (figures == nullptr) {
            out << "  " << name << ": not run\n";
            continue;
        }
        std::snprintf(line, sizeof(line), "%-40s %10.0f %11.1f\n", name, figures->meanUs * 1000.0,
                      counter(*figures, "allocs_per_call"));
        out << line;
    }
}

void SummaryReporter::printFloorComparisons(std::ostream& out) const
{
    char line[256];
    std::snprintf(line, sizeof(line), "%-40s %14s %16s %16s\n", "getAudioTimestamps beside the floor",
                  "floor calls/s", "library calls/s", "library / floor");
    out << line;
    for (const FloorComparison& comparison : floorComparisons) {
        const Figures* figures = find(comparison.name);
        if (figures == nullptr) {
            out << "  " << comparison.name << ": not run\n";
            continue;
        }
        std::snprintf(line, sizeof(line), "%-40s %14.0f %16.0f %16.3f\n", comparison.regime,
                      counter(*figures, "floor_calls_per_s"), counter(*figures, "library_calls_per_s"),
                      counter(*figures, "library_per_floor"));
        out << line;
    }
}

void SummaryReporter::printTargets(std::ostream& out)
{
    for (const FloorComparison& comparison : floorComparisons) {
        const Figures* figures = find(comparison.name);
        if (figures != nullptr) {
            const double ratio = counter(*figures, "library_per_floor");
            out << "getAudioTimestamps >= " << format("%.2f", minimumFloorRatio) << " x floor ("
                << comparison.regime << "): " << format("%.3f", ratio)
                << (ratio >= minimumFloorRatio ? " met\n" : " NOT MET\n");
        }
    }
    const Figures* heap = find(heapCheck);
    if (heap != nullptr) {
        const double liveGrowth = counter(*heap, "live_allocs_growth");
        const double bytesGrowth = counter(*heap, "heap_bytes_growth");
        const bool met = liveGrowth <= 0.0 && bytesGrowth <= 0.0;
        out << "no heap growth over " << format("%.0f", heap->iterations)
            << " getAudioTimestamps calls: live allocations " << format("%+.0f", liveGrowth)
            << ", heap bytes " << format("%+.0f", bytesGrowth) << (met ? " met\n" : " NOT MET\n");
        _failed = _failed || !met;
    }
}

void SummaryReporter::Finalize()
{
    std::ostream& out = GetOutputStream();
    out << "\nSummary (this process pinned to CPU " << pinnedCpus()
        << "; with repetitions, medians over them)\n\n";
    printRoundTrips(out);
    out << "\n";
    printFloorComparisons(out);
    out << "\n";
    printPieces(out);
    out << "\n";
    printTargets(out);
    out.flush();
}

} // namespace bench
} // namespace akvo
