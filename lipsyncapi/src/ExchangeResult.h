#ifndef VELMO_KVO_LIPSYNCAPI_EXCHANGERESULT_H
#define VELMO_KVO_LIPSYNCAPI_EXCHANGERESULT_H

#include "velmo/kvo/cmdfrmwrk/Command.h"
#include "velmo/kvo/cmdfrmwrk/Peer.h"
#include "velmo/kvo/lipsyncapi/Service.h"

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// Turns the outcome of one command exchange into the Service's own result.
// The engine's "Bad state" means it is not in a call, which callers must be
// able to tell from other server failures.
inline Service::ServiceResult
toServiceResult(const velmo::utilities::result::Result<cmdfrmwrk::Peer::ResultTrait>& exchangeResult,
                const cmdfrmwrk::Command::Answer& answer)
{
    if (exchangeResult.isFailure()) {
        return Service::ServiceResult(exchangeResult, Service::TransportError, Service::Success);
    }
    if (answer.result.getErrorCode() == cmdfrmwrk::Command::BadState) {
        return Service::ServiceResult(answer.result, Service::NotInCall, Service::Success);
    }
    return Service::ServiceResult(answer.result, Service::ServerError, Service::Success);
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
