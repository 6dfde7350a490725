#ifndef VELMO_KVO_CMDFRMWRK_CLIENT_H
#define VELMO_KVO_CMDFRMWRK_CLIENT_H

#include "velmo/kvo/cmdfrmwrk/Peer.h"
#include "velmo/kvo/comms/Link.h"
#include "velmo/utilities/result/Result.h"

#include <new>
#include <string>

namespace velmo {
namespace kvo {
namespace cmdfrmwrk {

// Runs one command as a blocking request and answer. The result tells only
// whether a well-formed answer arrived; the server's verdict is in
// `answer.result`.
class Client : public Peer
{
public:
    explicit Client(comms::Link* link);
    virtual ~Client();

    // A failed allocation (an answer too large for the memory left, say)
    // ends the exchange as an UnknownError saying so, instead of an
    // exception: results are this library's only way of reporting failures.
    // The connection's unread bytes stay buffered, so the caller should
    // reconnect before the next command.
    template <class Cmd, class Serializer>
    velmo::utilities::result::Result<Peer::ResultTrait> executeCommand(const typename Cmd::Request& request,
                                                                       typename Cmd::Answer& answer)
    {
        try {
            return exchange<Cmd, Serializer>(request, answer);
        } catch (const std::bad_alloc&) {
            return PeerResult(UnknownError) << "Not enough memory for the exchange";
        }
    }

private:
    // The serializer keeps nothing between calls but its root name and
    // version, so one serves every exchange of a kind.
    template <class Cmd, class Serializer>
    PeerResult exchange(const typename Cmd::Request& request, typename Cmd::Answer& answer)
    {
        static const Serializer serializer;
        const auto serializeResult = serializer.serialize(request, _request);
        if (serializeResult.isFailure()) {
            return PeerResult(serializeResult, SerializerError, Success);
        }
        comms::TextProtocol::ProtocolResult transfer = _protocol.send(_request);
        if (transfer.isSuccess()) {
            transfer = _protocol.receiveInto(_answer);
        }
        if (transfer.isFailure()) {
            return fromProtocolFailure(transfer);
        }
        PeerResult result =
            Serializer::readCanonical(_answer, answer)
                ? PeerResult::success()
                : PeerResult(serializer.deserialize(_answer, answer), SerializerError, Success);
        // An answer far larger than the engine's usual ones gives its memory back.
        if (_answer.capacity() > keptAnswerCapacity) {
            std::string().swap(_answer);
        }
        return result;
    }

    static constexpr std::string::size_type keptAnswerCapacity = 4096;

    // The last request's and the last answer's texts; kept so that their
    // buffers serve the next exchange.
    std::string _request;
    std::string _answer;
};

} // namespace cmdfrmwrk
} // namespace kvo
} // namespace velmo

#endif
