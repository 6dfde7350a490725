#ifndef VELMO_KVO_COMMS_PROTOCOL_H
#define VELMO_KVO_COMMS_PROTOCOL_H

/**
 * @file
 * `velmo::kvo::comms::Protocol`, the interface of a message protocol.
 */

#include "velmo/kvo/comms/Link.h"
#include "velmo/utilities/Export.h"
#include "velmo/utilities/result/Result.h"

#include <cstddef>
#include <cstdint>

namespace velmo {
namespace kvo {
namespace comms {

/**
 * A message protocol over a Link; owns the Link and deletes it.
 * TextProtocol is the implementation for text messages.
 *
 * @tparam Message the type of one message.
 */
template <class Message>
class VELMO_EXPORT Protocol
{
public:
    /// The codes of a ProtocolResult, each with its fixed text.
    enum ResultCode : int32_t
    {
        /// "Success".
        Success = 40000,
        /// "Unknown error"; not produced by TextProtocol.
        UnknownError = 40001,
        /// "Protocol error"; not produced by TextProtocol.
        ProtocolError = 40002,
        /// "Link error": the Link failed; its result is nested.
        LinkError = 40003,
        /// "Protocol is closed.": the Link was closed on this side; its result is nested.
        ProtocolClosed = 40004,
        /// "Protocol has been closed by distant": the peer closed the connection;
        /// the Link's result is nested.
        ClosedByDistant = 40005,
        /// "Internal error"; not produced by TextProtocol.
        InternalError = 40006
    };

    /// The code family of ProtocolResult.
    struct ResultTrait
    {
        /// The family's codes.
        using ResultCode = typename Protocol::ResultCode;
        /// The code that ProtocolResult::isSuccess() tests for.
        static constexpr ResultCode successCode = Success;
        /// The fixed text of @p code; "Invalid error (Unreachable)" for a value outside ResultCode.
        static const char* toString(ResultCode code)
        {
            switch (code) {
            case Success:
                return "Success";
            case UnknownError:
                return "Unknown error";
            case ProtocolError:
                return "Protocol error";
            case LinkError:
                return "Link error";
            case ProtocolClosed:
                return "Protocol is closed.";
            case ClosedByDistant:
                return "Protocol has been closed by distant";
            case InternalError:
                return "Internal error";
            }
            return "Invalid error (Unreachable)";
        }
    };

    /// What send() and receive() return.
    using ProtocolResult = velmo::utilities::result::Result<ResultTrait>;

    /// Takes ownership of @p link.
    explicit Protocol(Link* link) : _link(link) {}

    /// Deletes the Link, which closes the socket.
    virtual ~Protocol()
    {
        if (_link != nullptr) {
            delete _link;
        }
    }

    /**
     * Sends one message.
     *
     * @param message the message.
     */
    virtual ProtocolResult send(const Message& message) = 0;

    /**
     * Blocks until one whole message has arrived.
     *
     * @param[out] message on success, a new message that the caller owns and
     *        deletes; null on failure.
     */
    virtual ProtocolResult receive(Message*& message) = 0;

    /// Not copyable: a Protocol owns its Link.
    Protocol(const Protocol&) = delete;
    /// Not assignable: a Protocol owns its Link.
    Protocol& operator=(const Protocol&) = delete;

protected:
    /// The owned Link; deleted by the destructor.
    Link* _link;
};

} // namespace comms
} // namespace kvo
} // namespace velmo

#endif
