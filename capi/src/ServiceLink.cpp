#include "ServiceLink.h"

#include "velmo/kvo/cmdfrmwrk/Client.h"

namespace velmo {
namespace kvo {
namespace lipsyncapi {

bool ServiceLink::holdsConnection(const Service& service)
{
    return service._connected != 0;
}

void ServiceLink::adopt(Service& service, comms::Link& link)
{
    service._commandClient = new cmdfrmwrk::Client(&link);
    service._connected = 1;
}

void ServiceLink::drop(Service& service)
{
    delete service._commandClient;
    forget(service);
}

void ServiceLink::forget(Service& service)
{
    service._commandClient = nullptr;
    service._connected = 0;
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo
