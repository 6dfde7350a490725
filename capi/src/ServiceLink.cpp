#include "ServiceLink.h"

#include "velmo/kvo/cmdfrmwrk/Client.h"

namespace velmo {
namespace kvo {
namespace lipsyncapi {

namespace {

// Peer and Protocol keep these members protected. A pointer to a member,
// named through a derived class, is the language's own way to read them from
// outside, and it widens neither class's interface.
struct PeerProtocol : cmdfrmwrk::Peer
{
    static constexpr comms::TextProtocol cmdfrmwrk::Peer::*member = &PeerProtocol::_protocol;
};

struct ProtocolLink : comms::TextProtocol
{
    static constexpr comms::Link* comms::Protocol<std::string>::*member = &ProtocolLink::_link;
};

} // namespace

comms::Link* ServiceLink::of(const Service& service)
{
    if (service._connected != 1 || service._commandClient == nullptr) {
        return nullptr;
    }
    cmdfrmwrk::Peer& peer = *service._commandClient;
    return (peer.*PeerProtocol::member).*ProtocolLink::member;
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo
