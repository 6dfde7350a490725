#include "UnixConnect.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

using comms::Client;
using velmo::utilities::result::ErrnoTrait;
using velmo::utilities::result::Result;

namespace {

// Zero is no time-out.
bool setSendTimeout(int fd, std::chrono::microseconds timeout)
{
    const timeval value = {static_cast<time_t>(timeout.count() / 1000000),
                           static_cast<suseconds_t>(timeout.count() % 1000000)};
    return setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &value, sizeof(value)) == 0;
}

} // namespace

Client::ClientResult connectUnixSocket(const char* path, const Deadline& deadline, int& fd, bool& outOfTime)
{
    outOfTime = false;
    // Not close-on-exec, as the Service's own socket.
    fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (fd < 0) {
        return Client::ClientResult(Client::ConnectionFailed) << Result<ErrnoTrait>(errno);
    }
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path, std::strlen(path));
    int error = 0;
    for (;;) {
        if (deadline.isSet() && !setSendTimeout(fd, deadline.left())) {
            error = errno;
            break;
        }
        if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) {
            error = 0;
            break;
        }
        error = errno;
        // Under a time-out the kernel does not restart a connect() that a
        // signal interrupted; the attempt goes on with the time left.
        if (!deadline.isSet() || error != EINTR) {
            break;
        }
    }
    if (error == 0 && deadline.isSet() && !setSendTimeout(fd, std::chrono::microseconds(0))) {
        error = errno;
    }
    if (error != 0) {
        ::close(fd);
        fd = -1;
        outOfTime = deadline.isSet() && error == EAGAIN;
        return Client::ClientResult(Client::ConnectionFailed)
               << "Unable to connect to " << path << Result<ErrnoTrait>(error);
    }
    return Client::ClientResult::success();
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo
