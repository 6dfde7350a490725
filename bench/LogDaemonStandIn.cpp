#include "LogDaemonStandIn.h"

#include "UnixSocket.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace akvo {
namespace bench {

namespace {
std::atomic<bool> started{false};
} // namespace

LogDaemonStandIn& LogDaemonStandIn::instance()
{
    started = true;
    static LogDaemonStandIn standIn(AKVO_BENCH_LOGDW_PATH);
    return standIn;
}

bool LogDaemonStandIn::wasStarted()
{
    return started;
}

LogDaemonStandIn::LogDaemonStandIn(const std::string& path) : _path(path), _fd(-1), _received(0)
{
    unlink(path.c_str());
    _fd = akvo::test::boundUnixSocket(SOCK_DGRAM, path);
    if (_fd < 0) {
        std::fprintf(stderr, "akvo-bench: cannot bind the log receiver at %s: %s\n", path.c_str(),
                     std::strerror(errno));
    }
    if (_fd >= 0) {
        _drainer = std::thread(&LogDaemonStandIn::drain, this);
    }
}

LogDaemonStandIn::~LogDaemonStandIn()
{
    if (_fd < 0) {
        return;
    }
    // A shut-down datagram socket wakes the blocked receive with 0.
    shutdown(_fd, SHUT_RDWR);
    _drainer.join();
    close(_fd);
    unlink(_path.c_str());
}

void LogDaemonStandIn::drain()
{
    static char datagram[65536];
    for (;;) {
        const ssize_t size = recv(_fd, datagram, sizeof(datagram), 0);
        if (size > 0) {
            _received.fetch_add(1, std::memory_order_relaxed);
        } else if (size == 0 || errno != EINTR) {
            return;
        }
    }
}

void LogDaemonStandIn::settle() const
{
    uint64_t seen = receivedRecords();
    for (;;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        const uint64_t now = receivedRecords();
        if (now == seen) {
            return;
        }
        seen = now;
    }
}

bool enterLogRegime(benchmark::State& state, LogDaemon daemon, LogDaemonStandIn*& standIn)
{
    standIn = nullptr;
    if (daemon == LogDaemon::Absent) {
        if (LogDaemonStandIn::wasStarted()) {
            state.SkipWithError("a log receiver was bound earlier in this process");
            return false;
        }
        return true;
    }
    standIn = &LogDaemonStandIn::instance();
    if (!standIn->isListening()) {
        state.SkipWithError("no log receiver could be bound");
        return false;
    }
    return true;
}

void removeStaleLogSocket()
{
    unlink(AKVO_BENCH_LOGDW_PATH);
}

} // namespace bench
} // namespace akvo
