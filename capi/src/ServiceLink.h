#ifndef VELMO_KVO_LIPSYNCAPI_SERVICELINK_H
#define VELMO_KVO_LIPSYNCAPI_SERVICELINK_H

#include "velmo/kvo/comms/Link.h"
#include "velmo/kvo/lipsyncapi/Service.h"

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// The link under a connected Service, so that a deadline can close it while
// the Service waits on it. Link::close() is safe from another thread; the
// link lives until the Service disconnects.
struct ServiceLink
{
    // Null while the Service is disconnected.
    static comms::Link* of(const Service& service);
};

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
