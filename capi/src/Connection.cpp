#include "Connection.h"

#include "ServiceLink.h"
#include "UnixConnect.h"
#include "velmo/kvo/lipsyncapi/ConnectLine.h"

#include <exception>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

namespace {

class Changing
{
public:
    explicit Changing(std::atomic<bool>& flag) : _flag(flag) { _flag = true; }
    ~Changing() { _flag = false; }

    Changing(const Changing&) = delete;
    Changing& operator=(const Changing&) = delete;

private:
    std::atomic<bool>& _flag;
};

} // namespace

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
        const Changing changing(_changing);
        int fd = -1;
        const comms::Client::ClientResult connection =
            connectUnixSocket(socketName.c_str(), deadline, fd, outOfTime);
        Service::ServiceResult result = Service::ServiceResult::success();
        if (connection.isFailure()) {
            result = Service::ServiceResult(Service::CannotConnect) << connection;
        } else {
            adopt(service, fd);
        }
        logConnect(socketName, result);
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
    _fd = fd;
}

Service::ServiceResult Connection::disconnect(Service& service)
{
    const Changing changing(_changing);
    _fd = -1;
    _link = nullptr;
    return service.disconnect();
}

void Connection::inheritInChild()
{
    const int fd = _fd.exchange(-1);
    _link = nullptr;
    if (_changing) {
        _inherited = Inherited::Unknown;
        return;
    }
    if (fd < 0) {
        return;
    }
    const int fresh = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    _inherited = fresh >= 0 && ::dup2(fresh, fd) == fd ? Inherited::Link : Inherited::Unknown;
    if (fresh >= 0) {
        ::close(fresh);
    }
}

void Connection::settleInChild(Service& service)
{
    if (_inherited == Inherited::Link) {
        ServiceLink::drop(service);
    } else if (_inherited == Inherited::Unknown) {
        ServiceLink::forget(service);
    }
    _inherited = Inherited::Nothing;
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo
