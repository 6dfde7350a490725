#ifndef VELMO_KVO_LIPSYNCAPI_CONNECTION_H
#define VELMO_KVO_LIPSYNCAPI_CONNECTION_H

#include "Deadline.h"
#include "velmo/kvo/comms/Link.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <string>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// A handle's connection as the C interface keeps it: the interface connects
// and disconnects the Service through here only, so it always knows the link
// that a watchdog may close. Used in the handle's turn.
class Connection
{
public:
    // As Service::connect(socketName), results and log line included, over a
    // socket opened here; a set deadline ends the attempt, and then
    // `outOfTime` is set. `socketName` fits in a Unix address.
    Service::ServiceResult connect(Service& service, const std::string& socketName, const Deadline& deadline,
                                   bool& outOfTime);
    // As Service::disconnect().
    Service::ServiceResult disconnect(Service& service);

    // Null while disconnected.
    comms::Link* link() const { return _link; }

private:
    void adopt(Service& service, int fd);

    comms::Link* _link = nullptr;
};

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
