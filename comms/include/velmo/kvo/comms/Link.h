#ifndef VELMO_KVO_COMMS_LINK_H
#define VELMO_KVO_COMMS_LINK_H

#include "velmo/utilities/Export.h"
#include "velmo/utilities/result/Result.h"

#include <atomic>
#include <cstdint>

namespace velmo {
namespace kvo {
namespace comms {

// Owns one connected, blocking stream socket and moves bytes over it. Reads
// and writes report `Closed` once close() has been called, even from another
// thread, because the flag is tested after every system call.
class VELMO_EXPORT Link
{
public:
    enum ResultCode : int32_t
    {
        Success = 10000,
        UnknownError = 10001,
        Closed = 10002,
        ClosedByDistant = 10003,
        IoError = 10004,
        InternalError = 10005,
        InvalidArgument = 10006
    };

    struct ResultTrait
    {
        typedef Link::ResultCode ResultCode;
        static constexpr ResultCode successCode = Success;
        static const char* toString(ResultCode code);
    };

    typedef velmo::utilities::result::Result<ResultTrait> LinkResult;

    explicit Link(int fdLinkSocket);
    ~Link();

    void close();
    LinkResult write(const void* data, unsigned int size);
    LinkResult read(void* data, unsigned int size, unsigned int& bytesRead);

    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

private:
    int _fdLinkSocket;
    // Set by close() on any thread and read by a read() or write() blocked on
    // another, hence atomic; it takes no more room than a plain bool.
    std::atomic<bool> _isClosed;
};

} // namespace comms
} // namespace kvo
} // namespace velmo

#endif
