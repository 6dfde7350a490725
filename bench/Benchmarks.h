#ifndef AKVO_BENCH_BENCHMARKS_H
#define AKVO_BENCH_BENCHMARKS_H

#include <string>

namespace akvo {
namespace bench {

// The two regimes of the log writer: nobody listens on its socket (the host's
// default: every record tries to connect again), or a receiver drains it.
enum class LogDaemon
{
    Absent,
    Listening
};

// Each function registers its benchmarks; they run in registration order,
// which main() uses to run every Absent benchmark before the first Listening
// one.
void registerPieceBenchmarks();
void registerLogRecordBenchmark(LogDaemon daemon);
void registerRawRoundTrips(const std::string& serverSocket);
void registerServiceRoundTrips(const std::string& serverSocket, LogDaemon daemon);
void registerFloorComparison(const std::string& serverSocket, LogDaemon daemon);
void registerHeapGrowthCheck(const std::string& serverSocket);

inline const char* regimeName(LogDaemon daemon)
{
    return daemon == LogDaemon::Absent ? "NoLogDaemon" : "LogReceiver";
}

} // namespace bench
} // namespace akvo

#endif
