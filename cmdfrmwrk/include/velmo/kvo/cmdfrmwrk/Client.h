#ifndef VELMO_KVO_CMDFRMWRK_CLIENT_H
#define VELMO_KVO_CMDFRMWRK_CLIENT_H

#include "velmo/kvo/cmdfrmwrk/Peer.h"
#include "velmo/kvo/comms/Link.h"
#include "velmo/utilities/log/Assertion.h"
#include "velmo/utilities/result/Result.h"

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

    template <class Cmd, class Serializer>
    velmo::utilities::result::Result<Peer::ResultTrait> executeCommand(const typename Cmd::Request& request,
                                                                       typename Cmd::Answer& answer)
    {
        std::string requestStr;
        Serializer requestSerializer;
        const auto serializeResult = requestSerializer.serialize(request, requestStr);
        if (serializeResult.isFailure()) {
            return PeerResult(serializeResult, SerializerError, Success);
        }
        std::string* answerStr = NULL;
        comms::TextProtocol::ProtocolResult exchange = _protocol.send(requestStr);
        if (exchange.isSuccess()) {
            exchange = _protocol.receive(answerStr);
        }
        if (exchange.isFailure()) {
            return fromProtocolFailure(exchange);
        }
        velmo::utilities::assertThat(
            answerStr != NULL,
            "lipsyncapi/src/Service:94: Assertion answerStr != NULL failed: answer string is null");
        Serializer answerSerializer;
        const auto deserializeResult = answerSerializer.deserialize(*answerStr, answer);
        delete answerStr;
        return PeerResult(deserializeResult, SerializerError, Success);
    }
};

} // namespace cmdfrmwrk
} // namespace kvo
} // namespace velmo

#endif
