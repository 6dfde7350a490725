#ifndef VELMO_KVO_COMMS_CLIENT_H
#define VELMO_KVO_COMMS_CLIENT_H

#include "velmo/kvo/comms/Link.h"
#include "velmo/utilities/Export.h"
#include "velmo/utilities/result/Result.h"

#include <cstdint>

namespace velmo {
namespace kvo {
namespace comms {

// Connects to a server with a single blocking attempt and hands the caller a
// new Link that owns the socket.
class VELMO_EXPORT Client
{
public:
    enum ResultCode : int32_t
    {
        Success = 20000,
        UnknownError = 20001,
        ConnectionFailed = 20002
    };

    struct ResultTrait
    {
        typedef Client::ResultCode ResultCode;
        static constexpr ResultCode successCode = Success;
        static const char* toString(ResultCode code);
    };

    typedef velmo::utilities::result::Result<ResultTrait> ClientResult;

    static ClientResult connectUnixServer(const char* path, Link*& link);
    static ClientResult connectTcpServer(const char* ip, int port, Link*& link);

    Client() = delete;
};

} // namespace comms
} // namespace kvo
} // namespace velmo

#endif
