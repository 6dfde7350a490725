#ifndef AKVO_TESTS_LIPSYNCAPI_SERVICETESTACCESS_H
#define AKVO_TESTS_LIPSYNCAPI_SERVICETESTACCESS_H

#include "velmo/kvo/lipsyncapi/Service.h"

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// Reaches the state "connected without a command client", which the class
// never enters by itself, to prove that its guards stop the process.
struct ServiceTestAccess
{
    static void markConnectedWithoutClient(Service& service)
    {
        service._connected = 1;
        service._commandClient = nullptr;
    }
};

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
