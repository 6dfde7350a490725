// akvo-bench: the library's round trips against the canned server, beside the
// raw round trip of the same bytes, and the pieces of one call.
//
//   akvo-bench --server=PATH [benchmark flags]
//
// PATH is the socket of a running akvo-bench-server; without it only the
// pieces run. scripts/bench starts the server and pins both processes.

#include "Benchmarks.h"
#include "LogDaemonStandIn.h"
#include "SummaryReporter.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <string>

using namespace akvo::bench;

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    const char serverFlag[] = "--server=";
    std::string serverSocket;
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], serverFlag, sizeof(serverFlag) - 1) == 0) {
            serverSocket = argv[i] + sizeof(serverFlag) - 1;
        } else {
            std::fprintf(
                stderr,
                "akvo-bench: unknown argument %s\nusage: akvo-bench --server=PATH [benchmark flags]\n",
                argv[i]);
            return 2;
        }
    }
    removeStaleLogSocket();

    // Every benchmark without a log daemon runs before the receiver is bound.
    registerPieceBenchmarks();
    registerLogRecordBenchmark(LogDaemon::Absent);
    if (!serverSocket.empty()) {
        registerRawRoundTrips(serverSocket);
        registerServiceRoundTrips(serverSocket, LogDaemon::Absent);
        registerFloorComparison(serverSocket, LogDaemon::Absent);
        registerHeapGrowthCheck(serverSocket);
    }
    registerLogRecordBenchmark(LogDaemon::Listening);
    if (!serverSocket.empty()) {
        registerServiceRoundTrips(serverSocket, LogDaemon::Listening);
        registerFloorComparison(serverSocket, LogDaemon::Listening);
    }

    SummaryReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return reporter.hasFailures() ? 1 : 0;
}
