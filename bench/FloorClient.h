#ifndef AKVO_BENCH_FLOORCLIENT_H
#define AKVO_BENCH_FLOORCLIENT_H

#include <cstdint>
#include <string>
#include <sys/types.h>
#include <sys/un.h>

namespace akvo {
namespace bench {

// The least that one getAudioTimestamps must do, written as plainly as it can
// be: the yardstick of the library's call. Per call: the library's request
// frame in one write; reads of 511 bytes until the two line feeds; the code
// and the four numbers read as the digit runs that open text nodes (a codec
// that trusts the server for the rest); the library's log line composed with plain digit
// conversions and written to standard error in one write; and one attempt
// at the log daemon with the library's record: a connect attempt (socket,
// connect, close) while none listens, one send on the socket it keeps once
// one does. One thread only: the thread id is read once.
class FloorClient
{
public:
    FloorClient(const std::string& server, const std::string& logSocket);
    ~FloorClient();

    bool isConnected() const { return _server >= 0; }

    // One call; false when the exchange failed or the answer is no success.
    bool getAudioTimestamps(uint64_t& capture);

    FloorClient(const FloorClient&) = delete;
    FloorClient& operator=(const FloorClient&) = delete;

private:
    void sendRecord(const char* message, size_t size);

    int _server;
    int _log;
    sockaddr_un _logAddress;
    pid_t _threadId;
};

} // namespace bench
} // namespace akvo

#endif
