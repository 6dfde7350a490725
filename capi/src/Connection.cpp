#include "Connection.h"

#include "ServiceLink.h"
#include "UnixConnect.h"
#include "velmo/kvo/lipsyncapi/Logger.h"
#include "velmo/kvo/log/ApiLog.h"

#include <exception>
#include <memory>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// What Service::connect does around connectInternal, with the socket opened
// here: the same results and the same log line.
Service::ServiceResult Connection::connect(Service& service, const std::string& socketName,
                                           const Deadline& deadline, bool& outOfTime)
{
    outOfTime = false;
    if (ServiceLink::holdsConnection(service)) {
        // Refused by the Service itself, which opens nothing.
        return service.connect(socketName);
    }
    try {
        int fd = -1;
        const comms::Client::ClientResult connection =
            connectUnixSocket(socketName.c_str(), deadline, fd, outOfTime);
        Service::ServiceResult result = Service::ServiceResult::success();
        if (connection.isFailure()) {
            result = Service::ServiceResult(Service::CannotConnect) << connection;
        } else {
            adopt(service, fd);
        }
        log::ApiLog<Logger> apiLog;
        apiLog.addInputParam("lipsyncSocketName", socketName).setResult(result).event("Client is connecting");
        return result;
    } catch (const std::exception&) {
        return Service::ServiceResult(Service::UnknownError);
    }
}

void Connection::adopt(Service& service, int fd)
{
    std::unique_ptr<comms::Link> link;
    try {
        link.reset(new comms::Link(fd));
    } catch (const std::exception&) {
        ::close(fd);
        throw;
    }
    ServiceLink::adopt(service, *link);
    _link = link.release();
}

Service::ServiceResult Connection::disconnect(Service& service)
{
    _link = nullptr;
    return service.disconnect();
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo
