#ifndef VELMO_KVO_COMMS_PROTOCOL_H
#define VELMO_KVO_COMMS_PROTOCOL_H

#include "velmo/kvo/comms/Link.h"
#include "velmo/utilities/Export.h"
#include "velmo/utilities/result/Result.h"

#include <cstddef>
#include <cstdint>

namespace velmo {
namespace kvo {
namespace comms {

// A message protocol over a Link; owns the Link and deletes it.
template <class Message>
class VELMO_EXPORT Protocol
{
public:
    enum ResultCode : int32_t
    {
        Success = 40000,
        UnknownError = 40001,
        ProtocolError = 40002,
        LinkError = 40003,
        ProtocolClosed = 40004,
        ClosedByDistant = 40005,
        InternalError = 40006
    };

    struct ResultTrait
    {
        typedef typename Protocol::ResultCode ResultCode;
        static constexpr ResultCode successCode = Success;
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

    typedef velmo::utilities::result::Result<ResultTrait> ProtocolResult;

    explicit Protocol(Link* link) : _link(link) {}

    virtual ~Protocol()
    {
        if (_link != NULL) {
            delete _link;
        }
    }

    virtual ProtocolResult send(const Message& message) = 0;
    virtual ProtocolResult receive(Message*& message) = 0;

    Protocol(const Protocol&) = delete;
    Protocol& operator=(const Protocol&) = delete;

protected:
    Link* _link;
};

} // namespace comms
} // namespace kvo
} // namespace velmo

#endif
