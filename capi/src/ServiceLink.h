#ifndef VELMO_KVO_LIPSYNCAPI_SERVICELINK_H
#define VELMO_KVO_LIPSYNCAPI_SERVICELINK_H

#include "velmo/kvo/comms/Link.h"
#include "velmo/kvo/lipsyncapi/Service.h"

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// The C interface's way into a Service, which names it a friend. The
// interface opens the engine's socket itself, so that a deadline bounds the
// attempt and a forked child knows the descriptor, and hands the link over
// here; it never reaches below the Service.
struct ServiceLink
{
    // Whether connect() would refuse with "Already connected": the test that
    // connectInternal makes.
    static bool holdsConnection(const Service& service);

    // Makes the disconnected `service` connected over `link`, as
    // connectInternal does with the link it opens. It takes `link` over only
    // when it returns; when memory runs out it throws and `link` stays the
    // caller's.
    static void adopt(Service& service, comms::Link& link);

    // Ends the connection without the log line that disconnect() writes, for a
    // forked child whose descriptor no longer names the parent's connection.
    static void drop(Service& service);

    // Lets go of the connection without touching it, for a forked child that
    // cannot tell whether it is whole: another thread of the parent was
    // connecting or disconnecting when the process forked.
    static void forget(Service& service);
};

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
