#include "velmo/kvo/lipsyncapi/Service.h"

namespace velmo {
namespace kvo {
namespace lipsyncapi {

const char* Service::ResultTrait::toString(ResultCode code)
{
    switch (code) {
    case Success:
        return "Success";
    case UnknownError:
        return "Unknown error";
    case InvalidParam:
        return "Invalid Param";
    case BadState:
        return "Bad state";
    case CannotConnect:
        return "Cannot connect to Audio KVO";
    case TransportError:
        // Fixed output, misspelling included.
        return "An error has occured in the transport layer";
    case ServerError:
        return "The lipsync server returned an error";
    case NotInCall:
        return "The AKVO is not performing a call";
    }
    return "Invalid error (Unreachable)";
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo
