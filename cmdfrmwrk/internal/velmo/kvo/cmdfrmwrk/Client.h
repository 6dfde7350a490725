#ifndef VELMO_KVO_CMDFRMWRK_CLIENT_H
#define VELMO_KVO_CMDFRMWRK_CLIENT_H

#include "velmo/kvo/cmdfrmwrk/Peer.h"
#include "velmo/kvo/comms/Link.h"
#include "velmo/utilities/log/Assertion.h"
#include "velmo/utilities/result/Result.h"

#include <memory>
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
        std::string* answerStr = nullptr;
        comms::TextProtocol::ProtocolResult transfer = _protocol.send(_request);
        if (transfer.isSuccess()) {
            transfer = _protocol.receive(answerStr);
        }
        if (transfer.isFailure()) {
            return fromProtocolFailure(transfer);
        }
        // Fixed output: names the Service's source, as it always has.
        velmo::utilities::assertThat(
            answerStr != nullptr,
            "lipsyncapi/src/Service:94: Assertion answerStr != NULL failed: answer string is null");
        const std::unique_ptr<const std::string> ownedAnswer(answerStr);
        if (Serializer::readCanonical(*ownedAnswer, answer)) {
            return PeerResult::success();
        }
        const auto deserializeResult = serializer.deserialize(*ownedAnswer, answer);
        return PeerResult(deserializeResult, SerializerError, Success);
    }

    // The last request's text; kept so that its buffer serves the next one.
    std::string _request;
};

} // namespace cmdfrmwrk
} // namespace kvo
} // namespace velmo

#endif
