#include "velmo/kvo/comms/Link.h"

#include "velmo/utilities/log/Assertion.h"

#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace comms {

using velmo::utilities::assertThat;
using velmo::utilities::result::ErrnoTrait;
using velmo::utilities::result::Result;

static_assert(sizeof(std::atomic<bool>) == sizeof(bool) && std::atomic<bool>::is_always_lock_free,
              "the closed flag must keep the Link's layout");

const char* Link::ResultTrait::toString(ResultCode code)
{
    switch (code) {
    case Success:
        return "Success";
    case UnknownError:
        return "Unknown error";
    case Closed:
        return "Closed";
    case ClosedByDistant:
        return "Closed by distant";
    case IoError:
        return "I/O error";
    case InternalError:
        return "Internal error";
    case InvalidArgument:
        return "Invalid Argument(s)";
    }
    return "Invalid error (Unreachable)";
}

// The assertion texts below are fixed output: each names a source line
// that is not the one it stands on, and stays so byte for byte.

Link::Link(int fdLinkSocket) : _fdLinkSocket(fdLinkSocket), _isClosed(false)
{
    // Fixed output (misspelling and line number included).
    assertThat(fdLinkSocket > 0,
               "comms/src/Link:40: Assertion fdLinkSocket > 0 failed: Invalid file descritpor");
}

Link::~Link()
{
    close();
    ::close(_fdLinkSocket);
    // A plain store into an object being destroyed is dropped by the
    // compiler; this one must stay so that a Link used after its destruction
    // trips the operations' assertions.
    *static_cast<volatile int*>(&_fdLinkSocket) = 0;
}

void Link::close()
{
    assertThat(_fdLinkSocket > 0,
               "comms/src/Link:54: Assertion _fdLinkSocket > 0 failed: Invalid File Descriptor");
    if (!_isClosed.exchange(true)) {
        ::shutdown(_fdLinkSocket, SHUT_RDWR);
    }
}

// The closed flag is tested before the call's outcome so that a close() made
// from another thread, which wakes the blocked call, reads as Closed.
Link::LinkResult Link::write(const void* data, unsigned int size)
{
    assertThat(_fdLinkSocket > 0,
               "comms/src/Link:65: Assertion _fdLinkSocket > 0 failed: Invalid File Descriptor");
    if (data == nullptr || size == 0) {
        return LinkResult(InvalidArgument);
    }
    const char* bytes = static_cast<const char*>(data);
    unsigned int written = 0;
    do {
        const ssize_t count = ::write(_fdLinkSocket, bytes + written, size - written);
        if (_isClosed) {
            return LinkResult(Closed);
        }
        if (count >= 0) {
            written += static_cast<unsigned int>(count);
        } else if (errno == EPIPE) {
            return LinkResult(ClosedByDistant);
        } else if (errno != EAGAIN && errno != EINTR) {
            return LinkResult(IoError) << Result<ErrnoTrait>(errno);
        }
    } while (written < size);
    return LinkResult::success();
}

Link::LinkResult Link::read(void* data, unsigned int size, unsigned int& bytesRead)
{
    assertThat(_fdLinkSocket > 0,
               "comms/src/Link:107: Assertion _fdLinkSocket > 0 failed: Invalid File Descriptor");
    if (data == nullptr || size == 0) {
        return LinkResult(InvalidArgument);
    }
    for (;;) {
        const ssize_t count = ::read(_fdLinkSocket, data, size);
        if (_isClosed) {
            return LinkResult(Closed);
        }
        if (count > 0) {
            bytesRead = static_cast<unsigned int>(count);
            return LinkResult::success();
        }
        if (count == 0 || errno == ECONNRESET) {
            return LinkResult(ClosedByDistant);
        }
        if (errno != EAGAIN && errno != EINTR) {
            return LinkResult(IoError) << Result<ErrnoTrait>(errno);
        }
    }
}

} // namespace comms
} // namespace kvo
} // namespace velmo
