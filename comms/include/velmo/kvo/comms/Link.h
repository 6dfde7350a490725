#ifndef VELMO_KVO_COMMS_LINK_H
#define VELMO_KVO_COMMS_LINK_H

/**
 * @file
 * `velmo::kvo::comms::Link`, the byte level of the transport.
 */

#include "velmo/utilities/Export.h"
#include "velmo/utilities/result/Result.h"

#include <atomic>
#include <cstdint>

namespace velmo {
namespace kvo {
/**
 * The transport under the Service: a socket link, the connection to a
 * server, and the framing of text messages. The Service uses them for its
 * own connection; they are exported for applications that talk to a server
 * of the same kind themselves.
 */
namespace comms {

/**
 * Owns one connected, blocking stream socket and moves bytes over it.
 *
 * Reads and writes block with no time-out. close() may be called from
 * another thread to wake a read() or write() blocked on this Link, which then
 * returns #Closed, because the flag is tested after every system call. Apart
 * from close(), one thread at a time.
 *
 * Failures are results, with the system error nested; when memory runs out
 * while a failure text is built, std::bad_alloc propagates (only the Service
 * turns that into a result).
 */
class VELMO_EXPORT Link
{
public:
    /// The codes of a LinkResult, each with its fixed text.
    enum ResultCode : int32_t
    {
        /// "Success".
        Success = 10000,
        /// "Unknown error"; not produced by this version.
        UnknownError = 10001,
        /// "Closed": close() was called on this Link.
        Closed = 10002,
        /// "Closed by distant": the peer closed or reset the connection.
        ClosedByDistant = 10003,
        /// "I/O error": the system call failed; its errno result is nested.
        IoError = 10004,
        /// "Internal error"; not produced by this version.
        InternalError = 10005,
        /// "Invalid Argument(s)": a null buffer or a size of 0.
        InvalidArgument = 10006
    };

    /// The code family of LinkResult.
    struct ResultTrait
    {
        /// The family's codes.
        using ResultCode = Link::ResultCode;
        /// The code that LinkResult::isSuccess() tests for.
        static constexpr ResultCode successCode = Success;
        /// The fixed text of @p code; "Invalid error (Unreachable)" for a value outside ResultCode.
        static const char* toString(ResultCode code);
    };

    /// What read() and write() return.
    using LinkResult = velmo::utilities::result::Result<ResultTrait>;

    /**
     * Takes ownership of @p fdLinkSocket, a connected stream socket in
     * blocking mode; its flags and options are left as they are.
     *
     * @param fdLinkSocket the descriptor; a value of 0 or less is a
     *        programming error that stops the process with an assertion.
     */
    explicit Link(int fdLinkSocket);

    /// Shuts the socket down, unless close() did, and closes the descriptor.
    ~Link();

    /**
     * Shuts the socket down in both directions, which wakes a read() or
     * write() blocked on another thread; from then on both return #Closed.
     * The descriptor stays open until destruction. Calling it again does
     * nothing.
     */
    void close();

    /**
     * Writes all @p size bytes of @p data, in as many system calls as it
     * takes, and blocks until they are written.
     *
     * @param data the bytes; must not be null.
     * @param size their number; must not be 0.
     * @return #Success; #InvalidArgument; #Closed; #ClosedByDistant when the
     *         peer has closed the connection (the write also raises SIGPIPE,
     *         which ends a process that does not ignore it); #IoError with the
     *         errno result nested.
     */
    LinkResult write(const void* data, unsigned int size);

    /**
     * Blocks until some bytes are there, then reads at most @p size of them.
     *
     * @param data where to put them; must not be null.
     * @param size the room at @p data; must not be 0.
     * @param[out] bytesRead how many bytes were read, between 1 and @p size;
     *        set on success only.
     * @return #Success; #InvalidArgument; #Closed; #ClosedByDistant at the end
     *         of the stream or on a reset; #IoError with the errno result
     *         nested.
     */
    LinkResult read(void* data, unsigned int size, unsigned int& bytesRead);

    /// Not copyable: a Link owns its descriptor.
    Link(const Link&) = delete;
    /// Not assignable: a Link owns its descriptor.
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
