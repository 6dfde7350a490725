#ifndef VELMO_KVO_COMMS_CLIENT_H
#define VELMO_KVO_COMMS_CLIENT_H

/**
 * @file
 * `velmo::kvo::comms::Client`, the connection to a server.
 */

#include "velmo/kvo/comms/Link.h"
#include "velmo/utilities/Export.h"
#include "velmo/utilities/result/Result.h"

#include <cstdint>

namespace velmo {
namespace kvo {
namespace comms {

/**
 * Connects to a server with a single blocking attempt and hands the caller a
 * new Link that owns the socket. Nothing is retried and no time-out is set:
 * the socket stays in blocking mode. Both functions may run on any thread at
 * the same time.
 *
 * When memory runs out, std::bad_alloc propagates (only the Service turns
 * that into a result).
 */
class VELMO_EXPORT Client
{
public:
    /// The codes of a ClientResult, each with its fixed text.
    enum ResultCode : int32_t
    {
        /// "Success".
        Success = 20000,
        /// "Unknown error"; not produced by this version.
        UnknownError = 20001,
        /// "Connection has failed": the socket could not be created or
        /// connected; the errno result is nested.
        ConnectionFailed = 20002
    };

    /// The code family of ClientResult.
    struct ResultTrait
    {
        /// The family's codes.
        using ResultCode = Client::ResultCode;
        /// The code that ClientResult::isSuccess() tests for.
        static constexpr ResultCode successCode = Success;
        /// The fixed text of @p code; "Invalid error (Unreachable)" for a value outside ResultCode.
        static const char* toString(ResultCode code);
    };

    /// What the connecting functions return.
    using ClientResult = velmo::utilities::result::Result<ResultTrait>;

    /**
     * Connects to the Unix stream socket at @p path.
     *
     * @param path the socket's path; must not be null. A path of 108 bytes or
     *        more is cut to its first 108 bytes, and an empty one names
     *        Linux's abstract namespace.
     * @param[out] link set to null first; on success, a new Link that the
     *        caller owns (delete it, or hand it to a TextProtocol, which
     *        deletes it).
     * @return #Success; #ConnectionFailed "Unable to connect to <path>" with
     *         the errno result nested, or with only the errno result when no
     *         socket could be created. No descriptor is left open on failure.
     */
    static ClientResult connectUnixServer(const char* path, Link*& link);

    /**
     * Connects to an IPv4 TCP server.
     *
     * @param ip the address in dotted decimal; must not be null. Text that is
     *        not an IPv4 address is not refused: the attempt goes to 0.0.0.0,
     *        which Linux takes as this host.
     * @param port the port; only its low 16 bits are used, while failure
     *        texts show the number as given.
     * @param[out] link set to null first; on success, a new Link that the
     *        caller owns.
     * @return #Success; #ConnectionFailed "Unable to connect to <ip>:<port>"
     *         or "Unable to create socket to <ip>:<port>", with the errno
     *         result nested. A peer that does not answer makes the call
     *         block for the system's own connection time-out.
     */
    static ClientResult connectTcpServer(const char* ip, int port, Link*& link);

    /// Only the static functions are used.
    Client() = delete;
};

} // namespace comms
} // namespace kvo
} // namespace velmo

#endif
