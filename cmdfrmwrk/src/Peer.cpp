#include "velmo/kvo/cmdfrmwrk/Peer.h"

namespace velmo {
namespace kvo {
namespace cmdfrmwrk {

const char* Peer::ResultTrait::toString(ResultCode code)
{
    switch (code) {
    case Success:
        return "Success";
    case UnknownError:
        return "Unknown error";
    case ProtocolError:
        return "Protocol error";
    case SerializerError:
        return "Serializer error";
    case ConnectionClosed:
        return "Connection closed";
    case ConnectionClosedByDistant:
        return "Connection closed by distant";
    }
    return "Invalid error (Unreachable)";
}

Peer::Peer(comms::Link* link) : _protocol(link) {}

Peer::~Peer() {}

Peer::PeerResult Peer::fromProtocolFailure(const comms::TextProtocol::ProtocolResult& failure)
{
    switch (failure.getErrorCode()) {
    case comms::TextProtocol::ProtocolClosed:
        return PeerResult(ConnectionClosed) << failure;
    case comms::TextProtocol::ClosedByDistant:
        return PeerResult(ConnectionClosedByDistant) << failure;
    default:
        return PeerResult(ProtocolError) << failure;
    }
}

} // namespace cmdfrmwrk
} // namespace kvo
} // namespace velmo
