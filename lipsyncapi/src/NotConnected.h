#ifndef VELMO_KVO_LIPSYNCAPI_NOTCONNECTED_H
#define VELMO_KVO_LIPSYNCAPI_NOTCONNECTED_H

#include "velmo/kvo/lipsyncapi/Service.h"

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// What every operation but connect returns without a connection. The text
// is part of the library's output and stays as it is, byte for byte.
inline Service::ServiceResult notConnected()
{
    return Service::ServiceResult(Service::BadState) << "Not connected to the audio KVO";
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
