#ifndef AKVO_BENCH_LOGDAEMONSTANDIN_H
#define AKVO_BENCH_LOGDAEMONSTANDIN_H

#include "Benchmarks.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

namespace akvo {
namespace bench {

// Plays the log daemon for the benchmarks that price logging to a listening
// receiver: binds the log writer's datagram socket and drains it on a thread
// of its own, counting the records. The log writer keeps the first socket it
// connects, so once bound the receiver stays for the rest of the process:
// every benchmark that runs without a log daemon must run before it exists.
class LogDaemonStandIn
{
public:
    static LogDaemonStandIn& instance();

    // Whether instance() has ever been called in this process; once it has,
    // the writer may be connected and no benchmark can price the absent
    // daemon any more.
    static bool wasStarted();

    // Whether the socket could be bound; the benchmarks that need it skip
    // themselves otherwise.
    bool isListening() const { return _fd >= 0; }
    uint64_t receivedRecords() const { return _received.load(std::memory_order_relaxed); }

    // Waits until no record has arrived for a few milliseconds, so that the
    // count covers every record already sent.
    void settle() const;

    ~LogDaemonStandIn();
    LogDaemonStandIn(const LogDaemonStandIn&) = delete;
    LogDaemonStandIn& operator=(const LogDaemonStandIn&) = delete;

private:
    explicit LogDaemonStandIn(const std::string& path);
    void drain();

    std::string _path;
    int _fd;
    std::atomic<uint64_t> _received;
    std::thread _drainer;
};

// Sets up the log regime of one benchmark: the drained receiver when the
// daemon must listen (`standIn` then points to it), nothing when it must be
// absent. Returns false, with the benchmark marked skipped, when that regime
// cannot be had in this process.
bool enterLogRegime(benchmark::State& state, LogDaemon daemon, LogDaemonStandIn*& standIn);

// Removes a socket file that an earlier, interrupted run may have left at the
// log writer's path, so that the first benchmarks really find no daemon.
void removeStaleLogSocket();

} // namespace bench
} // namespace akvo

#endif
