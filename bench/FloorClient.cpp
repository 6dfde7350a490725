#include "FloorClient.h"

#include "Frames.h"
#include "ReadFrame.h"
#include "UnixSocket.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <ctime>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

namespace akvo {
namespace bench {

namespace {

constexpr char linePrefix[] = "I/AKVOLIPSYNCAPI ";
constexpr char tag[] = "AKVOLIPSYNCAPI";

// The answer's text nodes that hold digits are, in order, the result code
// and the four numbers: each is a run of digits right after a '>', summed
// digit by digit without an overflow check, since the server is trusted.
bool readNumbers(const char* at, const char* end, uint64_t (&values)[5])
{
    size_t found = 0;
    while (found < 5 &&
           (at = static_cast<const char*>(std::memchr(at, '>', static_cast<size_t>(end - at)))) != nullptr) {
        ++at;
        if (at == end || *at < '0' || *at > '9') {
            continue;
        }
        uint64_t value = 0;
        for (; at < end && *at >= '0' && *at <= '9'; ++at) {
            value = value * 10 + static_cast<uint64_t>(*at - '0');
        }
        values[found++] = value;
    }
    return found == 5 && values[0] == 1000;
}

template <size_t N>
char* put(char* out, const char (&text)[N])
{
    std::memcpy(out, text, N - 1);
    return out + N - 1;
}

char* putNumber(char* out, uint64_t value)
{
    return std::to_chars(out, out + 20, value).ptr;
}

} // namespace

FloorClient::FloorClient(const std::string& server, const std::string& logSocket)
    : _server(akvo::test::connectedUnixSocket(server)), _log(-1),
      _logAddress(akvo::test::unixAddress(logSocket)), _threadId(gettid())
{
}

FloorClient::~FloorClient()
{
    if (_server >= 0) {
        close(_server);
    }
    if (_log >= 0) {
        close(_log);
    }
}

bool FloorClient::getAudioTimestamps(uint64_t& capture)
{
    constexpr size_t requestSize = sizeof(getAudioTsRequestFrame) - 1;
    char answer[4096];
    if (write(_server, getAudioTsRequestFrame, requestSize) != static_cast<ssize_t>(requestSize)) {
        return false;
    }
    const size_t received = readFrame(_server, answer, sizeof(answer));
    uint64_t values[5];
    if (received == 0 || !readNumbers(answer, answer + received, values)) {
        return false;
    }

    char line[512];
    char* out = put(line, linePrefix);
    char* const message = out;
    out = put(out, "Client is requesting the NTP timestamp with output params: audioCaptureTimestamp=");
    out = putNumber(out, values[1]);
    out = put(out, " audioRenderingTimestamp=");
    out = putNumber(out, values[2]);
    out = put(out, " audioReceivingTimestamp=");
    out = putNumber(out, values[3]);
    out = put(out, " jbmCurrentDepth=");
    out = putNumber(out, values[4]);
    out = put(out, "  with result: Success");
    sendRecord(message, static_cast<size_t>(out - message));
    *out++ = '\n';
    // A line that standard error does not take whole is the caller's loss,
    // as it is the library's.
    static_cast<void>(write(STDERR_FILENO, line, static_cast<size_t>(out - line)));
    capture = values[1];
    return true;
}

// The library's record: header, priority, tag and message with their zero
// bytes.
void FloorClient::sendRecord(const char* message, size_t size)
{
    if (_log < 0) {
        const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        if (fd < 0) {
            return;
        }
        if (connect(fd, reinterpret_cast<const sockaddr*>(&_logAddress), sizeof(_logAddress)) != 0) {
            close(fd);
            return;
        }
        _log = fd;
    }
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    // Log id 0, thread id, seconds and nanoseconds, then the priority, 4.
    unsigned char header[12] = {};
    header[1] = static_cast<unsigned char>(_threadId);
    header[2] = static_cast<unsigned char>(_threadId >> 8);
    const uint32_t seconds = static_cast<uint32_t>(now.tv_sec);
    const uint32_t nanoseconds = static_cast<uint32_t>(now.tv_nsec);
    for (int i = 0; i < 4; ++i) {
        header[3 + i] = static_cast<unsigned char>(seconds >> (8 * i));
        header[7 + i] = static_cast<unsigned char>(nanoseconds >> (8 * i));
    }
    header[11] = 4;
    char zero = '\0';
    iovec record[] = {{header, sizeof(header)},
                      {const_cast<char*>(tag), sizeof(tag)},
                      {const_cast<char*>(message), size},
                      {&zero, 1}};
    // A full queue drops the record; a daemon gone makes the next call connect again.
    if (writev(_log, record, 4) < 0 && errno != EAGAIN) {
        close(_log);
        _log = -1;
    }
}

} // namespace bench
} // namespace akvo
