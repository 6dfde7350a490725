#ifndef VELMO_KVO_LIPSYNCAPI_WITHOUTEXCEPTIONS_H
#define VELMO_KVO_LIPSYNCAPI_WITHOUTEXCEPTIONS_H

#include "velmo/kvo/lipsyncapi/Service.h"

#include <exception>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// No exception leaves a public call. A command exchange reports a failed
// allocation itself, as a transport error; one anywhere else (building a
// result text or the log line) makes the call return a bare UnknownError,
// which needs no memory, and leaves no log line.
template <class Call>
Service::ServiceResult withoutExceptions(Call call) noexcept
{
    try {
        return call();
    } catch (const std::exception&) {
        return Service::ServiceResult(Service::UnknownError);
    }
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
