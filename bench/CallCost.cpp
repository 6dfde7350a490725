// akvo-call-cost: makes N calls of one kind, N raw round trips of the same
// bytes, or N calls of the floor client, against a running
// akvo-bench-server, and nothing else, so that valgrind can count what one
// call costs as the difference between two runs with different N
// (connection and start-up cancel out).
//
//   akvo-call-cost --server PATH --call get|set|raw-get|raw-set|floor-get --calls N
//
// Prints how many heap allocations the calls made (operator new, which this
// binary counts), connecting left out. Exits 1 if a call failed or an answer was not the canned
// one.

#include "AllocationCounter.h"
#include "FloorClient.h"
#include "Frames.h"
#include "UnixSocket.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace akvo::bench;
using velmo::kvo::lipsyncapi::Service;

int usage()
{
    std::fprintf(stderr,
                 "usage: akvo-call-cost --server PATH --call get|set|raw-get|raw-set|floor-get --calls N\n");
    return 2;
}

// One write of the request frame, then reads of 511 bytes until the two line
// feeds: what the library does on the wire, and nothing more.
bool rawCalls(const std::string& server, const char* request, size_t requestSize, size_t answerSize,
              long calls)
{
    const int fd = akvo::test::connectedUnixSocket(server);
    if (fd < 0) {
        return false;
    }
    char buffer[512];
    for (long call = 0; call < calls; ++call) {
        if (write(fd, request, requestSize) != static_cast<ssize_t>(requestSize)) {
            return false;
        }
        size_t received = 0;
        while (received < answerSize) {
            const ssize_t count = read(fd, buffer, sizeof(buffer) - 1);
            if (count <= 0) {
                return false;
            }
            received += static_cast<size_t>(count);
        }
    }
    close(fd);
    return true;
}

// The floor client's log record goes where the library's does.
bool floorCalls(const std::string& server, long calls, uint64_t& allocations)
{
    const char* logSocket = std::getenv("AKVO_LOG_SOCKET");
    FloorClient floor(server, logSocket != nullptr && *logSocket != '\0' ? logSocket : AKVO_LOGDW_PATH);
    if (!floor.isConnected()) {
        return false;
    }
    const uint64_t before = currentAllocationCount().allocations;
    uint64_t capture = 0;
    for (long call = 0; call < calls; ++call) {
        if (!floor.getAudioTimestamps(capture) || capture != cannedCaptureTimestamp) {
            return false;
        }
    }
    allocations = currentAllocationCount().allocations - before;
    return true;
}

// `allocations` counts those of the calls alone, not of connecting.
bool serviceCalls(const std::string& server, bool get, long calls, uint64_t& allocations)
{
    Service service;
    if (service.connect(server).isFailure()) {
        return false;
    }
    const uint64_t before = currentAllocationCount().allocations;
    for (long call = 0; call < calls; ++call) {
        velmo::kvo::common::LipSyncNtpTimestamps timestamps = {0, 0, 0, 0};
        const bool done = get ? service.getAudioTimestamps(timestamps).isSuccess() &&
                                    timestamps.tCap == cannedCaptureTimestamp
                              : service.setAudioDelayMargin(setAudioDelayRequestMs).isSuccess();
        if (!done) {
            return false;
        }
    }
    allocations = currentAllocationCount().allocations - before;
    return service.disconnect().isSuccess();
}

} // namespace

int main(int argc, char** argv)
{
    std::string server;
    std::string call;
    long calls = -1;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--server") == 0) {
            server = argv[i + 1];
        } else if (std::strcmp(argv[i], "--call") == 0) {
            call = argv[i + 1];
        } else if (std::strcmp(argv[i], "--calls") == 0) {
            calls = std::strtol(argv[i + 1], nullptr, 10);
        } else {
            return usage();
        }
    }
    if (argc % 2 == 0 || server.empty() || calls < 0) {
        return usage();
    }
    bool done;
    uint64_t allocations = 0;
    if (call == "get" || call == "set") {
        done = serviceCalls(server, call == "get", calls, allocations);
    } else if (call == "raw-get") {
        done = rawCalls(server, getAudioTsRequestFrame, sizeof(getAudioTsRequestFrame) - 1,
                        sizeof(getAudioTsAnswerFrame) - 1, calls);
    } else if (call == "raw-set") {
        done = rawCalls(server, setAudioDelayRequestFrame, sizeof(setAudioDelayRequestFrame) - 1,
                        sizeof(setAudioDelayAnswerFrame) - 1, calls);
    } else if (call == "floor-get") {
        done = floorCalls(server, calls, allocations);
    } else {
        return usage();
    }
    if (!done) {
        std::fprintf(stderr, "akvo-call-cost: a %s call failed\n", call.c_str());
        return 1;
    }
    std::printf("allocations %llu\n", static_cast<unsigned long long>(allocations));
    return 0;
}
