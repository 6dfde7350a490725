#ifndef VELMO_KVO_CMDFRMWRK_PEER_H
#define VELMO_KVO_CMDFRMWRK_PEER_H

#include "velmo/kvo/comms/Link.h"
#include "velmo/kvo/comms/TextProtocol.h"
#include "velmo/utilities/result/Result.h"

#include <cstdint>

namespace velmo {
namespace kvo {
namespace cmdfrmwrk {

// One end of a command connection. It owns the text protocol, and through
// it the link.
class Peer
{
public:
    enum ResultCode : int32_t
    {
        Success = 5900,
        UnknownError = 5901,
        ProtocolError = 5902,
        SerializerError = 5903,
        ConnectionClosed = 5904,
        ConnectionClosedByDistant = 5905
    };

    struct ResultTrait
    {
        using ResultCode = Peer::ResultCode;
        static constexpr ResultCode successCode = Success;
        static const char* toString(ResultCode code);
    };

    using PeerResult = velmo::utilities::result::Result<ResultTrait>;

    explicit Peer(velmo::kvo::comms::Link* link);
    virtual ~Peer();

    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

protected:
    // A closed connection keeps a code of its own, so that callers can tell
    // it from other transport failures without reading the nested text.
    static PeerResult fromProtocolFailure(const velmo::kvo::comms::TextProtocol::ProtocolResult& failure);

    velmo::kvo::comms::TextProtocol _protocol;
};

} // namespace cmdfrmwrk
} // namespace kvo
} // namespace velmo

#endif
