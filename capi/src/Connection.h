#ifndef VELMO_KVO_LIPSYNCAPI_CONNECTION_H
#define VELMO_KVO_LIPSYNCAPI_CONNECTION_H

#include "Deadline.h"
#include "velmo/kvo/comms/Link.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <atomic>
#include <string>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// A handle's connection as the C interface keeps it: the interface connects
// and disconnects the Service through here only, so it always knows the link
// that a watchdog may close and the descriptor that a forked child must let
// go of. Used in the handle's turn, but for isConnected() and the fork
// handler.
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
    comms::Link* link() const { return _link.load(); }
    bool isConnected() const { return _fd.load() >= 0; }

    // In a forked child, from the fork handler, before any other thread
    // runs: the connection is the parent's. Its descriptor is made to name a
    // fresh socket that connects nowhere, so that the Link's shutdown() on
    // destruction cannot end the parent's connection; the handle counts as
    // disconnected from now on.
    void inheritInChild();
    // In a forked child, at the handle's next call or destruction: the
    // Service lets go of the inherited connection, without a log line.
    void settleInChild(Service& service);

private:
    enum class Inherited
    {
        Nothing,
        // The descriptor now names a fresh socket: the link may go.
        Link,
        // Another thread of the parent was connecting or disconnecting: the
        // Service's state is not known, so it is left alone.
        Unknown
    };

    void adopt(Service& service, int fd);

    // Atomic, as the descriptor, for the fork handler, which runs on
    // whichever thread forks.
    std::atomic<comms::Link*> _link{nullptr};
    // The link's socket while the Service holds the link, else -1.
    std::atomic<int> _fd{-1};
    // Set while connect() or disconnect() changes the Service.
    std::atomic<bool> _changing{false};
    Inherited _inherited = Inherited::Nothing;
};

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
